#include <fstream>

#include "conformance/storage/storage_file.h"
#include "support/expected_difference.h"

// Who may open a file when, and how.

namespace {

using namespace velk::test;

constexpr DWORD singleWriter = STGM_DIRECT_SWMR | STGM_SHARE_DENY_WRITE | STGM_READWRITE;
constexpr DWORD besideWriter = STGM_DIRECT_SWMR | STGM_SHARE_DENY_NONE | STGM_READ;

TEST(FileModes, OneWriterAndManyReaders) {
    FilePlace const place;
    place.create();
    Storage writer, reader, second, other;
    EXPECT_EQ(place.tryOpen(singleWriter, writer), S_OK);
    EXPECT_EQ(place.tryOpen(besideWriter, reader), S_OK);
    EXPECT_EQ(place.tryOpen(besideWriter, second), S_OK);
    EXPECT_TRUE(FAILED(place.tryOpen(singleWriter, other)));
    EXPECT_TRUE(FAILED(place.tryOpen(change, other)));
    writer.reset();
    EXPECT_EQ(place.tryOpen(singleWriter, other), S_OK);
}

TEST(FileModes, AReaderKeepsTheStateThatItOpened) {
    FilePlace const place;
    {
        auto const root = place.create();
        write(*createStream(*root.get(), OLESTR("s")).get(), pattern(10000, 1));
    }
    Storage reader;
    ASSERT_EQ(place.tryOpen(besideWriter, reader), S_OK);
    for (unsigned round = 2; round < 6; ++round) {
        Storage writer;
        ASSERT_EQ(place.tryOpen(singleWriter, writer), S_OK);
        write(*openStream(*writer.get(), OLESTR("s"), change).get(), pattern(10000, round));
    }
    auto const late = place.open(besideWriter);
    EXPECT_TRUE(content(*openStream(*late.get(), OLESTR("s")).get()) == pattern(10000, 5));
}

TEST(FileModes, AFileOpenedToReadTakesNoChange) {
    FilePlace const place;
    {
        auto const root = place.create();
        write(*createStream(*root.get(), OLESTR("s")).get(), "text");
    }
    auto const root = place.open(look);
    Stream stream;
    EXPECT_EQ(root->CreateStream(OLESTR("t"), change, 0, 0, stream.put()), STG_E_ACCESSDENIED);
    expectDifference(System::wine, "takes missing rights for a wrong mode", [&] {
        EXPECT_EQ(root->OpenStream(OLESTR("s"), nullptr, change, 0, stream.put()),
                  STG_E_ACCESSDENIED);
    });
    EXPECT_FALSE(stream);
    EXPECT_EQ(root->DestroyElement(OLESTR("s")), STG_E_ACCESSDENIED);
    auto const readable = openStream(*root.get(), OLESTR("s"));
    ULONG done = 0;
    EXPECT_EQ(readable->Write("x", 1, &done), STG_E_ACCESSDENIED);
    EXPECT_EQ(content(*readable.get()), "text");
}

TEST(FileModes, WhatIsNoCompoundFileIsRefused) {
    FilePlace const place;
    Storage opened;
    EXPECT_EQ(place.tryOpen(look, opened), STG_E_FILENOTFOUND);
    EXPECT_EQ(StgIsStorageFile(place.path()), STG_E_FILENOTFOUND);
    std::ofstream(place.file()) << "just a text";
    EXPECT_EQ(StgIsStorageFile(place.path()), S_FALSE);
    EXPECT_EQ(place.tryOpen(look, opened), STG_E_FILEALREADYEXISTS);
    EXPECT_FALSE(opened);
    std::ofstream(place.file()) << "";
    EXPECT_TRUE(FAILED(place.tryOpen(look, opened)));
    EXPECT_TRUE(FAILED(StgOpenStorage(nullptr, nullptr, look, nullptr, 0, opened.put())));
    EXPECT_EQ(StgOpenStorage(place.path(), nullptr, look, nullptr, 0, nullptr),
              STG_E_INVALIDPOINTER);
    place.create();
    EXPECT_EQ(StgIsStorageFile(place.path()), S_OK);
}

TEST(FileModes, TransactionsAreCommittedOrReverted) {
    FilePlace const place;
    {
        auto const root = place.create();
        write(*createStream(*root.get(), OLESTR("s")).get(), "first");
    }
    for (bool const isKept : {false, true}) {
        {
            auto const root = place.open(change | STGM_TRANSACTED);
            write(*openStream(*root.get(), OLESTR("s"), change).get(), "other");
            if (isKept) {
                EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
            }
        }
        auto const root = place.open(look);
        EXPECT_EQ(content(*openStream(*root.get(), OLESTR("s")).get()), isKept ? "other" : "first");
    }
    auto const root = place.open(change | STGM_TRANSACTED);
    createStream(*root.get(), OLESTR("t"));
    EXPECT_EQ(root->Revert(), S_OK);
    Stream stream;
    EXPECT_EQ(root->OpenStream(OLESTR("t"), nullptr, look, 0, stream.put()), STG_E_FILENOTFOUND);
}

TEST(FileModes, TheRootsEndEndsItsElements) {
    FilePlace const place;
    auto root = place.create();
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
