#include <atomic>
#include <chrono>
#include <functional>
#include <latch>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "adapter_access.h"
#include "measures.h"
#include "native_adder.h"
#include "sample_object.h"

namespace {

/// What one thread does: prepares itself, waits at the latch, works.
using Worker = std::function<void(std::latch& start)>;

constexpr int callsPerThread = 200000;

/// Times `threads` workers from the moment when all are ready to the end of
/// the last. Time per call and thread: half of it for two threads that do not
/// hinder one another means twice the throughput.
void measureTogether(benchmark::State& state, int threads, Worker const& worker) {
    for (auto _ : state) {
        std::latch start(threads + 1);
        std::vector<std::jthread> pool;
        pool.reserve(static_cast<std::size_t>(threads));
        for (int i = 0; i < threads; ++i) pool.emplace_back([&] { worker(start); });
        start.arrive_and_wait();
        auto const begin = std::chrono::steady_clock::now();
        for (auto& thread : pool) thread.join();
        std::chrono::duration<double> const elapsed = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(elapsed.count() / threads);
    }
}

/// Each thread calls a facade of its own over a host object of its own.
void callFacade(std::latch& start) {
    auto const facade = makeFacade(SampleObject::create().iface());
    DISPID const add = identifierOf(facade.get(), OLESTR("Add"));
    VARIANT arguments[2]{};
    arguments[0].vt = arguments[1].vt = VT_I4;
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    start.arrive_and_wait();
    for (int i = 0; i < callsPerThread; ++i) {
        VARIANT result{};
        requireSuccess(facade->Invoke(add, IID_NULL, 0, DISPATCH_METHOD, &parameters, &result,
                                      nullptr, nullptr),
                       "Invoke");
        benchmark::DoNotOptimize(result);
    }
}

/// The host call alone, on an object of the thread's own.
void callDirectly(std::latch& start) {
    auto const object = SampleObject::create();
    mzComStringC const name("Add");
    mzComVariantArrayC const args = mzComVariantArrayC() << mzComVariantC(0) << mzComVariantC(0);
    start.arrive_and_wait();
    for (int i = 0; i < callsPerThread; ++i) {
        mzComVariantC result;
        mzComPtrT<mzIException> exception;
        requireSuccess(
            static_cast<HRESULT>(object->invokeByName(name, mzCallMethod, args, result, exception)),
            "invokeByName");
        benchmark::DoNotOptimize(result);
    }
}

/// Work that shares nothing: what two threads gain on this machine at best.
void calculate(std::latch& start) {
    start.arrive_and_wait();
    double value = 1.0;
    for (int i = 0; i < callsPerThread * 100; ++i) {
        value = value * 1.0000001 + 0.5;
        benchmark::DoNotOptimize(value);
    }
}

void registerTogether(char const* name, int threads, Worker const& worker) {
    benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
        measureTogether(state, threads, worker);
    })->UseManualTime();
}

void registerPair(char const* one, char const* two, Worker const& worker) {
    registerTogether(one, 1, worker);
    registerTogether(two, 2, worker);
}

/// Calls of one native object through one wrapper that all threads share.
void callWrapper(mzComPtrT<mzIDispatch> const& wrapper, std::latch& start) {
    mzComStringC const name("Add");
    mzComVariantArrayC const args = mzComVariantArrayC() << mzComVariantC(0) << mzComVariantC(0);
    start.arrive_and_wait();
    for (int i = 0; i < callsPerThread; ++i) {
        mzComVariantC result;
        mzComPtrT<mzIException> exception;
        requireSuccess(static_cast<HRESULT>(
                           wrapper->invokeByName(name, mzCallMethod, args, result, exception)),
                       "invokeByName");
        benchmark::DoNotOptimize(result);
    }
}

}  // namespace

void registerThreadBenchmarks() {
    registerPair(measure::oneThread, measure::twoThreads, callFacade);
    registerPair(measure::oneThreadDirect, measure::twoThreadsDirect, callDirectly);
    auto const shared = [wrapper = wrapNative(NativeAdder::create())](std::latch& start) {
        callWrapper(wrapper, start);
    };
    registerTogether(measure::wrapperTwoThreads, 2, shared);
    registerTogether(measure::wrapperEightThreads, 8, shared);
    registerPair(measure::oneThreadAlone, measure::twoThreadsAlone, calculate);
}
