/// One argument of a late-bound call on its way to the member and back.
#pragma once

#include <optional>

#include "platform/typelib/invoke/invoke_type.h"
#include "platform/typelib/invoke/native_structure.h"
#include "platform/typelib/invoke/vtable_call.h"
#include "platform/typelib/owners.h"
#include "platform/typelib/record_types.h"

namespace velk::typelib {

/// Owns what a conversion had to make, for as long as the call lasts.
///
/// A value is passed as it is where its type fits, converted by
/// VariantChangeType otherwise. A reference is passed through where its type
/// fits; otherwise the member gets a reference to a converted copy, which is
/// written back after the call. A record is passed in its place, by reference
/// even where the caller's VARIANT holds it by value.
class InvokeArgument {
  public:
    InvokeArgument() = default;
    InvokeArgument(InvokeArgument const&) = delete;
    InvokeArgument& operator=(InvokeArgument const&) = delete;

    /// Makes the native form of `argument` for a parameter. Fails with a
    /// Failure, DISP_E_TYPEMISMATCH and the codes of VariantChangeType.
    NativeValue bind(VARIANT& argument, InvokeType const& type, USHORT flags);

    /// Makes the native form of a parameter's return value: a reference to
    /// storage of its own.
    NativeValue bindResult(InvokeType const& type);

    /// Makes the native form of an empty record of its own, by value or as a
    /// reference. takeResult hands the record out.
    NativeValue bindEmptyRecord(InvokeType const& type);

    /// After a successful call: writes a converted copy back.
    void writeBack();

    /// Moves the return value into `result`.
    void takeResult(VARIANT& result);

  private:
    NativeValue bindValue(VARIANT& source, InvokeType const& type);
    NativeValue bindReference(VARIANT& argument, VARIANT& source, InvokeType const& type,
                              USHORT flags);
    NativeValue bindRecord(VARIANT& argument, VARIANT& source, InvokeType const& type,
                           USHORT flags);
    NativeValue recordAt(void* bytes, RecordDescription const& record, InvokeType const& type);
    void convertInto(VARIANT const& source, InvokeType const& type);
    void* storage();

    /// The converted copy, or the return value.
    Value copy_;
    VARTYPE copyType_ = VT_EMPTY;
    /// Where a converted copy goes after the call; null for nowhere.
    VARIANT* target_ = nullptr;
    /// What a record by value is made of.
    std::optional<NativeStructure> structure_;
};

}  // namespace velk::typelib
