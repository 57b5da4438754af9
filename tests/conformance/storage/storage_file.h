/// Compound files for tests.
#pragma once

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include "com/com_ptr.h"

namespace velk::test {

using Text = std::basic_string<OLECHAR>;
using Storage = com::ComPtr<IStorage>;
using Stream = com::ComPtr<IStream>;

inline constexpr DWORD alone = STGM_SHARE_EXCLUSIVE;
inline constexpr DWORD change = STGM_READWRITE | alone;
inline constexpr DWORD look = STGM_READ | alone;

/// A mode in the words that tables have for it.
inline DWORD modeOf(std::string const& words) {
    std::map<std::string, DWORD> const modes{{"read", STGM_READ},
                                             {"write", STGM_WRITE},
                                             {"change", STGM_READWRITE},
                                             {"both", STGM_WRITE | STGM_READWRITE},
                                             {"alone", alone},
                                             {"deny-read", STGM_SHARE_DENY_READ},
                                             {"deny-write", STGM_SHARE_DENY_WRITE},
                                             {"deny-none", STGM_SHARE_DENY_NONE},
                                             {"create", STGM_CREATE},
                                             {"convert", STGM_CONVERT},
                                             {"transacted", STGM_TRANSACTED},
                                             {"priority", STGM_PRIORITY},
                                             {"swmr", STGM_DIRECT_SWMR},
                                             {"delete", STGM_DELETEONRELEASE},
                                             {"odd", 0x100}};
    DWORD mode = 0;
    std::istringstream all(words);
    for (std::string word; all >> word;) mode |= modes.at(word);
    return mode;
}

/// Names of elements and of properties differ by more than case.
struct IgnoringCase {
    static OLECHAR upper(OLECHAR unit) {
        bool const isLower = (unit >= 'a' && unit <= 'z') || (unit >= 0xe0 && unit <= 0xfe);
        return static_cast<OLECHAR>(isLower ? unit - 32 : unit);
    }
    bool operator()(Text one, Text other) const {
        for (auto* text : {&one, &other}) std::ranges::transform(*text, text->begin(), upper);
        return one < other;
    }
};

/// A place for a file, which is gone with this.
class FilePlace {
  public:
    FilePlace()
        : file_(std::filesystem::temp_directory_path() /
                ("velkstorage" + std::to_string(std::random_device()()))),
          path_(file_.string<OLECHAR>()) {}
    FilePlace(FilePlace const&) = delete;
    FilePlace& operator=(FilePlace const&) = delete;
    ~FilePlace() {
        std::error_code error;
        std::filesystem::remove(file_, error);
    }

    OLECHAR const* path() const { return path_.c_str(); }
    std::filesystem::path const& file() const { return file_; }

    std::string bytes() const {
        std::ifstream file(file_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// In the file that is there: some systems wait for the medium when one is
    /// made anew.
    void put(std::string const& bytes) const {
        if (!std::filesystem::exists(file_)) std::ofstream(file_).flush();
        std::fstream file(file_, std::ios::binary | std::ios::in | std::ios::out);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush();
        EXPECT_TRUE(file.good());
        if (std::filesystem::file_size(file_) != bytes.size()) {
            std::filesystem::resize_file(file_, bytes.size());
        }
    }

    Storage create(DWORD mode = change | STGM_CREATE) const {
        Storage made;
        EXPECT_EQ(StgCreateDocfile(path(), mode, 0, made.put()), S_OK);
        return made;
    }
    HRESULT tryOpen(DWORD mode, Storage& opened) const {
        return StgOpenStorage(path(), nullptr, mode, nullptr, 0, opened.put());
    }
    Storage open(DWORD mode = change) const {
        Storage opened;
        EXPECT_EQ(tryOpen(mode, opened), S_OK);
        return opened;
    }

  private:
    std::filesystem::path file_;
    Text path_;
};

inline Stream createStream(IStorage& storage, OLECHAR const* name) {
    Stream made;
    EXPECT_EQ(storage.CreateStream(name, change | STGM_CREATE, 0, 0, made.put()), S_OK);
    return made;
}

inline Stream openStream(IStorage& storage, OLECHAR const* name, DWORD mode = look) {
    Stream opened;
    EXPECT_EQ(storage.OpenStream(name, nullptr, mode, 0, opened.put()), S_OK);
    return opened;
}

inline void seek(IStream& stream, LONGLONG to) {
    LARGE_INTEGER move;
    move.QuadPart = to;
    EXPECT_EQ(stream.Seek(move, STREAM_SEEK_SET, nullptr), S_OK);
}

inline void write(IStream& stream, std::string const& bytes) {
    ULONG done = 0;
    EXPECT_EQ(stream.Write(bytes.data(), static_cast<ULONG>(bytes.size()), &done), S_OK);
    EXPECT_EQ(done, bytes.size());
}

/// All bytes from the beginning on.
inline std::string content(IStream& stream) {
    seek(stream, 0);
    std::string all;
    std::vector<char> part(10000);
    for (ULONG done = 1; done != 0;) {
        EXPECT_TRUE(SUCCEEDED(stream.Read(part.data(), static_cast<ULONG>(part.size()), &done)));
        all.append(part.data(), done);
    }
    return all;
}

/// The code as tables have it.
inline std::string codeName(HRESULT code) {
    struct Named {
        HRESULT code;
        char const* name;
    };
    for (auto const& named :
         {Named{S_OK, "ok"}, Named{S_FALSE, "none"}, Named{STG_E_INVALIDFLAG, "invalid flag"},
          Named{STG_E_ACCESSDENIED, "access denied"}, Named{STG_E_FILENOTFOUND, "not found"},
          Named{STG_E_FILEALREADYEXISTS, "exists"}, Named{STG_E_INVALIDNAME, "invalid name"},
          Named{STG_E_INVALIDPARAMETER, "invalid parameter"},
          Named{STG_E_INVALIDPOINTER, "invalid pointer"},
          Named{STG_E_INVALIDHEADER, "invalid header"}, Named{STG_E_DOCFILECORRUPT, "corrupt"}}) {
        if (code == named.code) return named.name;
    }
    char text[16];
    std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(code));
    return text;
}

/// Bytes that tell where they belong.
inline std::string pattern(std::size_t size, std::size_t seed = 1) {
    std::string bytes(size, 0);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>(i * 7 + i / 251 + seed * 31);
    }
    return bytes;
}

}  // namespace velk::test
