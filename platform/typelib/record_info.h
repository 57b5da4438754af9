/// IRecordInfo over the published description of a record.
#pragma once

#include <atomic>

#include "platform/typelib/record_types.h"

namespace velk::typelib {

/// Thread-safe as all of it is immutable; a record that several threads use at
/// once needs a lock of its users.
///
/// Records are blocks of their own, counted as VELK_LIVE_RECORD. The methods
/// accept records in any memory, but destroy only those that they have made.
///
/// A field that is a fixed array is read and written as a SAFEARRAY of the same
/// dimensions. A field that no VARIANT can hold, a union or a plain pointer,
/// answers DISP_E_BADVARTYPE. What is put by value and by reference is the same:
/// an object itself, never its default property. Fields are not lent: the
/// methods for that answer E_NOTIMPL.
class RecordInfo final : public IRecordInfo {
  public:
    explicit RecordInfo(RecordDescription record) : record_(std::move(record)) {}

    RecordDescription const& description() const { return record_; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    HRESULT STDMETHODCALLTYPE RecordInit(PVOID record) noexcept override;
    HRESULT STDMETHODCALLTYPE RecordClear(PVOID record) noexcept override;
    HRESULT STDMETHODCALLTYPE RecordCopy(PVOID source, PVOID target) noexcept override;
    HRESULT STDMETHODCALLTYPE GetGuid(GUID* id) noexcept override;
    HRESULT STDMETHODCALLTYPE GetName(BSTR* name) noexcept override;
    HRESULT STDMETHODCALLTYPE GetSize(ULONG* size) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(ITypeInfo** type) noexcept override;
    HRESULT STDMETHODCALLTYPE GetField(PVOID record, LPCOLESTR name,
                                       VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetFieldNoCopy(PVOID, LPCOLESTR, VARIANT*, PVOID*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE PutField(ULONG flags, PVOID record, LPCOLESTR name,
                                       VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE PutFieldNoCopy(ULONG, PVOID, LPCOLESTR, VARIANT*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetFieldNames(ULONG* count, BSTR* names) noexcept override;
    BOOL STDMETHODCALLTYPE IsMatchingType(IRecordInfo* other) noexcept override;
    PVOID STDMETHODCALLTYPE RecordCreate() noexcept override;
    HRESULT STDMETHODCALLTYPE RecordCreateCopy(PVOID source, PVOID* copy) noexcept override;
    HRESULT STDMETHODCALLTYPE RecordDestroy(PVOID record) noexcept override;

  private:
    ~RecordInfo() = default;
    RecordField const& fieldNamed(std::u16string_view name) const;

    RecordDescription const record_;
    std::atomic<ULONG> references_{0};
};

/// The record information of a record, with or without an identifier, or of an
/// alias of one. Fails as describeRecord does.
Reference<RecordInfo> makeRecordInfo(ITypeInfo& type, RecordBudget& budget);

}  // namespace velk::typelib
