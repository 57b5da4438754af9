// Libraries that are cut short or changed load with an error or not at all.
// That is a promise of our layer: others may end the process instead.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <gtest/gtest.h>

#include "shapes.h"

namespace velk::test {
namespace {

std::vector<char> shapesBytes() {
    std::ifstream stream(std::filesystem::path(VELK_SHAPES_TLB), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

class DamagedLibrary : public testing::Test {
  protected:
    void TearDown() override { std::filesystem::remove(file_); }

    // The code of loading these bytes; what loads is asked for everything.
    HRESULT load(std::vector<char> const& bytes) {
        std::ofstream(file_, std::ios::binary).write(bytes.data(), std::ssize(bytes));
        ITypeLib* raw = nullptr;
        HRESULT const result = LoadTypeLibEx(file_.string<OLECHAR>().c_str(), REGKIND_NONE, &raw);
        if (FAILED(result)) return result;
        Owned<ITypeLib> const library(raw);
        for (UINT i = 0; i < raw->GetTypeInfoCount(); ++i) ask(raw, i);
        return result;
    }

  private:
    void ask(ITypeLib* library, UINT index) {
        ITypeInfo* raw = nullptr;
        if (FAILED(library->GetTypeInfo(index, &raw))) return;
        Owned<ITypeInfo> const type(raw);
        auto const attributes = attributesOf(raw);
        for (UINT i = 0; i < attributes->cFuncs; ++i) {
            FUNCDESC* function = nullptr;
            if (SUCCEEDED(raw->GetFuncDesc(i, &function))) raw->ReleaseFuncDesc(function);
        }
        for (UINT i = 0; i < attributes->cVars; ++i) {
            VARDESC* variable = nullptr;
            if (SUCCEEDED(raw->GetVarDesc(i, &variable))) raw->ReleaseVarDesc(variable);
        }
    }

    std::filesystem::path file_ = std::filesystem::temp_directory_path() / "velk_damaged.tlb";
};

bool isExpected(HRESULT result) {
    return result == TYPE_E_INVDATAREAD || result == TYPE_E_UNSUPFORMAT ||
           result == TYPE_E_CANTLOADLIBRARY;
}

TEST_F(DamagedLibrary, CutAnywhereGivesACode) {
    auto const bytes = shapesBytes();
    ASSERT_GT(bytes.size(), 1000u);
    for (std::size_t length = 0; length < bytes.size(); length += 61) {
        auto const end = bytes.begin() + static_cast<std::ptrdiff_t>(length);
        HRESULT const result = load({bytes.begin(), end});
        EXPECT_TRUE(isExpected(result)) << length << ": " << std::hex << result;
    }
}

TEST_F(DamagedLibrary, FlippedBitsGiveACodeOrALibrary) {
    auto const bytes = shapesBytes();
    int refused = 0;
    // A fixed sequence, so that a finding can be repeated.
    std::uint32_t state = 1;
    for (int round = 0; round < 300; ++round) {
        auto damaged = bytes;
        for (int flip = 0; flip < 4; ++flip) {
            state = state * 1664525u + 1013904223u;
            char& byte = damaged[(state >> 8) % damaged.size()];
            byte = static_cast<char>(byte ^ 1 << (state >> 5 & 7));
        }
        HRESULT const result = load(damaged);
        EXPECT_TRUE(result == S_OK || isExpected(result)) << std::hex << result;
        refused += FAILED(result);
    }
    EXPECT_GT(refused, 0);
}

TEST_F(DamagedLibrary, OfTheOlderFormatIsNotSupported) {
    auto bytes = shapesBytes();
    std::copy_n("SLTG", 4, bytes.begin());
    EXPECT_EQ(load(bytes), TYPE_E_UNSUPFORMAT);
}

}  // namespace
}  // namespace velk::test
