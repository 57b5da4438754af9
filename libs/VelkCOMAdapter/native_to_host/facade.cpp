#include "native_to_host/facade.h"

#include <atomic>
#include <cstring>

#include "com/error.h"
#include "com/object.h"
#include "com/type_info_holder.h"
#include "host/exception.h"
#include "module/exports.h"
#include "native_to_host/facade_call.h"
#include "native_to_host/host_announcement.h"
#include "native_to_host/name_table.h"

namespace {

using velk::adapter::HostAnnouncement;

// What an object begins with. Only this module makes objects of the class, so
// the address tells its facades from everything else that answers their
// interface id, and asking costs one read. Null until the first facade.
std::atomic<void const*> facadeMark{nullptr};

void const* markOf(Ivelkdspwrap const* object) noexcept {
    void const* mark = nullptr;
    std::memcpy(&mark, static_cast<void const*>(object), sizeof mark);
    return mark;
}

velk::com::TypeInfoHolder facadeType{{&IID_Ivelkdspwrap, &LIBID_VelkCOMAdapterLib, 1, 0}};

}  // namespace

HRESULT Cvelkdspwrap::finalConstruct() noexcept {
    void const* const mark = markOf(this);
    // Written once: a store for every facade would make all threads that
    // create facades wait for each other.
    if (facadeMark.load(std::memory_order_relaxed) != mark) facadeMark = mark;
    return S_OK;
}

Cvelkdspwrap* Cvelkdspwrap::ownFacade(Ivelkdspwrap* pointer) noexcept {
    if (!pointer || markOf(pointer) != facadeMark.load(std::memory_order_relaxed)) return nullptr;
    return static_cast<Cvelkdspwrap*>(pointer);
}

HRESULT Cvelkdspwrap::GetTypeInfoCount(UINT* count) noexcept {
    if (!count) return E_POINTER;
    *count = 1;
    return S_OK;
}

HRESULT Cvelkdspwrap::GetTypeInfo(UINT index, LCID lcid, ITypeInfo** out) noexcept {
    // Clients compare with this number (0x8002000B).
    if (index != 0) return DISP_E_BADINDEX;
    if (!out) return E_POINTER;
    velk::com::ComPtr<ITypeInfo> type;
    HRESULT const found = facadeType.get(lcid, type);
    *out = type.detach();
    return found;
}

HRESULT Cvelkdspwrap::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                    DISPID* ids) noexcept {
    try {
        mzCriticalAutoSectionRefC const inside(&lookupSection_);
        if (count != 1) return DISP_E_UNKNOWNNAME;
        if (!names || !ids) return E_POINTER;
        velk::com::TextView const name =
            names[0] ? velk::com::TextView(names[0]) : velk::com::TextView();
        // Clients ask for the same name again and again.
        *ids = isLastName(name) ? lastMember_ : PDspMapData::instance().idOf(name);
        return S_OK;
    }
    VELK_COM_CATCH
}

bool Cvelkdspwrap::isLastName(velk::com::TextView name) const {
    if (lastGeneration_ != PDspMapData::generation()) return false;
    QString const& last = lastName_.toQString();
    return velk::com::TextView(reinterpret_cast<OLECHAR const*>(last.constData()),
                               static_cast<std::size_t>(last.size())) == name;
}

HRESULT Cvelkdspwrap::nameOfMember(DISPID member, mzComStringC& name) {
    mzCriticalAutoSectionRefC const inside(&lookupSection_);
    unsigned const generation = PDspMapData::generation();
    if (member != lastMember_ || generation != lastGeneration_) {
        if (!PDspMapData::instance().nameOf(member, lastName_)) return DISP_E_MEMBERNOTFOUND;
        lastMember_ = member;
        lastGeneration_ = generation;
    }
    name = lastName_;
    return S_OK;
}

HRESULT Cvelkdspwrap::Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                             VARIANT* result, EXCEPINFO* exception, UINT*) noexcept {
    try {
        if (!hostDispatch_.isValid()) return E_UNEXPECTED;
        velk::com::ComPtr<Ivelkdspwrap> const self(this);
        mzComPtrT<mzIDispatch> const host = hostDispatch_;
        mzComStringC name;
        unsigned callKind = velk::adapter::callKindOfDefault(flags);
        if (member != DISPID_VALUE) {
            HRESULT const known = nameOfMember(member, name);
            if (FAILED(known)) return known;
            callKind = velk::adapter::callKindOfNamed(flags);
            if (callKind == 0) return DISP_E_MEMBERNOTFOUND;
        }
        mzComVariantArrayC arguments;
        HRESULT const taken = velk::adapter::takeArguments(parameters, arguments);
        if (FAILED(taken)) return taken;

        mzComVariantC value;
        mzComPtrT<mzIException> failure;
        unsigned const code = host->invokeByName(name, callKind, arguments, value, failure);
        return code == mzSuccess ? velk::adapter::giveResult(value, result)
                                 : velk::adapter::giveFailure(code, failure, exception);
    }
    VELK_COM_CATCH
}

HRESULT Cvelkdspwrap::bindToDispatch(LONGLONG value) noexcept {
    try {
        if (mzIDispatch* const object = HostAnnouncement::find(value)) {
            hostDispatch_.attach(object);
        }
        return S_OK;
    }
    VELK_COM_CATCH
}

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

extern "C" bool convertMZCOMIDispatch2MSCOMIDispatch(mzIDispatch* source, IDispatch** result) {
    if (!result) return false;
    velk::com::ComPtr<Ivelkdspwrap> facade;
    if (FAILED(velk::adapter::createBoundFacade(source, facade))) return false;
    *result = facade.detach();
    return true;
}
