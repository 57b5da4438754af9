#include <atomic>
#include <thread>

#include "conformance/registry/test_key.h"

namespace {

using namespace velk::test;
using RegistryThreads = RegistryTest;

Text numbered(OLECHAR const* prefix, int number) {
    Text text = prefix;
    for (char const digit : std::to_string(number)) text.push_back(static_cast<OLECHAR>(digit));
    return text;
}

TEST_F(RegistryThreads, WorkOnKeysOfTheirOwnThroughOneHandle) {
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&, number] {
            Text const name = numbered(OLESTR("thread"), number);
            for (int time = 0; time < 50; ++time) {
                Key const key = created(root, name);
                DWORD value = 0, size = 4;
                bool const good =
                    setNumber(key, OLESTR("n"), static_cast<DWORD>(time)) == ERROR_SUCCESS &&
                    RegQueryValueExW(key, OLESTR("n"), nullptr, nullptr,
                                     reinterpret_cast<BYTE*>(&value), &size) == ERROR_SUCCESS &&
                    value == static_cast<DWORD>(time) && !keyNames(root).empty() &&
                    RegDeleteKeyW(root, name.c_str()) == ERROR_SUCCESS;
                if (!good) ++failures;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(keyNames(root), std::vector<Text>{});
}

}  // namespace
