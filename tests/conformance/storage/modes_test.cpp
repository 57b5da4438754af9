#include <fstream>

#include "conformance/storage/storage_file.h"
#include "support/data_table.h"
#include "support/expected_difference.h"

// Who may open what when, and how.

namespace {

using namespace velk::test;

/// What a call answers of a file with the stream "s" and the storage "t".
HRESULT tryCall(DataRow const& row) {
    FilePlace const place;
    {
        auto const root = place.create();
        Storage inner;
        createStream(*root.get(), OLESTR("s"));
        EXPECT_EQ(root->CreateStorage(OLESTR("t"), change, 0, 0, inner.put()), S_OK);
    }
    auto const& call = row["call"];
    DWORD const mode = modeOf(row["mode"]);
    Storage made, root;
    Stream stream;
    if (call == "create file") return StgCreateDocfile(place.path(), mode, 0, made.put());
    if (call == "open file") return place.tryOpen(mode, made);
    root = place.open(modeOf(row["root"]));
    auto const& cell = row["name"];
    Text const text(cell.begin(), cell.end());
    auto const* const name = cell == "(null)" ? nullptr : text.c_str();
    if (call == "create stream") return root->CreateStream(name, mode, 0, 0, stream.put());
    if (call == "create storage") return root->CreateStorage(name, mode, 0, 0, made.put());
    if (call == "open stream") return root->OpenStream(name, nullptr, mode, 0, stream.put());
    if (call == "open storage") {
        return root->OpenStorage(name, nullptr, mode, nullptr, 0, made.put());
    }
    if (call == "destroy") return root->DestroyElement(name);
    if (call == "rename") return root->RenameElement(OLESTR("s"), name);
    ADD_FAILURE() << "no such call: " << call;
    return E_FAIL;
}

TEST(FileModes, AreTakenOrRefused) {
    expectTable("storage/modes.tsv", [](DataRow const& row) { return codeName(tryCall(row)); });
}

TEST(FileModes, OneWriterAndManyReaders) {
    DWORD const singleWriter = modeOf("change deny-write swmr"),
                besideWriter = modeOf("read deny-none swmr");
    FilePlace const place;
    write(*createStream(*place.create().get(), OLESTR("s")).get(), pattern(10000, 1));
    Storage writer, reader, second, other;
    EXPECT_EQ(place.tryOpen(besideWriter, reader), S_OK);
    for (unsigned round = 2; round < 6; ++round) {
        ASSERT_EQ(place.tryOpen(singleWriter, writer), S_OK);
        write(*openStream(*writer.get(), OLESTR("s"), change).get(), pattern(10000, round));
        EXPECT_EQ(place.tryOpen(besideWriter, second), S_OK);
        EXPECT_TRUE(FAILED(place.tryOpen(singleWriter, other)));
        EXPECT_TRUE(FAILED(place.tryOpen(change, other)));
        writer.reset();
    }
    auto const late = place.open(besideWriter);
    EXPECT_TRUE(content(*openStream(*late.get(), OLESTR("s")).get()) == pattern(10000, 5));
    // Of others nobody says what a reader sees that was there before.
    if (!runsOn(System::ownLayer)) return;
    EXPECT_TRUE(content(*openStream(*reader.get(), OLESTR("s")).get()) == pattern(10000, 1));
}

TEST(FileModes, WhatIsNoCompoundFileIsRefused) {
    FilePlace const place;
    Storage opened;
    EXPECT_EQ(place.tryOpen(look, opened), STG_E_FILENOTFOUND);
    std::ofstream(place.file()) << "just a text";
    EXPECT_EQ(place.tryOpen(look, opened), STG_E_FILEALREADYEXISTS);
    EXPECT_FALSE(opened);
    std::ofstream(place.file()) << "";
    EXPECT_TRUE(FAILED(place.tryOpen(look, opened)));
    EXPECT_TRUE(FAILED(StgOpenStorage(nullptr, nullptr, look, nullptr, 0, opened.put())));
    EXPECT_EQ(StgOpenStorage(place.path(), nullptr, look, nullptr, 0, nullptr),
              STG_E_INVALIDPOINTER);
}

TEST(FileModes, TheRootsEndEndsItsElements) {
    FilePlace const place;
    auto root = place.create();
    EXPECT_EQ(root->CreateStream(OLESTR("s"), change, 0, 0, nullptr), STG_E_INVALIDPOINTER);
    auto const stream = createStream(*root.get(), OLESTR("s"));
    write(*stream.get(), "kept");
    root.reset();
    ULONG done = 0;
    char byte = 0;
    EXPECT_EQ(stream->Read(&byte, 1, &done), STG_E_REVERTED);
    auto const again = place.open(look);
    EXPECT_EQ(content(*openStream(*again.get(), OLESTR("s")).get()), "kept");
}

}  // namespace
