#include "system.h"

#include <iostream>

#include <io.h>
#include <windows.h>

#include "com/utf.h"

namespace velk::velkcom {

std::string adapterFileName() {
    return "VelkCOMAdapter.dll";
}

// Text that is no UTF-8 cannot come from a UTF-16 command line; it names no file.
std::filesystem::path pathFromUtf8(std::string const& text) {
    return com::fromUtf8(text).value_or(L"");
}
std::string pathToUtf8(std::filesystem::path const& path) {
    return com::toUtf8(path.native());
}

// The loader takes a path for one of a search unless it is written like this.
std::filesystem::path absolutePath(std::filesystem::path const& path) {
    return std::filesystem::absolute(path).lexically_normal().make_preferred();
}

bool usersClassesAreIgnored() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == 0) return false;
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    bool const isRaised =
        GetTokenInformation(token, TokenElevation, &elevation, sizeof elevation, &size) != 0 &&
        elevation.TokenIsElevated != 0;
    CloseHandle(token);
    return isRaised;
}

bool isTerminal(std::ostream const& stream) {
    if (&stream == &std::cout) return _isatty(1) != 0;
    return &stream == &std::cerr && _isatty(2) != 0;
}

std::string registryProblems() {
    return {};
}

int terminalWidth() {
    constexpr int usual = 80;
    CONSOLE_SCREEN_BUFFER_INFO console{};
    bool const isTold = GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &console) != 0;
    return isTold ? console.srWindow.Right - console.srWindow.Left + 1 : usual;
}

}  // namespace velk::velkcom
