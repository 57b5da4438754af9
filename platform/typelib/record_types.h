/// The fields of a record, read from its published description.
#pragma once

#include <vector>

#include "platform/typelib/record_field.h"

namespace velk::typelib {

/// What the reading of one record and all that it contains may use up, so that
/// a record that contains itself, and a damaged library, come to an end.
struct RecordBudget {
    int depth = 256;
    unsigned fields = 0x10000;
};

/// A record and what is known of it.
struct RecordDescription {
    Reference<ITypeInfo> type;  ///< of the record itself, no alias
    GUID id{};
    Bstr name;
    ULONG size = 0;
    std::vector<RecordField> fields;
    /// As FieldType::shape.
    std::optional<NativeShape> shape;
};

/// Reads the record that `type` is, or is an alias of. Fails with a
/// Failure: E_INVALIDARG for another kind of type, TYPE_E_CIRCULARTYPE for
/// one that contains itself, TYPE_E_SIZETOOBIG for one of too many fields,
/// TYPE_E_INVDATAREAD for fields outside of the record, DISP_E_BADVARTYPE for
/// fields of a type that no record has, and the failures of `type`.
RecordDescription describeRecord(ITypeInfo& type, RecordBudget& budget);

}  // namespace velk::typelib
