/// Documents for the tests of property sets.
#pragma once

#include <random>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include <propidl.h>

#include "com/com_ptr.h"
#include "proxyobj/prxPathNameC.h"
#include "support/volumes.h"

namespace velk::test {

inline constexpr FMTID summarySet = {
    0xF29F85E0, 0x4FF9, 0x1068, {0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9}};
inline constexpr FMTID customSet = {
    0xD5CDD505, 0x2E9C, 0x101B, {0x93, 0x97, 0x08, 0x00, 0x2B, 0x2C, 0xF9, 0xAE}};

/// A compound file on drive C, which goes with the object.
class Document {
  public:
    Document()
        : path_(("C:\\velkdocument" + std::to_string(std::random_device()()) + ".doc").c_str()) {
        com::ComPtr<IStorage> made;
        EXPECT_EQ(StgCreateDocfile(path_.oleText(), createMode, 0, made.put()), S_OK);
    }
    Document(Document const&) = delete;
    Document& operator=(Document const&) = delete;
    ~Document() {
        scripting::proxyobj::prxPathNameC const file(scripting::createNew);
        file.append(path_);
        EXPECT_TRUE(file.unlink());
    }

    mzComStringC const& path() const { return path_; }

    /// Opens a property set, or makes it.
    com::ComPtr<IPropertyStorage> set(REFFMTID id) const {
        com::ComPtr<IStorage> storage;
        EXPECT_EQ(StgOpenStorage(path_.oleText(), nullptr, aloneMode, nullptr, 0, storage.put()),
                  S_OK);
        auto const sets = storage.query<IPropertySetStorage>(IID_IPropertySetStorage);
        com::ComPtr<IPropertyStorage> made;
        if (sets->Open(id, aloneMode, made.put()) == STG_E_FILENOTFOUND) {
            EXPECT_EQ(sets->Create(id, nullptr, 0, createMode, made.put()), S_OK);
        }
        keepOpen_ = storage;
        return made;
    }
    void close() const { keepOpen_.reset(); }

    /// Writes one property.
    void put(REFFMTID id, PROPSPEC const& specifier, PROPVARIANT const& value) const {
        {
            auto const open = set(id);
            EXPECT_EQ(open->WriteMultiple(1, &specifier, &value, PID_FIRST_USABLE), S_OK);
            EXPECT_EQ(open->Commit(STGC_DEFAULT), S_OK);
        }
        close();
    }

  private:
    static constexpr DWORD aloneMode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
    static constexpr DWORD createMode = aloneMode | STGM_CREATE;

    DriveC drive_;
    mzComStringC path_;
    // The set ends with its storage.
    mutable com::ComPtr<IStorage> keepOpen_;
};

inline PROPSPEC byId(PROPID id) {
    PROPSPEC specifier{};
    specifier.ulKind = PRSPEC_PROPID;
    specifier.propid = id;
    return specifier;
}
inline PROPSPEC byName(OLECHAR const* name) {
    PROPSPEC specifier{};
    specifier.ulKind = PRSPEC_LPWSTR;
    specifier.lpwstr = const_cast<OLECHAR*>(name);
    return specifier;
}

inline PROPVARIANT textValue(char const* text) {
    PROPVARIANT value{};
    value.vt = VT_LPSTR;
    value.pszVal = const_cast<char*>(text);
    return value;
}
inline PROPVARIANT numberValue(VARTYPE type, LONG number) {
    PROPVARIANT value{};
    value.vt = type;
    value.lVal = number;
    return value;
}

}  // namespace velk::test
