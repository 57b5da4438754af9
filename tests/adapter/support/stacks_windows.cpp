#include "support/stacks.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace velk::test {
namespace {

DWORD WINAPI runArgument(void* action) {
    (*static_cast<std::function<void()> const*>(action))();
    return 0;
}

struct Fiber {
    void* back;
    std::function<void()> const& action;
};

void WINAPI runFiber(void* argument) {
    auto const& fiber = *static_cast<Fiber*>(argument);
    fiber.action();
    SwitchToFiber(fiber.back);
}

}  // namespace

bool canChooseStacks() {
    return true;
}

void runOnThread(std::size_t size, std::function<void()> const& action) {
    void* const argument = const_cast<std::function<void()>*>(&action);
    HANDLE const thread = CreateThread(nullptr, size, &runArgument, argument,
                                       STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    ASSERT_NE(thread, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
}

void runOnOwnStack(std::size_t size, std::size_t /*above*/, std::function<void()> const& action) {
    Fiber fiber{ConvertThreadToFiber(nullptr), action};
    ASSERT_NE(fiber.back, nullptr);
    void* const other = CreateFiberEx(0, size, 0, &runFiber, &fiber);
    ASSERT_NE(other, nullptr);
    SwitchToFiber(other);
    DeleteFiber(other);
    ConvertFiberToThread();
}

}  // namespace velk::test
