/// IDispatch over type information.
#pragma once

#include "com/type_info_holder.h"

namespace velk::com {

/// The four methods of IDispatch, for a type that a holder gives.
HRESULT getTypeInfo(TypeInfoHolder& holder, UINT index, LCID lcid, ITypeInfo** out) noexcept;
HRESULT getIdsOfNames(TypeInfoHolder& holder, LPOLESTR* names, UINT count, LCID lcid,
                      DISPID* ids) noexcept;
HRESULT invokeByTypeInfo(TypeInfoHolder& holder, void* object, DISPID member, LCID lcid, WORD flags,
                         DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                         UINT* argumentError) noexcept;

/// Implements IDispatch for the dual interface `Interface`: names and calls
/// go through the type information of `interfaceId` in version major.minor
/// of the registered library `libraryId`. Late-bound calls therefore fail,
/// with LoadRegTypeLib's code, as long as the library is not registered.
template <typename Interface, IID const* interfaceId, GUID const* libraryId, WORD major, WORD minor>
class IDispatchImpl : public Interface {
  public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        if (count == nullptr) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid,
                                          ITypeInfo** out) noexcept override {
        return getTypeInfo(holder_, index, lcid, out);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID lcid,
                                            DISPID* ids) noexcept override {
        return getIdsOfNames(holder_, names, count, lcid, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID lcid, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override {
        return invokeByTypeInfo(holder_, static_cast<Interface*>(this), member, lcid, flags,
                                parameters, result, exception, argumentError);
    }

  protected:
    IDispatchImpl() noexcept = default;
    ~IDispatchImpl() = default;

  private:
    inline static TypeInfoHolder holder_{TypeInfoSource{interfaceId, libraryId, major, minor}};
};

}  // namespace velk::com
