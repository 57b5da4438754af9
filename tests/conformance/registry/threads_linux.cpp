/// Making and deleting whole paths happens at once or not at all, which not
/// every other system of this interface promises.
#include <atomic>
#include <thread>

#include "conformance/registry/test_key.h"

namespace {

using namespace velk::test;
using RegistryThreads = RegistryTest;

TEST_F(RegistryThreads, FightOverOneTree) {
    std::vector<std::thread> threads;
    std::atomic<int> unexpected{0};
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&] {
            for (int time = 0; time < 40; ++time) {
                Key key;
                LSTATUS status = RegCreateKeyExW(root, OLESTR("shared\\deep"), 0, nullptr, 0,
                                                 KEY_ALL_ACCESS, nullptr, key.target(), nullptr);
                if (status != ERROR_SUCCESS) ++unexpected;
                status = setNumber(key, OLESTR("n"), 1);
                if (status != ERROR_SUCCESS && status != ERROR_KEY_DELETED) ++unexpected;
                status = RegDeleteTreeW(root, OLESTR("shared"));
                if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) ++unexpected;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(unexpected, 0);
    EXPECT_EQ(keyNames(root), std::vector<Text>{});
}

}  // namespace
