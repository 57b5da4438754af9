// Writes documents that hardly anybody writes, and an empty one, into a folder:
// where the fuzz target of compound files begins.

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "storage/crafted_documents.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    constexpr std::size_t mostBytes = 200'000;
    for (auto const& document : velk::test::craftedDocuments()) {
        if (document.bytes.size() > mostBytes) continue;
        std::ofstream file(std::filesystem::path(argv[1]) / document.name, std::ios::binary);
        if (!(file << document.bytes).flush()) return 1;
    }
    return 0;
}
