#include <algorithm>
#include <array>
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
constexpr std::size_t manyNamesCount = 10000;

/// A name of 13 characters, as "member0000042". Without memory of its own, so
/// that a measurement reads the table's and little else.
using Name = std::array<OLECHAR, 14>;

Name nameOf(std::size_t number) {
    std::string const digits = std::to_string(10000000 + number).substr(1);
    std::string const text = "member" + digits;
    Name name{};
    std::copy(text.begin(), text.end(), name.begin());
    return name;
}

/// `count` names in an order that has nothing to do with their numbers.
std::vector<Name> shuffledNames(std::size_t count) {
    std::vector<Name> names;
    for (std::size_t i = 0; i < count; ++i) names.push_back(nameOf(i));
    std::shuffle(names.begin(), names.end(), std::mt19937_64(1));
    return names;
}

void fillTable(IDispatch* facade, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) identifierOf(facade, nameOf(i).data());
}

/// Looks up `asked` names of a table of `known` in turn.
void measureLookup(benchmark::State& state, std::size_t asked, std::size_t known) {
    auto const facade = makeFacade(SampleObject::create().iface());
    fillTable(facade.get(), known);
    auto const names = shuffledNames(known);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(identifierOf(facade.get(), names[next].data()));
        if (++next == asked) next = 0;
    }
}

}  // namespace

double bytesPerName() {
    auto const facade = makeFacade(SampleObject::create().iface());
    std::size_t const before = allocatedBytes();
    // New names, whatever the benchmarks asked for before.
    for (std::size_t i = 0; i < fewNamesCount * 1000; ++i) {
        identifierOf(facade.get(), nameOf(manyNamesCount + i).data());
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
        measureLookup(state, fewNamesCount, manyNamesCount);
    });
    benchmark::RegisterBenchmark(measure::allOfManyNames, [](benchmark::State& state) {
        measureLookup(state, manyNamesCount, manyNamesCount);
    });
}
