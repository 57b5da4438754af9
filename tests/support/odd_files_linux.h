/// What may stand where a program expects a file.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <sys/stat.h>

namespace velk::test {

/// A folder to make things in, the current one meanwhile; gone with this.
class OddFiles {
  public:
    using Path = std::filesystem::path;

    OddFiles() : before_(std::filesystem::current_path()) {
        auto name = (std::filesystem::temp_directory_path() / "velk-odd-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test");
        root_ = std::filesystem::canonical(name);
        std::filesystem::current_path(root_);
    }
    OddFiles(OddFiles const&) = delete;
    OddFiles& operator=(OddFiles const&) = delete;
    ~OddFiles() {
        std::error_code ignored;
        std::filesystem::current_path(before_, ignored);
        std::filesystem::remove_all(root_, ignored);
    }

    /// All take and give paths below the folder, and make the folders on the way.
    Path at(std::string const& name) const {
        auto path = root_ / name;
        std::filesystem::create_directories(path.parent_path());
        return path;
    }
    Path copy(Path const& source, std::string const& name) const {
        auto path = at(name);
        std::filesystem::copy_file(source, path);
        return path;
    }
    /// The first bytes of a file; with a number from the end on where it is negative.
    Path cut(Path const& source, std::string const& name, std::ptrdiff_t size) const {
        auto path = copy(source, name);
        auto const whole = static_cast<std::ptrdiff_t>(std::filesystem::file_size(path));
        std::filesystem::resize_file(path,
                                     static_cast<std::size_t>(size < 0 ? whole + size : size));
        return path;
    }
    /// A copy with some bytes changed.
    Path changed(Path const& source, std::string const& name, std::size_t offset,
                 std::string const& bytes) const {
        auto path = copy(source, name);
        std::fstream stream(path, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(static_cast<std::streamoff>(offset));
        stream.write(bytes.data(), std::ssize(bytes));
        return path;
    }
    Path written(std::string const& name, std::string const& text) const {
        auto path = at(name);
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    Path pipe(std::string const& name) const {
        auto path = at(name);
        if (mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("no pipe for the test");
        return path;
    }
    Path folder(std::string const& name) const {
        auto path = at(name);
        std::filesystem::create_directory(path);
        return path;
    }
    Path link(Path const& target, std::string const& name) const {
        auto path = at(name);
        std::filesystem::create_symlink(target, path);
        return path;
    }

  private:
    Path before_;
    Path root_;
};

}  // namespace velk::test
