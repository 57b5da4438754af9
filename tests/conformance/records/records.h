/// The library of records that the tests load, and its records as structures.
#pragma once

#include <string>

#include "com/com_ptr.h"
#include "support/value_notation.h"

namespace velk::test {

struct Person {
    BSTR name;
    LONG age;
};
struct Everything {
    signed char i1;
    BYTE ui1;
    SHORT i2;
    USHORT ui2;
    LONG i4;
    ULONG ui4;
    LONGLONG i8;
    ULONGLONG ui8;
    INT native;
    UINT unsignedNative;
    FLOAT single;
    DOUBLE real;
    CY money;
    DATE day;
    VARIANT_BOOL truth;
    SCODE code;
    BSTR text;
    IDispatch* dispatch;
    IUnknown* unknown;
    VARIANT any;
    DECIMAL exact;
    Person owner;
    LONG rank;
    LONG price;
};
struct Grid {
    SHORT cells[4][2];
    BSTR labels[3];
    Person people[2];
    LONG last;
};
struct Objects {
    IDispatch* dispatch;
    IUnknown* unknown;
};
struct Memo {
    VARIANT any;
    LONG number;
};
struct Spot {
    LONG x;
    FLOAT y;
};

/// A type by its name, which must be there, from the library or its form for
/// systems of 32 bits.
com::ComPtr<ITypeInfo> typeOfRecords(char const* name, bool bits32 = false);
com::ComPtr<IRecordInfo> recordNamed(char const* name, bool bits32 = false);

/// One record of its own, destroyed at the end.
template <typename Structure>
class Record {
  public:
    explicit Record(char const* name)
        : info(recordNamed(name)), content_(static_cast<Structure*>(info->RecordCreate())) {}
    Record(Record const&) = delete;
    Record& operator=(Record const&) = delete;
    ~Record() { info->RecordDestroy(content_); }

    Structure* get() const { return content_; }
    Structure* operator->() const { return content_; }

    /// A VARIANT that borrows the record: VT_RECORD, or with VT_BYREF.
    VARIANT value(VARTYPE type = VT_RECORD) const {
        VARIANT value{};
        value.vt = type;
        value.pvRecord = content_;
        value.pRecInfo = info.get();
        return value;
    }
    std::string notation() const { return notationOf(value()); }

    com::ComPtr<IRecordInfo> const info;

  private:
    Structure* content_;
};

BSTR newText(char const* text);

}  // namespace velk::test
