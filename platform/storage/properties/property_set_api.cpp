// StgCreatePropSetStg, StgCreatePropStg, StgOpenPropStg.
#include <objbase.h>

#include "platform/storage/properties/property_sets.h"
#include "platform/storage/properties/property_storage.h"

namespace velk::platform::storage {
namespace {

/// The property sets of a storage that has no such face itself.
class ForeignPropertySets final
    : public SharedObject<IPropertySetStorage, IID_IPropertySetStorage> {
  public:
    explicit ForeignPropertySets(com::HeldObject<IStorage> storage)
        : storage_(std::move(storage)), sets_(*storage_.get(), nullptr) {}

    HRESULT STDMETHODCALLTYPE Create(REFFMTID formatId, CLSID const* classId, DWORD flags,
                                     DWORD mode, IPropertyStorage** set) noexcept override {
        return sets_.create(formatId, classId, flags, mode, set);
    }
    HRESULT STDMETHODCALLTYPE Open(REFFMTID formatId, DWORD mode,
                                   IPropertyStorage** set) noexcept override {
        return sets_.open(formatId, mode, set);
    }
    HRESULT STDMETHODCALLTYPE Delete(REFFMTID formatId) noexcept override {
        return sets_.remove(formatId);
    }
    HRESULT STDMETHODCALLTYPE Enum(IEnumSTATPROPSETSTG** sets) noexcept override {
        return sets_.enumerate(sets);
    }

  private:
    com::HeldObject<IStorage> storage_;
    PropertySets sets_;
};

/// The stream that a client hands over for a simple set.
PropertyStorage::Stream streamOf(IUnknown* object, DWORD flags, DWORD reserved) {
    failIf(object == nullptr || reserved != 0, STG_E_INVALIDPARAMETER);
    failIf((flags & PROPSETFLAG_NONSIMPLE) != 0, STG_E_INVALIDFLAG);
    PropertyStorage::Stream stream;
    succeed(object->QueryInterface(IID_IStream, stream.target()));
    return stream;
}

constexpr DWORD streamMode = STGM_SHARE_EXCLUSIVE | STGM_READWRITE;

}  // namespace
}  // namespace velk::platform::storage

using namespace velk::platform;
using namespace velk::platform::storage;

HRESULT StgCreatePropSetStg(IStorage* storage, DWORD reserved, IPropertySetStorage** sets) {
    if (storage == nullptr || sets == nullptr || reserved != 0) return STG_E_INVALIDPARAMETER;
    *sets = nullptr;
    HRESULT const own =
        storage->QueryInterface(IID_IPropertySetStorage, reinterpret_cast<void**>(sets));
    if (SUCCEEDED(own)) return own;
    return answer([&] {
        com::HeldObject<IStorage> held;
        succeed(storage->QueryInterface(IID_IStorage, held.target()));
        *sets = new ForeignPropertySets(std::move(held));
    });
}

HRESULT StgCreatePropStg(IUnknown* stream, REFFMTID formatId, CLSID const* classId, DWORD flags,
                         DWORD reserved, IPropertyStorage** set) {
    if (set == nullptr) return STG_E_INVALIDPOINTER;
    *set = nullptr;
    return answer([&] {
        PropertyStorage::NewSet const made{classId != nullptr ? *classId : GUID_NULL, flags};
        *set = new PropertyStorage(streamOf(stream, flags, reserved), formatId, streamMode, nullptr,
                                   made);
    });
}

HRESULT StgOpenPropStg(IUnknown* stream, REFFMTID formatId, DWORD flags, DWORD reserved,
                       IPropertyStorage** set) {
    if (set == nullptr) return STG_E_INVALIDPOINTER;
    *set = nullptr;
    return answer([&] {
        *set =
            new PropertyStorage(streamOf(stream, flags, reserved), formatId, streamMode, nullptr);
    });
}
