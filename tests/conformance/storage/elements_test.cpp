#include <map>

#include "conformance/storage/storage_file.h"

// What storages contain, and changing it.

namespace {

using namespace velk::test;

/// The elements of a storage: the type of each name.
std::map<Text, DWORD> elements(IStorage& storage) {
    velk::com::ComPtr<IEnumSTATSTG> enumerator;
    EXPECT_EQ(storage.EnumElements(0, nullptr, 0, enumerator.put()), S_OK);
    std::map<Text, DWORD> found;
    STATSTG status{};
    while (enumerator && enumerator->Next(1, &status, nullptr) == S_OK) {
        found[status.pwcsName] = status.type;
        CoTaskMemFree(status.pwcsName);
    }
    return found;
}

Text numbered(int number) {
    Text name = OLESTR("Element ");
    for (char const digit : std::to_string(number)) name.push_back(static_cast<OLECHAR>(digit));
    return name;
}

TEST(Elements, ManyAreFoundAgain) {
    constexpr int count = 300;
    FilePlace const place;
    {
        auto const root = place.create();
        for (int i = 0; i < count; ++i) {
            write(*createStream(*root.get(), numbered(i).c_str()).get(),
                  pattern(static_cast<std::size_t>(i), 3));
        }
    }
    auto const root = place.open(look);
    EXPECT_EQ(elements(*root.get()).size(), static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        auto const stream = openStream(*root.get(), numbered(i).c_str());
        EXPECT_TRUE(content(*stream.get()) == pattern(static_cast<std::size_t>(i), 3)) << i;
    }
}

TEST(Elements, AreDestroyedAndRenamed) {
    FilePlace const place;
    {
        auto const root = place.create();
        for (int i = 0; i < 20; ++i) {
            write(*createStream(*root.get(), numbered(i).c_str()).get(), pattern(5000));
        }
        for (int i = 0; i < 20; i += 2) {
            EXPECT_EQ(root->DestroyElement(numbered(i).c_str()), S_OK) << i;
        }
        EXPECT_EQ(root->RenameElement(numbered(1).c_str(), OLESTR("other")), S_OK);
        EXPECT_EQ(root->RenameElement(OLESTR("nothing"), OLESTR("else")), STG_E_FILENOTFOUND);
        EXPECT_EQ(root->DestroyElement(OLESTR("nothing")), STG_E_FILENOTFOUND);
    }
    auto const root = place.open(look);
    auto const found = elements(*root.get());
    EXPECT_EQ(found.size(), 10u);
    EXPECT_TRUE(found.contains(OLESTR("other")));
    EXPECT_TRUE(content(*openStream(*root.get(), OLESTR("other")).get()) == pattern(5000));
    EXPECT_TRUE(content(*openStream(*root.get(), numbered(19).c_str()).get()) == pattern(5000));
}

TEST(Elements, StoragesNest) {
    constexpr int depth = 20;
    CLSID const id = {0x12345678, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
    FilePlace const place;
    {
        Storage at = place.create();
        std::vector<Storage> kept{at};
        for (int i = 0; i < depth; ++i) {
            Storage inner;
            ASSERT_EQ(at->CreateStorage(OLESTR("inner"), change, 0, 0, inner.put()), S_OK);
            EXPECT_EQ(inner->SetClass(id), S_OK);
            kept.push_back(inner);
            at = inner;
        }
        write(*createStream(*at.get(), OLESTR("deep")).get(), "found");
        at.reset();
        while (!kept.empty()) kept.pop_back();
    }
    std::vector<Storage> kept{place.open(look)};
    for (int i = 0; i < depth; ++i) {
        Storage inner;
        ASSERT_EQ(kept.back()->OpenStorage(OLESTR("INNER"), nullptr, look, nullptr, 0, inner.put()),
                  S_OK)
            << "names count no case";
        kept.push_back(inner);
    }
    STATSTG status{};
    ASSERT_EQ(kept.back()->Stat(&status, STATFLAG_DEFAULT), S_OK);
    EXPECT_TRUE(Text(status.pwcsName) == OLESTR("inner"));
    EXPECT_TRUE(status.clsid == id);
    EXPECT_EQ(status.type, static_cast<DWORD>(STGTY_STORAGE));
    CoTaskMemFree(status.pwcsName);
    EXPECT_EQ(content(*openStream(*kept.back().get(), OLESTR("deep")).get()), "found");
    while (!kept.empty()) kept.pop_back();
}

TEST(Elements, AreCopiedToAnotherFile) {
    FilePlace const from, to;
    {
        auto const source = from.create();
        write(*createStream(*source.get(), OLESTR("one")).get(), pattern(100));
        Storage inner;
        ASSERT_EQ(source->CreateStorage(OLESTR("inner"), change, 0, 0, inner.put()), S_OK);
        write(*createStream(*inner.get(), OLESTR("two")).get(), pattern(9000));
        inner.reset();
        auto const target = to.create();
        EXPECT_EQ(source->CopyTo(0, nullptr, nullptr, target.get()), S_OK);
    }
    auto const target = to.open(look);
    EXPECT_TRUE(content(*openStream(*target.get(), OLESTR("one")).get()) == pattern(100));
    Storage inner;
    ASSERT_EQ(target->OpenStorage(OLESTR("inner"), nullptr, look, nullptr, 0, inner.put()), S_OK);
    EXPECT_TRUE(content(*openStream(*inner.get(), OLESTR("two")).get()) == pattern(9000));
}

TEST(Elements, CannotBeOpenedTwiceOrByAWrongName) {
    FilePlace const place;
    auto const root = place.create();
    auto const stream = createStream(*root.get(), OLESTR("one"));
    Stream second;
    EXPECT_EQ(root->OpenStream(OLESTR("one"), nullptr, look, 0, second.put()), STG_E_ACCESSDENIED);
    EXPECT_FALSE(second);
    EXPECT_EQ(root->OpenStream(OLESTR("two"), nullptr, look, 0, second.put()), STG_E_FILENOTFOUND);
    EXPECT_EQ(root->CreateStream(OLESTR("one"), change, 0, 0, second.put()),
              STG_E_FILEALREADYEXISTS);
    EXPECT_EQ(root->CreateStream(nullptr, change, 0, 0, second.put()), STG_E_INVALIDNAME);
    EXPECT_EQ(root->CreateStream(OLESTR("two"), STGM_READWRITE, 0, 0, second.put()),
              STG_E_INVALIDFLAG);
    EXPECT_EQ(root->CreateStream(OLESTR("two"), change, 0, 0, nullptr), STG_E_INVALIDPOINTER);
    Storage inner;
    EXPECT_EQ(root->OpenStorage(OLESTR("one"), nullptr, look, nullptr, 0, inner.put()),
              STG_E_FILENOTFOUND);
}

}  // namespace
