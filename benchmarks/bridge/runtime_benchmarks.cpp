#include <cstdlib>
#include <mutex>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "measures.h"
#include "sample_object.h"

namespace {

void measureUnit(benchmark::State& state) {
    std::mutex mutex;
    for (auto _ : state) {
        mutex.lock();
        benchmark::ClobberMemory();
        mutex.unlock();
        void* block = std::malloc(64);
        benchmark::DoNotOptimize(block);
        std::free(block);
    }
}

void callDirectly(benchmark::State& state, char const* member, mzComVariantArrayC const& args) {
    auto const object = SampleObject::create();
    mzComStringC const name(member);
    for (auto _ : state) {
        mzComVariantC result;
        mzComPtrT<mzIException> exception;
        if (object->invokeByName(name, mzCallMethod, args, result, exception) != mzSuccess) {
            throw std::runtime_error("invokeByName failed");
        }
        benchmark::DoNotOptimize(result);
    }
}

void measureDirectIntegers(benchmark::State& state) {
    callDirectly(state, "Add", mzComVariantArrayC() << mzComVariantC(20) << mzComVariantC(22));
}

void measureDirectText(benchmark::State& state) {
    mzComStringC const text(std::string(100, 'x').c_str());
    callDirectly(state, "Echo", mzComVariantArrayC() << mzComVariantC(text));
}

void measureLastMember(benchmark::State& state) {
    callDirectly(state, "Last", mzComVariantArrayC());
}

}  // namespace

void registerRuntimeBenchmarks() {
    benchmark::RegisterBenchmark(measure::unit, measureUnit);
    benchmark::RegisterBenchmark(measure::directIntegers, measureDirectIntegers);
    benchmark::RegisterBenchmark(measure::directText, measureDirectText);
    benchmark::RegisterBenchmark(measure::lastMember, measureLastMember);
}
