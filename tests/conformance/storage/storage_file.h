/// Compound files for tests.
#pragma once

#include <cstdio>
#include <filesystem>
#include <random>
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
