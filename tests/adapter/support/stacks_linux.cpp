#include "support/stacks.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <ucontext.h>

namespace velk::test {
namespace {

#ifdef __SANITIZE_THREAD__
constexpr bool stacksAreOurs = false;
#else
constexpr bool stacksAreOurs = true;
#endif

constexpr std::size_t guardSize = 4096;

std::function<void()> const* current = nullptr;
void runCurrent() {
    (*current)();
}

void* runArgument(void* action) {
    (*static_cast<std::function<void()> const*>(action))();
    return nullptr;
}

}  // namespace

bool canChooseStacks() {
    return stacksAreOurs;
}

void runOnThread(std::size_t size, std::function<void()> const& action) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, size), 0);
    pthread_t thread{};
    void* const argument = const_cast<std::function<void()>*>(&action);
    ASSERT_EQ(pthread_create(&thread, &attributes, &runArgument, argument), 0);
    pthread_attr_destroy(&attributes);
    pthread_join(thread, nullptr);
}

void runOnOwnStack(std::size_t size, std::size_t above, std::function<void()> const& action) {
    std::size_t const whole = guardSize + size + above;
    void* const memory =
        mmap(nullptr, whole, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    ASSERT_EQ(mprotect(memory, guardSize, PROT_NONE), 0);
    ucontext_t back;
    ucontext_t coroutine;
    getcontext(&coroutine);
    coroutine.uc_stack.ss_sp = static_cast<char*>(memory) + guardSize;
    coroutine.uc_stack.ss_size = size;
    coroutine.uc_link = &back;
    current = &action;
    makecontext(&coroutine, &runCurrent, 0);
    swapcontext(&back, &coroutine);
    munmap(memory, whole);
}

}  // namespace velk::test
