#include "adapter_access.h"

#include <stdexcept>

#include "common/module.h"

namespace {

namespace com = velk::com;

using MakeFacade = bool (*)(mzIDispatch*, IDispatch**);

MakeFacade loadFunction() {
    // Facades may live until the program ends: so does the module.
    FARPROC const function =
        GetProcAddress(loadAdapterModule(), "convertMZCOMIDispatch2MSCOMIDispatch");
    if (function == nullptr) throw std::runtime_error("the module lacks its exported function");
    // Through void*, because the two function types differ on purpose.
    return reinterpret_cast<MakeFacade>(reinterpret_cast<void*>(function));
}

/// Keeps the object that its members are called with.
class Keeper : public mzComDispatchBaseC {
  public:
    unsigned invokeByName(mzComStringC const&, unsigned, mzComVariantArrayC const& args,
                          mzComVariantC&, mzComPtrT<mzIException>&) override {
        mzComPtrT<mzIUnknown> object;
        args[0].get(object);
        kept = mzComPtrT<mzIDispatch>(mzComPtrC(object.iface()));
        return mzSuccess;
    }

    mzComPtrT<mzIDispatch> kept;
};

}  // namespace

com::ComPtr<IDispatch> makeFacade(mzIDispatch* object) {
    static MakeFacade const function = loadFunction();
    com::ComPtr<IDispatch> facade;
    if (!function(object, facade.put())) throw std::runtime_error("no facade was made");
    return facade;
}

mzComPtrT<mzIDispatch> wrapNative(VARIANT const& value) {
    auto* const keeper = new Keeper;
    mzComPtrT<mzIDispatch> const holder(keeper);
    auto const facade = makeFacade(keeper);
    VARIANT argument = value;
    DISPPARAMS parameters{&argument, nullptr, 1, 0};
    requireSuccess(facade->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr,
                                  nullptr, nullptr),
                   "Invoke");
    if (!keeper->kept.isValid()) throw std::runtime_error("no wrapper was made");
    return keeper->kept;
}

mzComPtrT<mzIDispatch> wrapNative(com::ComPtr<IDispatch> const& object) {
    // As a bare interface even a facade is wrapped like any other object.
    VARIANT value{};
    value.vt = VT_UNKNOWN;
    value.punkVal = object.get();
    return wrapNative(value);
}

DISPID identifierOf(IDispatch* facade, OLECHAR const* member) {
    auto* name = const_cast<LPOLESTR>(member);
    DISPID id = DISPID_UNKNOWN;
    requireSuccess(facade->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), "GetIDsOfNames");
    return id;
}

void requireSuccess(HRESULT code, char const* what) {
    if (code != S_OK) throw std::runtime_error(std::string(what) + " failed");
}
