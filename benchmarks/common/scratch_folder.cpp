#include "scratch_folder.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

ScratchFolder::ScratchFolder() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "velk-benchmark-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder can be made");
    path_ = pattern;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}
