#include "bridge_ratios.h"

#include <iomanip>

#include "common/ratio_table.h"
#include "measures.h"

namespace {

constexpr double nanosecondsPerSecond = 1e9;

std::vector<Ratio> ratios(MedianCollector const& m) {
    using namespace measure;
    double const u = m.nanoseconds(unit);
    auto const inUnits = [&](char const* name) { return m.nanoseconds(name) / u; };
    return {
        {"facade Invoke with two integers, less invokeByName",
         inUnits(facadeIntegers) - inUnits(directIntegers), Bound::atMost, 4, "u"},
        {"the same with a text of 100 characters in and out",
         inUnits(facadeText) - inUnits(directText), Bound::atMost, 8, "u"},
        {"GetIDsOfNames of 100 names among 10,000 against among 100",
         m.nanoseconds(manyNames) / m.nanoseconds(fewNames), Bound::atMost, 1.5, "times"},
        // Each of them has left the nearest caches when its turn comes again.
        {"the same, all of the 10,000 names in turn",
         m.nanoseconds(allOfManyNames) / m.nanoseconds(fewNames), Bound::atMost, 3, "times"},
        {"throughput of two threads on two facades against one",
         m.nanoseconds(oneThread) / m.nanoseconds(twoThreads), Bound::atLeast, 1.8, "times"},
        {"create, bind and release a facade", inUnits(facadeLife), Bound::atMost, 4, "u"},
        {"invokeByName, the last of 30 members", inUnits(lastMember), Bound::atMost, 4, "u"},
        {"wrapper invokeByName with two integers, less the native calls",
         inUnits(wrapperIntegers) - inUnits(directNative), Bound::atMost, 5, "u"},
        {"host to native to host, less invokeByName",
         inUnits(doubleCrossing) - inUnits(directIntegers), Bound::atMost, 12, "u"},
        {"element of a 1,000 x 1,000 array through its wrapper", inUnits(arrayElement),
         Bound::atMost, 4, "u"},
        {"one wrapper on 8 threads, per call, against on 2",
         m.nanoseconds(wrapperEightThreads) / m.nanoseconds(wrapperTwoThreads), Bound::atMost, 1.2,
         "times"},
        {"velkcom call VelkCOMAdapter.VelkCOMProxy 'CreateObject(scripting.dictionary).Count'",
         m.nanoseconds(callProgram) / nanosecondsPerSecond, Bound::atMost, 0.1, "s"},
        {"wordcount on a small file", m.nanoseconds(countProgram) / nanosecondsPerSecond,
         Bound::atMost, 0.15, "s"},
    };
}

/// What two threads gain at work that is none of the bridge's, for comparison.
void printGain(std::ostream& out, MedianCollector const& medians, char const* one, char const* two,
               char const* work) {
    out << std::setw(9) << std::setprecision(2)
        << medians.nanoseconds(one) / medians.nanoseconds(two)
        << " times  (two threads against one here, " << work << ")\n";
}

}  // namespace

void printBridgeRatios(std::ostream& out, MedianCollector const& medians) {
    using namespace measure;
    out << "\nRatios (u: " << std::setprecision(1) << medians.nanoseconds(unit) << " ns)\n";
    printRatios(out, ratios(medians));
    printGain(out, medians, oneThreadDirect, twoThreadsDirect, "the host call without the bridge");
    printGain(out, medians, oneThreadAlone, twoThreadsAlone, "arithmetic that shares nothing");
}
