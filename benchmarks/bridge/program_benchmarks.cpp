#include <fstream>
#include <string>

#include "common/whole_program.h"
#include "measures.h"

// Clients that start the host application, use it and end it.

void registerProgramBenchmarks(std::filesystem::path const& folder) {
    std::string const withRegistry = "VELK_REGISTRY_DIR=" + (folder / "registry").string() + ' ';
    std::filesystem::path const text = folder / "text";
    std::ofstream(text) << "the quick brown fox jumps over the lazy dog\n";
    runProgram(withRegistry + VELK_VELKCOM " register --user 2> /dev/null");
    registerProgram(measure::callProgram, withRegistry + VELK_VELKCOM
                                              " call VelkCOMAdapter.VelkCOMProxy"
                                              " 'CreateObject(scripting.dictionary).Count'");
    registerProgram(measure::countProgram, withRegistry + VELK_WORDCOUNT " " + text.string());
}
