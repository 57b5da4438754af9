#include "system.h"

#include <algorithm>
#include <iostream>

#include <sys/ioctl.h>
#include <unistd.h>
#include <velk_registry.h>

namespace velk::velkcom {

std::string adapterFileName() {
    return "VelkCOMAdapter.so";
}

// Paths are bytes here, whatever they mean.
std::filesystem::path pathFromUtf8(std::string const& text) {
    return text;
}
std::string pathToUtf8(std::filesystem::path const& path) {
    return path.string();
}

// Behind a link ".." leads elsewhere than it looks.
std::filesystem::path absolutePath(std::filesystem::path const& path) {
    auto const full = std::filesystem::absolute(path);
    bool const leadsUp = std::ranges::find(full, "..") != full.end();
    return leadsUp ? full : full.lexically_normal();
}

bool usersClassesAreIgnored() {
    return false;
}

bool isTerminal(std::ostream const& stream) {
    if (&stream == &std::cout) return isatty(STDOUT_FILENO) != 0;
    return &stream == &std::cerr && isatty(STDERR_FILENO) != 0;
}

std::string registryProblems() {
    std::string lines(VelkRegistryProblems(nullptr, 0) + 1, '\0');
    lines.resize(VelkRegistryProblems(lines.data(), static_cast<DWORD>(lines.size())));
    return lines;
}

int terminalWidth() {
    constexpr int usual = 80;
    winsize size{};
    bool const isTold = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
    return isTold ? size.ws_col : usual;
}

}  // namespace velk::velkcom
