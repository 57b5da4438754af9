#include "word_reader.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace wordcount {
namespace {

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

constexpr std::size_t bufferSize = 65536;

char lowerLetter(char byte) {
    if (byte >= 'a' && byte <= 'z') return byte;
    if (byte >= 'A' && byte <= 'Z') return static_cast<char>(byte - 'A' + 'a');
    return 0;
}

[[noreturn]] void throwReadError(std::string const& path) {
    throw std::runtime_error("cannot read '" + path + "': " + std::strerror(errno));
}

}  // namespace

void readWords(std::string const& path, std::function<void(std::string_view)> const& take) {
    File const file(std::fopen(path.c_str(), "rb"));
    if (!file) throwReadError(path);
    std::array<char, bufferSize> buffer;
    std::string word;
    auto const endWord = [&] {
        if (!word.empty()) take(word);
        word.clear();
    };
    while (std::size_t const count = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
        for (std::size_t i = 0; i < count; ++i) {
            if (char const letter = lowerLetter(buffer[i])) {
                word += letter;
            } else {
                endWord();
            }
        }
    }
    if (std::ferror(file.get()) != 0) throwReadError(path);
    endWord();
}

}  // namespace wordcount
