#include "conformance/storage/storage_file.h"
#include "support/expected_difference.h"

// The bytes of streams, in files that are closed and opened again.

namespace {

using namespace velk::test;

// Around the sizes of small sectors, of sectors and of the largest small stream.
constexpr std::size_t sizes[] = {0,    1,    63,   64,    65,    511,    512,    513,
                                 4095, 4096, 4097, 10000, 65536, 100000, 1000000};

Text nameOf(std::size_t size) {
    Text name = OLESTR("stream ");
    for (char const digit : std::to_string(size)) name.push_back(static_cast<OLECHAR>(digit));
    return name;
}

TEST(Streams, KeepWhatWasWritten) {
    FilePlace const place;
    {
        auto const root = place.create();
        for (std::size_t const size : sizes) {
            auto const stream = createStream(*root.get(), nameOf(size).c_str());
            write(*stream.get(), pattern(size));
            EXPECT_TRUE(content(*stream.get()) == pattern(size)) << size;
        }
    }
    auto const root = place.open(look);
    for (std::size_t const size : sizes) {
        auto const stream = openStream(*root.get(), nameOf(size).c_str());
        STATSTG status{};
        ASSERT_EQ(stream->Stat(&status, STATFLAG_NONAME), S_OK);
        EXPECT_EQ(status.type, static_cast<DWORD>(STGTY_STREAM));
        EXPECT_EQ(status.cbSize.QuadPart, size);
        EXPECT_EQ(status.pwcsName, nullptr);
        EXPECT_TRUE(content(*stream.get()) == pattern(size)) << size;
    }
}

TEST(Streams, GrowAndShrinkAcrossAllSizes) {
    FilePlace const place;
    std::string expected;
    {
        auto const root = place.create();
        auto const stream = createStream(*root.get(), OLESTR("s"));
        std::size_t const steps[] = {100, 5000, 64, 0, 4096, 4095, 20000, 513, 70000, 3};
        for (std::size_t const size : steps) {
            ULARGE_INTEGER wanted;
            wanted.QuadPart = size;
            ASSERT_EQ(stream->SetSize(wanted), S_OK) << size;
            std::size_t const former = expected.size();
            expected.resize(size);
            EXPECT_EQ(content(*stream.get()).size(), size);
            // What is new has no content until it is written.
            if (size > former) {
                seek(*stream.get(), static_cast<LONGLONG>(former));
                write(*stream.get(), pattern(size - former, 5));
                expected.replace(former, size - former, pattern(size - former, 5));
            }
            EXPECT_TRUE(content(*stream.get()) == expected) << size;
        }
    }
    auto const root = place.open(look);
    EXPECT_TRUE(content(*openStream(*root.get(), OLESTR("s")).get()) == expected);
}

TEST(Streams, AreWrittenToInPlaces) {
    FilePlace const place;
    std::string expected = pattern(50000);
    {
        auto const root = place.create();
        write(*createStream(*root.get(), OLESTR("s")).get(), expected);
    }
    {
        auto const root = place.open();
        auto const stream = openStream(*root.get(), OLESTR("s"), change);
        for (std::size_t const at : {0u, 511u, 512u, 4090u, 30000u, 49990u}) {
            seek(*stream.get(), static_cast<LONGLONG>(at));
            write(*stream.get(), pattern(700, 9));
            if (expected.size() < at + 700) expected.resize(at + 700);
            expected.replace(at, 700, pattern(700, 9));
        }
        EXPECT_TRUE(content(*stream.get()) == expected);
    }
    auto const root = place.open(look);
    EXPECT_TRUE(content(*openStream(*root.get(), OLESTR("s")).get()) == expected);
}

LONGLONG positionOf(IStream& stream) {
    LARGE_INTEGER const nowhere{};
    ULARGE_INTEGER now{};
    EXPECT_EQ(stream.Seek(nowhere, STREAM_SEEK_CUR, &now), S_OK);
    return static_cast<LONGLONG>(now.QuadPart);
}

TEST(Streams, SeekWithinTheirRange) {
    FilePlace const place;
    auto const root = place.create();
    auto const stream = createStream(*root.get(), OLESTR("s"));
    write(*stream.get(), pattern(100));
    struct Row {
        LONGLONG move;
        DWORD origin;
        HRESULT expected;
        LONGLONG position;
    };
    LARGE_INTEGER move;
    for (auto const& row :
         {Row{10, STREAM_SEEK_SET, S_OK, 10}, Row{5, STREAM_SEEK_CUR, S_OK, 15},
          Row{-15, STREAM_SEEK_CUR, S_OK, 0}, Row{-30, STREAM_SEEK_END, S_OK, 70},
          Row{200, STREAM_SEEK_END, S_OK, 300}, Row{0, 3, STG_E_INVALIDFUNCTION, 300}}) {
        move.QuadPart = row.move;
        EXPECT_EQ(stream->Seek(move, row.origin, nullptr), row.expected) << row.move;
        EXPECT_EQ(positionOf(*stream.get()), row.position) << row.move;
    }
    char byte = 0;
    ULONG done = 7;
    EXPECT_TRUE(SUCCEEDED(stream->Read(&byte, 1, &done))) << "behind the end";
    EXPECT_EQ(done, 0u);
    seek(*stream.get(), 0);
    move.QuadPart = -1;
    expectDifference(System::wine, "seeks to before the beginning of a stream", [&] {
        EXPECT_EQ(stream->Seek(move, STREAM_SEEK_CUR, nullptr), STG_E_INVALIDFUNCTION);
        EXPECT_EQ(positionOf(*stream.get()), 0);
    });
}

TEST(Streams, ClonesHavePositionsOfTheirOwn) {
    FilePlace const place;
    auto const root = place.create();
    auto const stream = createStream(*root.get(), OLESTR("s"));
    write(*stream.get(), "hello");
    Stream clone;
    ASSERT_EQ(stream->Clone(clone.put()), S_OK);
    EXPECT_EQ(content(*clone.get()), "hello");
    write(*stream.get(), " world");
    EXPECT_EQ(content(*clone.get()), "hello world");
}

TEST(Streams, CopyTheirBytes) {
    FilePlace const place;
    auto const root = place.create();
    auto const source = createStream(*root.get(), OLESTR("a"));
    auto const target = createStream(*root.get(), OLESTR("b"));
    write(*source.get(), pattern(200000));
    seek(*source.get(), 0);
    ULARGE_INTEGER all, read{}, written{};
    all.QuadPart = 300000;
    ASSERT_EQ(source->CopyTo(target.get(), all, &read, &written), S_OK);
    EXPECT_EQ(read.QuadPart, 200000u);
    EXPECT_EQ(written.QuadPart, 200000u);
    EXPECT_TRUE(content(*target.get()) == pattern(200000));
}

}  // namespace
