#include "name_table.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using velk::com::TextView;
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
    PDspMapData table;
    constexpr int count = 20000;
    for (int number = 1; number <= count; ++number) {
        ASSERT_EQ(table.idOf(numbered(number)), 99 + number);
    }
    for (int number = 1; number <= count; ++number) {
        ASSERT_EQ(table.idOf(numbered(number)), 99 + number);
        ASSERT_EQ(nameOf(table, 99 + number), numbered(number));
    }
    mzComStringC untouched("untouched");
    for (DISPID const unknown : {DISPID{99}, DISPID{0}, DISPID{-4}, DISPID{100 + count}}) {
        EXPECT_FALSE(table.nameOf(unknown, untouched));
    }
    EXPECT_EQ(untouched.toUtf8(), "untouched");
}

TEST(NameTable, TakesAnyCodeUnitsAndLengths) {
    PDspMapData table;
    std::vector<Text> const names = {Text(),
                                     Text(1, OLESTR('x')),
                                     Text(OLESTR("a\0b"), 3),
                                     Text(OLESTR("a"), 1),
                                     Text(1, static_cast<OLECHAR>(0xd800)),
                                     Text(10000, OLESTR('n')),
                                     Text(10001, OLESTR('n')),
                                     Text(300000, OLESTR('z'))};
    for (int round = 0; round < 2; ++round) {
        for (std::size_t place = 0; place < names.size(); ++place) {
            ASSERT_EQ(table.idOf(names[place]), 100 + static_cast<DISPID>(place));
            ASSERT_EQ(nameOf(table, 100 + static_cast<DISPID>(place)), names[place]);
        }
    }
}

TEST(NameTable, ThreadsAskingForTheSameNewNamesGetTheSameNumbers) {
    PDspMapData table;
    constexpr int threadCount = 4;
    constexpr int nameCount = 500;
    std::vector<std::vector<DISPID>> seen(threadCount);
    std::vector<std::thread> threads;
    for (int index = 0; index < threadCount; ++index) {
        threads.emplace_back([&, index] {
            for (int number = 1; number <= nameCount; ++number) {
                DISPID const id = table.idOf(numbered(number));
                seen[static_cast<std::size_t>(index)].push_back(id);
                mzComStringC name;
                EXPECT_TRUE(table.nameOf(id, name));
            }
        });
    }
    for (auto& thread : threads) thread.join();
    for (auto const& ids : seen) EXPECT_EQ(ids, seen[0]);
    EXPECT_EQ(table.idOf(OLESTR("one more")), 100 + nameCount);
}

}  // namespace
