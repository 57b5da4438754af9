/// Runs of the program in a folder of their own.
#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

#include "program.h"
#include "system.h"

namespace velk::velkcom::test {

using Arguments = std::vector<std::string>;

struct Outcome {
    int code;
    std::string out;
    std::string errors;
};

inline Outcome run(Arguments const& arguments) {
    std::ostringstream out, errors;
    int const code = runProgram(arguments, out, errors);
    return {code, out.str(), errors.str()};
}

/// A new folder, the current one meanwhile; gone with this.
class ScratchFolder {
  public:
    ScratchFolder() {
        auto const folder = std::filesystem::temp_directory_path() /
                            ("velkcom" + std::to_string(std::random_device()()));
        std::filesystem::create_directory(folder);
        std::filesystem::current_path(folder);
    }
    ScratchFolder(ScratchFolder const&) = delete;
    ScratchFolder& operator=(ScratchFolder const&) = delete;
    ~ScratchFolder() {
        auto const folder = std::filesystem::current_path();
        std::filesystem::current_path(before_);
        std::filesystem::remove_all(folder);
    }

    /// The bytes of each file by its path.
    std::map<std::filesystem::path, std::string> content() const {
        std::map<std::filesystem::path, std::string> files;
        for (auto const& entry : std::filesystem::recursive_directory_iterator("."))
            if (entry.is_regular_file()) files[entry.path()] = bytesOf(entry.path());
        return files;
    }
    static std::string bytesOf(std::filesystem::path const& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::filesystem::path const before_ = std::filesystem::current_path();
};

}  // namespace velk::velkcom::test
