#include "facade_creation.h"

#include "com/object.h"
#include "facade.h"
#include "host_announcement.h"

namespace velk::adapter {

thread_local mzIDispatch* HostAnnouncement::announced_ = nullptr;

HRESULT createFacade(Ivelkdspwrap** out) noexcept {
    return com::createObject<com::CComObject<Cvelkdspwrap>>(nullptr, IID_Ivelkdspwrap,
                                                            reinterpret_cast<void**>(out));
}

HRESULT createBoundFacade(mzIDispatch* object, com::ComPtr<Ivelkdspwrap>& out) noexcept {
    HRESULT const made = createFacade(out.put());
    if (FAILED(made)) return made;
    HostAnnouncement const announcement(object);
    return out->bindToDispatch(HostAnnouncement::numberOf(object));
}

}  // namespace velk::adapter
