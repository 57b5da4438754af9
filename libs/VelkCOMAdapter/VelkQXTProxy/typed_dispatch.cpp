#include "VelkQXTProxy/typed_dispatch.h"

#include <utility>

#include "VelkQXTProxy/dispatch_wrapper.h"
#include "com/object.h"

namespace velk::adapter {
namespace {

/// The system's standard dispatch object does not count the instance that it
/// calls. This one stands before it and counts both.
class TypedDispatch : public com::CComObjectRootEx<com::CComMultiThreadModel>, public IDispatch {
  public:
    VELK_COM_MAP(TypedDispatch, VELK_COM_INTERFACE(IDispatch, IID_IDispatch))

    void bind(com::ComPtr<IUnknown> instance, com::ComPtr<IDispatch> standard) noexcept {
        instance_ = std::move(instance);
        standard_ = std::move(standard);
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        return forward(&IDispatch::GetTypeInfoCount, count);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid,
                                          ITypeInfo** out) noexcept override {
        return forward(&IDispatch::GetTypeInfo, index, lcid, out);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid,
                                            DISPID* ids) noexcept override {
        return forward(&IDispatch::GetIDsOfNames, riid, names, count, lcid, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID riid, LCID lcid, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override {
        return forward(&IDispatch::Invoke, member, riid, lcid, flags, parameters, result, exception,
                       argumentError);
    }

  protected:
    ~TypedDispatch() = default;

  private:
    /// The member that is called may let go of the last reference to this object.
    template <typename... Parameters, typename... Arguments>
    HRESULT forward(HRESULT (STDMETHODCALLTYPE IDispatch::*method)(Parameters...),
                    Arguments&&... arguments) noexcept {
        try {
            com::ComPtr<IDispatch> const self(this);
            return (standard_.get()->*method)(std::forward<Arguments>(arguments)...);
        }
        VELK_COM_CATCH
    }

    // The instance goes last: nothing may call it by then.
    com::ComPtr<IUnknown> instance_;
    com::ComPtr<IDispatch> standard_;
};

}  // namespace

HRESULT makeTypedDispatch(com::ComPtr<IUnknown> const& instance, com::ComPtr<ITypeInfo> const& type,
                          com::ComPtr<IDispatch>& made) {
    com::ComPtr<IUnknown> standard;
    HRESULT code = CreateStdDispatch(nullptr, instance.get(), type.get(), standard.put());
    if (code != S_OK) return code;
    auto dispatch = standard.query<IDispatch>(IID_IDispatch, &code);
    if (!dispatch) return code;
    com::CComObject<TypedDispatch>* object = nullptr;
    code = com::CComObject<TypedDispatch>::CreateInstance(&object);
    if (code != S_OK) return code;
    made = com::ComPtr<IDispatch>(object);
    object->bind(instance, std::move(dispatch));
    return S_OK;
}

mzComPtrT<mzIDispatch> wrapNative(com::ComPtr<IDispatch> const& object) {
    return mzComPtrT<mzIDispatch>(new vbsComDispatchWrapperC(object.get()));
}

}  // namespace velk::adapter
