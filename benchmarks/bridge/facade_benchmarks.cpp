#include <string>

#include <benchmark/benchmark.h>

#include "adapter_access.h"
#include "measures.h"
#include "sample_object.h"

namespace {

namespace com = velk::com;

void measureFacadeIntegers(benchmark::State& state) {
    auto const facade = makeFacade(SampleObject::create().iface());
    DISPID const add = identifierOf(facade.get(), OLESTR("Add"));
    VARIANT arguments[2]{};
    arguments[0].vt = arguments[1].vt = VT_I4;
    arguments[0].lVal = 22;
    arguments[1].lVal = 20;
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    for (auto _ : state) {
        VARIANT result{};
        requireSuccess(facade->Invoke(add, IID_NULL, 0, DISPATCH_METHOD, &parameters, &result,
                                      nullptr, nullptr),
                       "Invoke");
        benchmark::DoNotOptimize(result);
    }
}

void measureFacadeText(benchmark::State& state) {
    auto const facade = makeFacade(SampleObject::create().iface());
    DISPID const echo = identifierOf(facade.get(), OLESTR("Echo"));
    com::Bstr const text = com::makeBstr(std::basic_string<OLECHAR>(100, OLECHAR(0x78)));
    VARIANT argument{};
    argument.vt = VT_BSTR;
    argument.bstrVal = text.get();
    DISPPARAMS parameters{&argument, nullptr, 1, 0};
    for (auto _ : state) {
        com::Variant result;
        requireSuccess(facade->Invoke(echo, IID_NULL, 0, DISPATCH_METHOD, &parameters, result.put(),
                                      nullptr, nullptr),
                       "Invoke");
        benchmark::DoNotOptimize(*result.address());
    }
}

void measureFacadeLife(benchmark::State& state) {
    auto const object = SampleObject::create();
    for (auto _ : state) {
        auto const facade = makeFacade(object.iface());
        benchmark::DoNotOptimize(facade.get());
    }
}

}  // namespace

void registerFacadeBenchmarks() {
    benchmark::RegisterBenchmark(measure::facadeIntegers, measureFacadeIntegers);
    benchmark::RegisterBenchmark(measure::facadeText, measureFacadeText);
    benchmark::RegisterBenchmark(measure::facadeLife, measureFacadeLife);
}
