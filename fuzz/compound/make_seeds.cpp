#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "storage/crafted_documents.h"

// Where the fuzz target of compound files begins: documents that hardly anybody
// writes.

TEST(Seeds, AreWritten) {
    constexpr std::size_t mostBytes = 200'000;
    for (auto const& document : velk::test::craftedDocuments()) {
        if (document.bytes.size() > mostBytes) continue;
        std::ofstream file(std::filesystem::path(VELK_SEEDS) / document.name, std::ios::binary);
        EXPECT_TRUE((file << document.bytes).flush()) << document.name;
    }
}
