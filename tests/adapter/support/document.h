/// Documents for the tests of property sets.
#pragma once

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include <windows.h>

#include <propidl.h>

#include "com/com_ptr.h"
#include "host/host.h"
#include "proxyobj/prxPathNameC.h"
#include "support/value_notation.h"

namespace velk::test {

/// A compound file on drive C as an object of scripts; the file goes with it.
///   make                  a new file in place of the one before
///   put SET, KEY, VALUE   a property by number or by name; VALUE in the notation
///                         of values, or as LPSTR:, LPWSTR: or FILETIME:
///   typeOf SET, NAME      the type code of a property in the file
///   hold, letGo           the set "summary" is open for nobody else between them
class Document : public mzComDispatchBaseC {
  public:
    Document() { make(); }
    ~Document() override {
        scripting::proxyobj::prxPathNameC const file(scripting::createNew);
        file.append(path_);
        EXPECT_TRUE(file.unlink());
    }

    mzComStringC const& path() const { return path_; }

    unsigned invokeByName(mzComStringC const& name, unsigned, mzComVariantArrayC const& args,
                          mzComVariantC& result, mzComPtrT<mzIException>&) override {
        std::string const member = name.toUtf8();
        result.clear();
        if (member == "make") make();
        if (member == "hold") held_ = set("summary");
        if (member == "letGo") close();
        if (member == "put") return put(textOf(args[0]), args[1], textOf(args[2]));
        if (member == "typeOf") result = static_cast<int>(typeOf(textOf(args[0]), args[1]));
        return member == "standard" ? mzMemberNotFound : mzSuccess;
    }

  private:
    using Set = com::ComPtr<IPropertyStorage>;
    static constexpr DWORD aloneMode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
    static constexpr DWORD createMode = aloneMode | STGM_CREATE;

    static std::string textOf(mzComVariantC const& value) {
        mzComStringC text;
        value.getExt(text);
        return text.toUtf8();
    }

    void make() {
        com::ComPtr<IStorage> made;
        EXPECT_EQ(StgCreateDocfile(path_.oleText(), createMode, 0, made.put()), S_OK);
    }

    /// Opens a property set, or makes it.
    Set set(std::string const& name) {
        FMTID const id = name == "custom" ? customSet : summarySet;
        EXPECT_EQ(StgOpenStorage(path_.oleText(), nullptr, aloneMode, nullptr, 0, storage_.put()),
                  S_OK);
        auto const sets = storage_.query<IPropertySetStorage>(IID_IPropertySetStorage);
        Set made;
        if (sets->Open(id, aloneMode, made.put()) == STG_E_FILENOTFOUND) {
            EXPECT_EQ(sets->Create(id, nullptr, 0, createMode, made.put()), S_OK);
        }
        return made;
    }
    void close() {
        held_.reset();
        storage_.reset();
    }

    static PROPSPEC specifierOf(mzComVariantC const& key, std::basic_string<OLECHAR>& name) {
        PROPSPEC specifier{};
        specifier.ulKind = key.getType() == mzTypeInteger ? PRSPEC_PROPID : PRSPEC_LPWSTR;
        name = wide(textOf(key));
        specifier.lpwstr = name.data();
        if (specifier.ulKind == PRSPEC_PROPID) specifier.propid = static_cast<PROPID>(key.getInt());
        return specifier;
    }

    unsigned put(std::string const& to, mzComVariantC const& key, std::string const& notation) {
        std::string content = notation.substr(std::min(notation.find(':') + 1, notation.size()));
        auto wideContent = wide(content);
        PROPVARIANT value{};
        if (notation.starts_with("LPSTR:")) {
            value.vt = VT_LPSTR;
            value.pszVal = content.data();
        } else if (notation.starts_with("LPWSTR:")) {
            value.vt = VT_LPWSTR;
            value.pwszVal = wideContent.data();
        } else if (notation.starts_with("FILETIME:")) {
            value.vt = VT_FILETIME;
            value.uhVal.QuadPart = std::stoull(content);
        } else {
            Value read(notation);
            value.vt = read->vt;
            value.hVal.QuadPart = read->llVal;
        }
        std::basic_string<OLECHAR> name;
        PROPSPEC const specifier = specifierOf(key, name);
        auto const open = set(to);
        bool const written = open->WriteMultiple(1, &specifier, &value, PID_FIRST_USABLE) == S_OK &&
                             open->Commit(STGC_DEFAULT) == S_OK;
        held_ = open;
        close();
        return written ? mzSuccess : mzFailure;
    }

    VARTYPE typeOf(std::string const& from, mzComVariantC const& key) {
        std::basic_string<OLECHAR> name;
        PROPSPEC const specifier = specifierOf(key, name);
        PROPVARIANT value{};
        set(from)->ReadMultiple(1, &specifier, &value);
        close();
        VARTYPE const type = value.vt;
        PropVariantClear(&value);
        return type;
    }

    static constexpr FMTID summarySet = {
        0xF29F85E0, 0x4FF9, 0x1068, {0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9}};
    static constexpr FMTID customSet = {
        0xD5CDD505, 0x2E9C, 0x101B, {0x93, 0x97, 0x08, 0x00, 0x2B, 0x2C, 0xF9, 0xAE}};

    mzComStringC const path_{
        ("C:\\velkdocument" + std::to_string(std::random_device()()) + ".doc").c_str()};
    // The set ends with its storage.
    com::ComPtr<IStorage> storage_;
    Set held_;
};

}  // namespace velk::test
