#include <stdlib.h>

#include <filesystem>
#include <string>

#include "support/leaks.h"

namespace {

// Every run has a registry of its own that begins empty: tests compare the
// whole of it.
bool useScratchRegistry() {
    std::string folder = (std::filesystem::temp_directory_path() / "velk-registry-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) return false;
    setenv("VELK_REGISTRY_DIR", folder.c_str(), 1);
    return velk::test::addTearDown([folder] { std::filesystem::remove_all(folder); });
}

[[maybe_unused]] bool const scratchRegistryIsUsed = useScratchRegistry();

}  // namespace
