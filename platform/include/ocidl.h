/// Interfaces by which objects tell about their class.
#pragma once

#include "oaidl.h"

EXTERN_C VELK_LAYER_EXPORT IID const IID_IProvideClassInfo;

/// An object that knows its class.
struct IProvideClassInfo : IUnknown {
    /// Hands out the description of the object's coclass. E_POINTER for null.
    virtual HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** ppTI) = 0;
};
