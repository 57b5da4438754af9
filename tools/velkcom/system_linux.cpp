#include "system.h"

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

}  // namespace velk::velkcom
