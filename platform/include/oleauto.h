/// Functions of OLE Automation.
///
/// Every function may be called on any thread; a value that several threads
/// use at once needs a lock of its users.
#pragma once

#include "oaidl.h"

// Text. A BSTR points at its first character; its length in bytes stands in
// the four bytes before, and a zero character follows the text.
WINOLEAUTAPI_(BSTR) SysAllocString(OLECHAR const* text);
WINOLEAUTAPI_(BSTR) SysAllocStringLen(OLECHAR const* text, UINT length);
WINOLEAUTAPI_(BSTR) SysAllocStringByteLen(LPCSTR bytes, UINT byteLength);
WINOLEAUTAPI_(void) SysFreeString(BSTR text);
WINOLEAUTAPI_(UINT) SysStringLen(BSTR text);
WINOLEAUTAPI_(UINT) SysStringByteLen(BSTR text);

// Values.
#define VARIANT_NOVALUEPROP 0x1
#define VARIANT_ALPHABOOL 0x2
#define VARIANT_NOUSEROVERRIDE 0x4
#define VARIANT_LOCALBOOL 0x10
#define V_VT(value) ((value)->vt)
#define V_ISBYREF(value) (((value)->vt & VT_BYREF) != 0)
#define V_ISARRAY(value) (((value)->vt & VT_ARRAY) != 0)

WINOLEAUTAPI_(void) VariantInit(VARIANTARG* value);
WINOLEAUTAPI VariantClear(VARIANTARG* value);
WINOLEAUTAPI VariantCopy(VARIANTARG* destination, VARIANTARG const* source);
WINOLEAUTAPI VariantCopyInd(VARIANT* destination, VARIANTARG const* source);
WINOLEAUTAPI VariantChangeType(VARIANTARG* destination, VARIANTARG const* source, USHORT flags,
                               VARTYPE type);
WINOLEAUTAPI VariantChangeTypeEx(VARIANTARG* destination, VARIANTARG const* source, LCID lcid,
                                 USHORT flags, VARTYPE type);

// Dates: days since 30 December 1899, the fraction is the time of day.
WINOLEAUTAPI_(INT) SystemTimeToVariantTime(LPSYSTEMTIME time, DOUBLE* date);
WINOLEAUTAPI_(INT) VariantTimeToSystemTime(DOUBLE date, LPSYSTEMTIME time);

// Arrays.
WINOLEAUTAPI SafeArrayAllocDescriptorEx(VARTYPE type, UINT dimensions, SAFEARRAY** array);
WINOLEAUTAPI_(SAFEARRAY*) SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds);
WINOLEAUTAPI_(SAFEARRAY*) SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG elements);
WINOLEAUTAPI_(SAFEARRAY*)
SafeArrayCreateEx(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds, PVOID extra);
WINOLEAUTAPI SafeArrayDestroy(SAFEARRAY* array);
WINOLEAUTAPI SafeArrayDestroyData(SAFEARRAY* array);
WINOLEAUTAPI SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** copy);
WINOLEAUTAPI SafeArrayRedim(SAFEARRAY* array, SAFEARRAYBOUND* bound);
WINOLEAUTAPI SafeArrayLock(SAFEARRAY* array);
WINOLEAUTAPI SafeArrayUnlock(SAFEARRAY* array);
WINOLEAUTAPI SafeArrayAccessData(SAFEARRAY* array, void** data);
WINOLEAUTAPI SafeArrayUnaccessData(SAFEARRAY* array);
WINOLEAUTAPI_(UINT) SafeArrayGetDim(SAFEARRAY* array);
WINOLEAUTAPI_(UINT) SafeArrayGetElemsize(SAFEARRAY* array);
WINOLEAUTAPI SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound);
WINOLEAUTAPI SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound);
WINOLEAUTAPI SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);
WINOLEAUTAPI SafeArrayPtrOfIndex(SAFEARRAY* array, LONG* indices, void** element);
WINOLEAUTAPI SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* value);
WINOLEAUTAPI SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value);
WINOLEAUTAPI SafeArraySetRecordInfo(SAFEARRAY* array, IRecordInfo* record);
WINOLEAUTAPI SafeArrayGetRecordInfo(SAFEARRAY* array, IRecordInfo** record);
WINOLEAUTAPI SafeArrayGetIID(SAFEARRAY* array, GUID* id);

// Type libraries.
enum REGKIND { REGKIND_DEFAULT, REGKIND_REGISTER, REGKIND_NONE };
WINOLEAUTAPI LoadTypeLib(LPCOLESTR file, ITypeLib** library);
WINOLEAUTAPI LoadTypeLibEx(LPCOLESTR file, REGKIND kind, ITypeLib** library);
WINOLEAUTAPI LoadRegTypeLib(REFGUID id, WORD major, WORD minor, LCID lcid, ITypeLib** library);
WINOLEAUTAPI RegisterTypeLib(ITypeLib* library, LPCOLESTR path, LPCOLESTR helpFolder);
WINOLEAUTAPI UnRegisterTypeLib(REFGUID id, WORD major, WORD minor, LCID lcid, SYSKIND system);
WINOLEAUTAPI RegisterTypeLibForUser(ITypeLib* library, LPOLESTR path, LPOLESTR helpFolder);
WINOLEAUTAPI UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID lcid,
                                      SYSKIND system);

// Records.

/// Record information of a record that has an identifier, or of an alias of one.
///
/// @return E_INVALIDARG for a null pointer, for a type of another kind and for
///         a record without an identifier; DISP_E_BADVARTYPE for a record with
///         a field that automation cannot hold
WINOLEAUTAPI GetRecordInfoFromTypeInfo(ITypeInfo* type, IRecordInfo** record);

/// IDispatch over an object, by a type that describes its vtable.
///
/// @param outer     the aggregate's own IUnknown; null for an object that stands alone
/// @param instance  what members are called on; not counted, it has to outlive the result
/// @param type      the description, which is kept
/// @param dispatch  the object's own IUnknown; IDispatch comes from its QueryInterface
/// @return          E_INVALIDARG when one of the last three is null
///
/// The object may be used by several threads at once when `instance` may.
WINOLEAUTAPI CreateStdDispatch(IUnknown* outer, void* instance, ITypeInfo* type,
                               IUnknown** dispatch);

// Active objects: one a class, for the threads of this process to find.
#define ACTIVEOBJECT_STRONG 0x0
#define ACTIVEOBJECT_WEAK 0x1

/// Registers `object` as the active one of a class and gives the number to
/// revoke it with. A strong registration holds a reference; a weak one holds
/// none, and must be revoked before the object goes. Further registrations of
/// a class succeed with MK_S_MONIKERALREADYREGISTERED and wait their turn.
WINOLEAUTAPI RegisterActiveObject(IUnknown* object, REFCLSID id, DWORD flags, DWORD* registration);
/// E_INVALIDARG for an unknown registration. When this returns, no thread
/// uses what a weak registration pointed at.
WINOLEAUTAPI RevokeActiveObject(DWORD registration, void* reserved);
/// The object registered first. MK_E_UNAVAILABLE when the class has none.
WINOLEAUTAPI GetActiveObject(REFCLSID id, void* reserved, IUnknown** object);
