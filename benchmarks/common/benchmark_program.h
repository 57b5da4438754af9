/// What every benchmark program begins with.
#pragma once

/// Reads the options of the benchmark library and runs `measure`, which throws
/// where a measurement is impossible. The exit code: 0; 1 with a line on the
/// standard error output; 2 for an unknown option.
///
/// Unless the options say otherwise, each benchmark runs `repetitions` times
/// for a short while, all in mixed order: a slow moment of the machine then
/// falls on all alike, and their medians are fair to each other.
int runBenchmarkProgram(int argc, char** argv, int repetitions, void (*measure)());
