#include <benchmark/benchmark.h>

#include "adapter_access.h"
#include "measures.h"
#include "native_adder.h"
#include "sample_object.h"

namespace {

namespace com = velk::com;

/// A registration in the global interface table for one benchmark.
class Cookie {
  public:
    explicit Cookie(com::ComPtr<IDispatch> const& object) {
        requireSuccess(
            CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                             IID_IGlobalInterfaceTable, table_.putVoid()),
            "CoCreateInstance");
        requireSuccess(table_->RegisterInterfaceInGlobal(object.get(), IID_IDispatch, &cookie_),
                       "RegisterInterfaceInGlobal");
    }
    Cookie(Cookie const&) = delete;
    Cookie& operator=(Cookie const&) = delete;
    ~Cookie() { table_->RevokeInterfaceFromGlobal(cookie_); }

    com::ComPtr<IDispatch> object() const {
        com::ComPtr<IDispatch> found;
        requireSuccess(table_->GetInterfaceFromGlobal(cookie_, IID_IDispatch, found.putVoid()),
                       "GetInterfaceFromGlobal");
        return found;
    }

  private:
    com::ComPtr<IGlobalInterfaceTable> table_;
    DWORD cookie_ = 0;
};

void measureDirectNative(benchmark::State& state) {
    Cookie const cookie(NativeAdder::create());
    for (auto _ : state) {
        auto const object = cookie.object();
        DISPID const add = identifierOf(object.get(), OLESTR("Add"));
        VARIANT arguments[2]{};
        arguments[0].vt = arguments[1].vt = VT_I4;
        arguments[0].lVal = 22;
        arguments[1].lVal = 20;
        DISPPARAMS parameters{arguments, nullptr, 2, 0};
        VARIANT result{};
        EXCEPINFO exception{};
        UINT wrongArgument = 0;
        requireSuccess(object->Invoke(add, IID_NULL, 0, DISPATCH_METHOD, &parameters, &result,
                                      &exception, &wrongArgument),
                       "Invoke");
        benchmark::DoNotOptimize(result);
    }
}

void measureCall(benchmark::State& state, mzComPtrT<mzIDispatch> const& object, char const* member,
                 int first, int second) {
    mzComStringC const name(member);
    mzComVariantArrayC const args = mzComVariantArrayC() << first << second;
    for (auto _ : state) {
        mzComVariantC result;
        mzComPtrT<mzIException> exception;
        requireSuccess(
            static_cast<HRESULT>(object->invokeByName(name, mzCallMethod, args, result, exception)),
            "invokeByName");
        benchmark::DoNotOptimize(result);
    }
}

void measureWrapperIntegers(benchmark::State& state) {
    measureCall(state, wrapNative(NativeAdder::create()), "Add", 20, 22);
}

void measureDoubleCrossing(benchmark::State& state) {
    auto const host = SampleObject::create();
    measureCall(state, wrapNative(makeFacade(host.iface())), "Add", 20, 22);
}

void measureArrayElement(benchmark::State& state) {
    SAFEARRAYBOUND bounds[] = {{1000, 0}, {1000, 0}};
    com::SafeArray const array(SafeArrayCreate(VT_I4, 2, bounds));
    VARIANT value{};
    value.vt = VT_ARRAY | VT_I4;
    value.parray = array.get();
    measureCall(state, wrapNative(value), "", 500, 501);
}

}  // namespace

void registerWrapperBenchmarks() {
    benchmark::RegisterBenchmark(measure::directNative, measureDirectNative);
    benchmark::RegisterBenchmark(measure::wrapperIntegers, measureWrapperIntegers);
    benchmark::RegisterBenchmark(measure::doubleCrossing, measureDoubleCrossing);
    benchmark::RegisterBenchmark(measure::arrayElement, measureArrayElement);
}
