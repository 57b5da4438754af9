/// Telling which hives do not count, and why.
#include <algorithm>

#include <velk_registry.h>

#include "platform/registry/hive.h"

using namespace velk::platform::registry;

DWORD VelkRegistryProblems(char* text, DWORD capacity) {
    std::string lines;
    answer([&] {
        for (auto const name : {HiveName::user, HiveName::machine}) {
            auto const problem = Hive::named(name).problem();
            if (!problem.empty()) lines += problem + '\n';
        }
    });
    if (capacity != 0) text[lines.copy(text, capacity - 1)] = '\0';
    return static_cast<DWORD>(lines.size());
}
