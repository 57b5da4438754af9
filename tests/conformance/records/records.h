/// The library of records that the tests load, and its records as structures.
#pragma once

#include "conformance/typelib/type_access.h"

namespace velk::test {

struct Person {
    BSTR name;
    LONG age;
};
static_assert(sizeof(Person) == 16);

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
static_assert(sizeof(Everything) == 168);

struct Grid {
    SHORT cells[4][2];
    BSTR labels[3];
    Person people[2];
    LONG last;
};
static_assert(sizeof(Grid) == 80);

struct Objects {
    IDispatch* dispatch;
    IUnknown* unknown;
};

struct Memo {
    VARIANT any;
    LONG number;
};

struct Lists {
    SAFEARRAY* texts;
    SAFEARRAY* people;
};

struct Guest {
    Person who;
    LONG number;
};

struct Team {
    Person lead;
    Person second;
    VARIANT notes;
};
static_assert(sizeof(Team) == 56);

struct Spot {
    LONG x;
    FLOAT y;
};

/// An identifier of the library: they differ in their last byte.
GUID recordsId(BYTE last);

/// The path of the library's file.
Wide recordsPath();
Owned<ITypeLib> loadRecords();
/// The description of a record by its name; a failure ends the assertion.
Owned<IRecordInfo> recordNamed(OLECHAR const* name);

/// One record of its own, destroyed at the end.
template <typename Structure>
class Record {
  public:
    explicit Record(OLECHAR const* name)
        : info(recordNamed(name)), content_(static_cast<Structure*>(info->RecordCreate())) {}
    Record(Record const&) = delete;
    Record& operator=(Record const&) = delete;
    ~Record() { info->RecordDestroy(content_); }

    Structure* get() const { return content_; }
    Structure* operator->() const { return content_; }
    std::add_lvalue_reference_t<Structure> operator*() const requires(!std::is_void_v<Structure>) {
        return *content_;
    }

    Owned<IRecordInfo> const info;

  private:
    Structure* content_;
};

/// A VARIANT that borrows a record: VT_RECORD, or with VT_BYREF.
VARIANT valueOf(IRecordInfo* info, void* record, VARTYPE type = VT_RECORD);

/// The text of a BSTR that stays where it is, in UTF-8.
std::string textIn(BSTR text);
BSTR newText(OLECHAR const* text);

/// A SAFEARRAY of persons with these ages, named "a", "b" and so on.
SAFEARRAY* peopleOf(std::initializer_list<LONG> ages);

}  // namespace velk::test
