/// Arrays among the values of properties.
#pragma once

#include <propidl.h>

#include "platform/storage/properties/bytes.h"

namespace velk::platform::storage {

/// Reads elements of arrays that have no fixed size.
class ArrayElements {
  public:
    virtual BSTR bstr() = 0;
    /// `value` is empty; it may hold something even when this fails.
    virtual void typedValue(PROPVARIANT& value) = 0;

  protected:
    ~ArrayElements() = default;
};

/// Reads an array of a type with VT_ARRAY from where its header begins: the
/// dimensions as they are kept, the elements in the order that memory has them.
/// `elements` reads from `from`. Fails with malformedSet, and with
/// ERROR_NOT_SUPPORTED as an HRESULT for elements that arrays cannot have.
SAFEARRAY* readArray(VARTYPE type, ByteReader& from, ArrayElements& elements);

/// Writes elements of arrays that have no fixed size.
class ArrayWriting {
  public:
    virtual void bstr(BSTR text) = 0;
    virtual void typedValue(PROPVARIANT const& value) = 0;

  protected:
    ~ArrayWriting() = default;
};

/// The reverse. Fails with STG_E_INVALIDPARAMETER for a null array and one of
/// another type than `type` says.
void writeArray(VARTYPE type, SAFEARRAY* array, ByteWriter& to, ArrayWriting& elements);

}  // namespace velk::platform::storage
