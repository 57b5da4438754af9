#include "platform/typelib/record_info.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/system/live_counts.h"
#include "platform/typelib/model/names.h"

namespace velk::typelib {
namespace {

// A record of its own block until it is released to the caller.
class OwnedRecord {
  public:
    OwnedRecord(IRecordInfo& info, PVOID record) : info_(info), record_(record) {
        require(record_, E_OUTOFMEMORY);
    }
    OwnedRecord(OwnedRecord const&) = delete;
    OwnedRecord& operator=(OwnedRecord const&) = delete;
    ~OwnedRecord() {
        if (record_) info_.RecordDestroy(record_);
    }

    std::byte* get() const { return static_cast<std::byte*>(record_); }
    PVOID release() { return std::exchange(record_, nullptr); }

  private:
    IRecordInfo& info_;
    PVOID record_;
};

bool isPutFlag(ULONG flags) {
    return flags == INVOKE_PROPERTYPUT || flags == INVOKE_PROPERTYPUTREF;
}

}  // namespace

HRESULT RecordInfo::QueryInterface(REFIID riid, void** object) noexcept {
    if (!object) return E_POINTER;
    bool const known = riid == IID_IUnknown || riid == IID_IRecordInfo;
    *object = known ? static_cast<IRecordInfo*>(this) : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
}

ULONG RecordInfo::AddRef() noexcept {
    return ++references_;
}

ULONG RecordInfo::Release() noexcept {
    ULONG const left = --references_;
    if (left == 0) delete this;
    return left;
}

HRESULT RecordInfo::RecordInit(PVOID record) noexcept {
    if (!record) return E_INVALIDARG;
    std::memset(record, 0, record_.size);
    return S_OK;
}

HRESULT RecordInfo::RecordClear(PVOID record) noexcept {
    if (!record) return E_INVALIDARG;
    HRESULT result = S_OK;
    for (auto const& field : record_.fields) {
        HRESULT const cleared = field.clear(static_cast<std::byte*>(record));
        if (SUCCEEDED(result)) result = cleared;
    }
    return result;
}

HRESULT RecordInfo::RecordCopy(PVOID source, PVOID target) noexcept {
    if (!source || !target) return E_INVALIDARG;
    if (source == target) return S_OK;
    HRESULT const result = guarded([&] {
        PVOID made = nullptr;
        check(RecordCreateCopy(source, &made));
        OwnedRecord copy(*this, made);
        check(RecordClear(target));
        // The content moves; the block of the copy ends empty.
        std::memcpy(target, copy.get(), record_.size);
        std::memset(copy.get(), 0, record_.size);
    });
    // What could not be copied is an empty record, and not the old one.
    if (FAILED(result)) RecordClear(target);
    return result;
}

HRESULT RecordInfo::GetGuid(GUID* id) noexcept {
    if (!id) return E_INVALIDARG;
    *id = record_.id;
    return S_OK;
}

HRESULT RecordInfo::GetName(BSTR* name) noexcept {
    if (!name) return E_INVALIDARG;
    *name = nullptr;
    return guarded([&] { *name = Bstr(record_.name.view()).release(); });
}

HRESULT RecordInfo::GetSize(ULONG* size) noexcept {
    if (!size) return E_INVALIDARG;
    *size = record_.size;
    return S_OK;
}

HRESULT RecordInfo::GetTypeInfo(ITypeInfo** type) noexcept {
    if (!type) return E_INVALIDARG;
    *type = Reference<ITypeInfo>(record_.type).release();
    return S_OK;
}

RecordField const& RecordInfo::fieldNamed(std::u16string_view name) const {
    auto const found =
        std::find_if(record_.fields.begin(), record_.fields.end(),
                     [&](RecordField const& field) { return sameName(field.name(), name); });
    require(found != record_.fields.end(), TYPE_E_FIELDNOTFOUND);
    return *found;
}

HRESULT RecordInfo::GetField(PVOID record, LPCOLESTR name, VARIANT* value) noexcept {
    if (!record || !name || !value) return E_INVALIDARG;
    return guarded([&] { fieldNamed(name).get(static_cast<std::byte*>(record), *value); });
}

HRESULT RecordInfo::PutField(ULONG flags, PVOID record, LPCOLESTR name, VARIANT* value) noexcept {
    if (!record || !name || !value || !isPutFlag(flags)) return E_INVALIDARG;
    return guarded([&] { fieldNamed(name).assign(static_cast<std::byte*>(record), *value); });
}

HRESULT RecordInfo::GetFieldNames(ULONG* count, BSTR* names) noexcept {
    if (!count) return E_INVALIDARG;
    auto const all = static_cast<ULONG>(record_.fields.size());
    if (!names) {
        *count = all;
        return S_OK;
    }
    ULONG const fitting = std::min(*count, all);
    *count = 0;
    return guarded([&] {
        std::vector<Bstr> texts;
        for (ULONG i = 0; i < fitting; ++i) texts.emplace_back(record_.fields[i].name());
        for (ULONG i = 0; i < fitting; ++i) names[i] = texts[i].release();
        *count = fitting;
    });
}

BOOL RecordInfo::IsMatchingType(IRecordInfo* other) noexcept {
    if (!other) return FALSE;
    if (other == this) return TRUE;
    // The very same description matches with whatever identifier it was given.
    Reference<ITypeInfo> type;
    if (SUCCEEDED(other->GetTypeInfo(type.out())) && type.get() == record_.type.get()) return TRUE;
    GUID id{};
    ULONG size = 0;
    if (FAILED(other->GetGuid(&id)) || FAILED(other->GetSize(&size))) return FALSE;
    return id != GUID_NULL && id == record_.id && size == record_.size;
}

PVOID RecordInfo::RecordCreate() noexcept {
    void* const record = std::calloc(1, std::max<ULONG>(record_.size, 1));
    if (record) platform::countLive(VELK_LIVE_RECORD, 1);
    return record;
}

HRESULT RecordInfo::RecordCreateCopy(PVOID source, PVOID* copy) noexcept {
    if (!source || !copy) return E_INVALIDARG;
    *copy = nullptr;
    return guarded([&] {
        OwnedRecord made(*this, RecordCreate());
        for (auto const& field : record_.fields) {
            field.copy(static_cast<std::byte const*>(source), made.get());
        }
        *copy = made.release();
    });
}

HRESULT RecordInfo::RecordDestroy(PVOID record) noexcept {
    HRESULT const cleared = RecordClear(record);
    if (FAILED(cleared)) return cleared;
    std::free(record);
    platform::countLive(VELK_LIVE_RECORD, -1);
    return S_OK;
}

Reference<RecordInfo> makeRecordInfo(ITypeInfo& type, RecordBudget& budget) {
    return Reference<RecordInfo>(new RecordInfo(describeRecord(type, budget)));
}

}  // namespace velk::typelib

HRESULT GetRecordInfoFromTypeInfo(ITypeInfo* type, IRecordInfo** record) {
    using namespace velk::typelib;
    if (!record) return E_INVALIDARG;
    *record = nullptr;
    if (!type) return E_INVALIDARG;
    return guarded([&] {
        RecordBudget budget;
        auto info = makeRecordInfo(*type, budget);
        // A record without an identifier could not be told to another process.
        require(info->description().id != GUID_NULL, E_INVALIDARG);
        *record = info.release();
    });
}
