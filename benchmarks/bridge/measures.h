/// Names of the single measurements, from which the table makes its ratios.
#pragma once

#include <filesystem>

namespace measure {

inline constexpr char unit[] = "unit: mutex lock and unlock, malloc and free of 64 bytes";
inline constexpr char directIntegers[] = "invokeByName, two integers";
inline constexpr char facadeIntegers[] = "facade Invoke, two integers";
inline constexpr char directText[] = "invokeByName, a text in and out";
inline constexpr char facadeText[] = "facade Invoke, a text in and out";
inline constexpr char facadeLife[] = "create, bind and release a facade";
inline constexpr char lastMember[] = "invokeByName, last of 30 members";
inline constexpr char fewNames[] = "GetIDsOfNames among 100 names";
inline constexpr char manyNames[] = "GetIDsOfNames of 100 names among 10,000";
inline constexpr char allOfManyNames[] = "GetIDsOfNames of 10,000 names in turn";
inline constexpr char oneThread[] = "facade Invoke on 1 thread";
inline constexpr char twoThreads[] = "facade Invoke on 2 threads";
inline constexpr char oneThreadDirect[] = "invokeByName on 1 thread";
inline constexpr char twoThreadsDirect[] = "invokeByName on 2 threads";
inline constexpr char directNative[] = "native object by cookie, name and Invoke, two integers";
inline constexpr char wrapperIntegers[] = "wrapper invokeByName, two integers";
inline constexpr char doubleCrossing[] = "host, wrapper, facade and host, two integers";
inline constexpr char arrayElement[] = "element of an array through its wrapper";
inline constexpr char wrapperTwoThreads[] = "one wrapper on 2 threads";
inline constexpr char wrapperEightThreads[] = "one wrapper on 8 threads";
inline constexpr char callProgram[] = "velkcom call through the proxy";
inline constexpr char countProgram[] = "wordcount on a small file";
inline constexpr char oneThreadAlone[] = "arithmetic on 1 thread";
inline constexpr char twoThreadsAlone[] = "arithmetic on 2 threads";

}  // namespace measure

/// Each adds its benchmarks to those that the library runs, in call order.
void registerRuntimeBenchmarks();
void registerFacadeBenchmarks();
void registerWrapperBenchmarks();
void registerThreadBenchmarks();
/// `folder` must stay while the benchmarks run.
void registerProgramBenchmarks(std::filesystem::path const& folder);
/// These fill the name table of the process, the second with 10,000 names:
/// they run after all others, in this order.
void registerFewNamesBenchmark();
void registerManyNamesBenchmarks();
