#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "adapter_access.h"
#include "measures.h"
#include "memory.h"
#include "sample_object.h"

namespace {

namespace com = velk::com;

constexpr std::size_t fewNamesCount = 100;
constexpr std::size_t manyNamesCount = 1000000;

/// Names of the same length, as "member0000042".
std::basic_string<OLECHAR> nameOf(std::size_t number) {
    std::string const digits = std::to_string(10000000 + number).substr(1);
    std::string const name = "member" + digits;
    return {name.begin(), name.end()};
}

/// `count` names in an order that has nothing to do with their numbers.
std::vector<std::basic_string<OLECHAR>> shuffledNames(std::size_t count, std::size_t range) {
    std::vector<std::size_t> numbers(range);
    for (std::size_t i = 0; i < range; ++i) numbers[i] = i;
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937_64(1));
    std::vector<std::basic_string<OLECHAR>> names;
    names.reserve(count);
    for (std::size_t i = 0; i < count; ++i) names.push_back(nameOf(numbers[i]));
    return names;
}

void fillTable(IDispatch* facade, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) identifierOf(facade, nameOf(i).c_str());
}

/// Looks up `asked` different names, one after another, in a table of `known`.
void measureLookup(benchmark::State& state, std::size_t asked, std::size_t known) {
    auto const facade = makeFacade(SampleObject::create().iface());
    fillTable(facade.get(), known);
    auto const names = shuffledNames(asked, known);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(identifierOf(facade.get(), names[next].c_str()));
        if (++next == names.size()) next = 0;
    }
}

}  // namespace

double bytesPerName() {
    auto const facade = makeFacade(SampleObject::create().iface());
    std::size_t const before = allocatedBytes();
    // New names, whatever the benchmarks asked for before.
    for (std::size_t i = 0; i < fewNamesCount * 1000; ++i) {
        identifierOf(facade.get(), nameOf(manyNamesCount + i).c_str());
    }
    return static_cast<double>(allocatedBytes() - before) / (fewNamesCount * 1000);
}

double bytesPerFacade() {
    constexpr std::size_t count = 100000;
    auto const object = SampleObject::create();
    std::vector<com::ComPtr<IDispatch>> facades;
    facades.reserve(count);
    facades.push_back(makeFacade(object.iface()));
    std::size_t const before = allocatedBytes();
    while (facades.size() <= count - 1) facades.push_back(makeFacade(object.iface()));
    return static_cast<double>(allocatedBytes() - before) / (count - 1);
}

void registerFewNamesBenchmark() {
    benchmark::RegisterBenchmark(measure::fewNames, [](benchmark::State& state) {
        measureLookup(state, fewNamesCount, fewNamesCount);
    });
}

void registerManyNamesBenchmarks() {
    benchmark::RegisterBenchmark(measure::manyNames, [](benchmark::State& state) {
        measureLookup(state, manyNamesCount, manyNamesCount);
    });
    benchmark::RegisterBenchmark(measure::manyNamesRepeated, [](benchmark::State& state) {
        measureLookup(state, fewNamesCount, manyNamesCount);
    });
}
