#include <stdlib.h>

#include <filesystem>
#include <string>

namespace {

// Every run has a registry of its own that begins empty: tests compare the
// whole of it.
class ScratchRegistry {
  public:
    ScratchRegistry()
        : folder_((std::filesystem::temp_directory_path() / "velk-registry-XXXXXX").string()) {
        if (mkdtemp(folder_.data()) == nullptr) abort();
        setenv("VELK_REGISTRY_DIR", folder_.c_str(), 1);
    }
    ~ScratchRegistry() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

  private:
    std::string folder_;
};

ScratchRegistry const scratchRegistry;

}  // namespace
