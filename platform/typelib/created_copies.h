/// What callers hand to the creator of a library: checked, and copied into its model.
#pragma once

#include "platform/typelib/type_library.h"

namespace velk::typelib {

/// Copies live as long as the model: what replaces another copy leaves that
/// one where it is, because descriptions that were handed out point at it.
/// Everything fails with a ResultError, E_INVALIDARG for null pointers and for
/// descriptions that contradict themselves.
class CreatedCopies {
  public:
    CreatedCopies(TypeLibrary& library, LibraryModel& model) : library_(library), model_(model) {}

    Text text(OLECHAR const* text);
    /// TYPE_E_ELEMENTNOTFOUND for a reference that stands for nothing.
    TYPEDESC type(TYPEDESC const& type);
    /// DISP_E_BADVARTYPE for what no library can hold: objects, arrays, records.
    VARIANT* value(VARIANT const* value);
    PARAMDESCEX* defaultValue(PARAMDESCEX const* given);
    /// `items` with the value of one identifier set or replaced.
    CustomData withItem(CustomData items, REFGUID id, VARIANT const* value);

  private:
    TYPEDESC typeWithin(TYPEDESC const& type, int depth);
    ARRAYDESC* array(ARRAYDESC const& array, int depth);

    TypeLibrary& library_;
    LibraryModel& model_;
};

}  // namespace velk::typelib
