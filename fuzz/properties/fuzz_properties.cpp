// Takes any bytes as a stream of property sets: reads all that is in it, then
// changes it, writes it and reads it again.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <objbase.h>
#include <propidl.h>

#include "platform/com/held_object.h"
#include "platform/storage/properties/property_storage.h"
#include "platform/storage/shared_object.h"

namespace {

using namespace velk::platform::storage;
using velk::platform::com::HeldObject;
using Set = HeldObject<IPropertyStorage>;

/// A stream in memory, with what property sets need of one.
class MemoryStream final : public SharedObject<IStream, IID_ISequentialStream, IID_IStream> {
  public:
    explicit MemoryStream(std::vector<std::uint8_t>& bytes) : bytes_(bytes) {}

    HRESULT STDMETHODCALLTYPE Read(void* target, ULONG count, ULONG* done) noexcept override {
        std::size_t const left = bytes_.size() - std::min(at_, bytes_.size());
        *done = static_cast<ULONG>(std::min<std::size_t>(count, left));
        if (*done != 0) std::memcpy(target, bytes_.data() + at_, *done);
        at_ += *done;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Write(void const* source, ULONG count,
                                    ULONG* done) noexcept override {
        if (bytes_.size() < at_ + count) bytes_.resize(at_ + count);
        if (count != 0) std::memcpy(bytes_.data() + at_, source, count);
        at_ += count;
        *done = count;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER to, DWORD, ULARGE_INTEGER*) noexcept override {
        at_ = static_cast<std::size_t>(to.QuadPart);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) noexcept override {
        bytes_.resize(size.QuadPart);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* status, DWORD) noexcept override {
        *status = {};
        status->cbSize.QuadPart = bytes_.size();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Revert() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                     ULARGE_INTEGER*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER,
                                           DWORD) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) noexcept override { return E_NOTIMPL; }

  private:
    std::vector<std::uint8_t>& bytes_;
    std::size_t at_ = 0;
};

Set open(std::vector<std::uint8_t>& bytes, REFFMTID id) {
    Set set;
    static_cast<void>(answer([&] {
        PropertyStorage::Stream stream;
        *stream.target() = static_cast<IStream*>(new MemoryStream(bytes));
        *set.target() = static_cast<IPropertyStorage*>(new PropertyStorage(
            std::move(stream), id, STGM_READWRITE | STGM_SHARE_EXCLUSIVE, nullptr));
    }));
    return set;
}

PROPSPEC byId(PROPID id) {
    PROPSPEC specifier{};
    specifier.ulKind = PRSPEC_PROPID;
    specifier.propid = id;
    return specifier;
}

/// Reads every value, and writes each as a new property where `copies`.
/// How many values can be read.
int readAll(IPropertyStorage& set, bool copies) {
    STATPROPSETSTG status{};
    set.Stat(&status);
    HeldObject<IEnumSTATPROPSTG> all;
    if (set.Enum(reinterpret_cast<IEnumSTATPROPSTG**>(all.target())) != S_OK) return 0;
    int readable = 0;
    STATPROPSTG entry{};
    for (int i = 0; i < 200 && all->Next(1, &entry, nullptr) == S_OK; ++i) {
        if (entry.lpwstrName != nullptr) {
            PROPSPEC named{};
            named.ulKind = PRSPEC_LPWSTR;
            named.lpwstr = entry.lpwstrName;
            PROPVARIANT value{};
            if (SUCCEEDED(set.ReadMultiple(1, &named, &value))) PropVariantClear(&value);
        }
        CoTaskMemFree(entry.lpwstrName);
        PROPSPEC const specifier = byId(entry.propid);
        PROPVARIANT value{};
        if (set.ReadMultiple(1, &specifier, &value) != S_OK) continue;
        ++readable;
        PROPSPEC const other = byId(entry.propid ^ 0x10000);
        if (copies) set.WriteMultiple(1, &other, &value, PID_FIRST_USABLE);
        PropVariantClear(&value);
    }
    return readable;
}

void change(IPropertyStorage& set) {
    PROPVARIANT number{};
    number.vt = VT_I4;
    number.lVal = 5;
    PROPSPEC named{};
    named.ulKind = PRSPEC_LPWSTR;
    char16_t name[] = u"added";
    named.lpwstr = name;
    set.WriteMultiple(1, &named, &number, PID_FIRST_USABLE);
    PROPSPEC const title = byId(2);
    set.DeleteMultiple(1, &title);
}

/// What can be read stays readable when the stream is written anew.
void tryStream(std::vector<std::uint8_t> bytes, REFFMTID id) {
    int before = 0;
    {
        Set const set = open(bytes, id);
        if (set.get() == nullptr) return;
        before = readAll(*set.get(), false);
        set->SetClass(id);
        if (FAILED(set->Commit(STGC_DEFAULT))) std::abort();
    }
    Set const again = open(bytes, id);
    if (again.get() == nullptr || readAll(*again.get(), false) < before) std::abort();
    readAll(*again.get(), true);
    change(*again.get());
    if (SUCCEEDED(again->Commit(STGC_DEFAULT))) {
        Set const changed = open(bytes, id);
        if (changed.get() == nullptr) std::abort();
        readAll(*changed.get(), false);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::vector<std::uint8_t> const bytes(data, data + size);
    for (FMTID const& id : {FMTID_DocSummaryInformation, FMTID_UserDefinedProperties}) {
        tryStream(bytes, id);
    }
    return 0;
}
