#include "com/utf.h"
#include "system.h"

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

}  // namespace velk::velkcom
