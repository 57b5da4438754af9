/// One field of a record: how its content is read, replaced and released.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/typelib/invoke/native_structure.h"
#include "platform/typelib/owners.h"

namespace velk::typelib {

/// What a field is made of.
struct FieldType {
    /// The type of a VARIANT that holds the field. VT_EMPTY stands for bytes
    /// that no VARIANT can hold and that own nothing: a plain pointer, a union.
    VARTYPE type = VT_EMPTY;
    /// Bytes of the field, or of one element of a fixed array.
    ULONG size = 0;
    /// The dimensions of a fixed array, the leftmost first; empty for all else.
    std::vector<SAFEARRAYBOUND> bounds;
    /// What a pointer to an interface points at; null for any.
    GUID interfaceId{};
    /// Which record the elements of a SAFEARRAY of records are.
    GUID elementId{};
    /// The description of a VT_RECORD, null for all else.
    Reference<IRecordInfo> record;
    /// The numbers that one element is made of; absent for a union, whose
    /// members overlap, and left out where it is too large for registers.
    std::optional<NativeShape> shape;

    bool isFixedArray() const { return !bounds.empty(); }
    /// Elements of a fixed array; 1 for all else.
    ULONG count() const;
};

/// Immutable once made. All places are addresses inside a record and need not
/// be aligned. What can fail without a result code fails with a Failure.
class RecordField {
  public:
    RecordField(std::u16string_view name, ULONG offset, FieldType type)
        : name_(name), offset_(offset), type_(std::move(type)) {}

    std::u16string const& name() const { return name_; }
    ULONG offset() const { return offset_; }
    FieldType const& type() const { return type_; }
    /// The first byte behind the field.
    ULONGLONG end() const { return offset_ + ULONGLONG{type_.size} * type_.count(); }

    /// Releases what the field holds and zeroes that. DISP_E_ARRAYISLOCKED
    /// leaves a locked array where it is.
    HRESULT clear(std::byte* record) const noexcept;
    /// Copies the field of one record into that of another, which is zero.
    void copy(std::byte const* from, std::byte* to) const;

    /// Puts a copy of the field into `value`, whose old content is cleared. A
    /// fixed array becomes a SAFEARRAY of the same indices.
    void get(std::byte* record, VARIANT& value) const;
    /// Replaces the field by a copy of `value`, converted to its type.
    void assign(std::byte* record, VARIANT const& value) const;

  private:
    void requireValue() const;
    /// Whether `value` can go into the field as it is.
    bool takes(VARIANT const& value) const;
    /// Moves `value`, which the field takes, into it and leaves VT_EMPTY there. A
    /// failure changes neither.
    void take(std::byte* record, VARIANT& value) const;
    void convert(VARIANT const& value, VARIANT& converted) const;
    HRESULT clearElement(std::byte* place) const noexcept;
    void copyElement(std::byte const* from, std::byte* to) const;
    SAFEARRAY* elements(std::byte const* record) const;
    void assignElements(std::byte* record, VARIANT const& value) const;

    std::u16string name_;
    ULONG offset_;
    FieldType type_;
};

}  // namespace velk::typelib
