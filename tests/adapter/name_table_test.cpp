#include "native_to_host/name_table.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using Text = std::basic_string<OLECHAR>;

Text numbered(int number) {
    Text name = OLESTR("name");
    for (int rest = number; rest > 0; rest /= 10) name += static_cast<OLECHAR>('0' + rest % 10);
    return name;
}

Text nameOf(PDspMapData const& table, DISPID id) {
    mzComStringC name;
    EXPECT_TRUE(table.nameOf(id, name)) << id;
    return {name.oleText(), static_cast<std::size_t>(name.length())};
}

TEST(NameTable, GivesEachNameItsOwnNumberAndBack) {
    std::vector<Text> names = {Text(),
                               Text(1, OLESTR('x')),
                               Text(OLESTR("a\0b"), 3),
                               Text(1, OLESTR('a')),
                               Text(1, static_cast<OLECHAR>(0xd800)),
                               Text(10000, OLESTR('n')),
                               Text(10001, OLESTR('n'))};
    for (int number = 1; number <= 20000; ++number) names.push_back(numbered(number));
    PDspMapData table;
    auto const count = static_cast<DISPID>(names.size());
    for (int round = 0; round < 2; ++round) {
        for (DISPID place = 0; place < count; ++place) {
            Text const& name = names[static_cast<std::size_t>(place)];
            ASSERT_EQ(table.idOf(name), 100 + place);
            ASSERT_EQ(nameOf(table, 100 + place), name);
        }
    }
    mzComStringC untouched("untouched");
    for (DISPID const unknown : {DISPID{99}, DISPID{0}, DISPID{-4}, DISPID{100 + count}}) {
        EXPECT_FALSE(table.nameOf(unknown, untouched));
    }
    EXPECT_EQ(untouched.toUtf8(), "untouched");
}

TEST(NameTable, ThreadsAskingForTheSameNewNamesGetTheSameNumbers) {
    constexpr int nameCount = 500;
    PDspMapData table;
    std::vector<DISPID> seen[4];
    std::vector<std::thread> threads;
    for (auto& ids : seen) {
        threads.emplace_back([&] {
            for (int number = 1; number <= nameCount; ++number) {
                ids.push_back(table.idOf(numbered(number)));
                EXPECT_EQ(nameOf(table, ids.back()), numbered(number));
            }
        });
    }
    for (auto& thread : threads) thread.join();
    for (auto const& ids : seen) EXPECT_EQ(ids, seen[0]);
    EXPECT_EQ(table.idOf(OLESTR("one more")), 100 + nameCount);
}

}  // namespace
