#include <filesystem>
#include <functional>

#include <gtest/gtest.h>
#include <objbase.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "conformance/memory/common_calls.h"
#include "support/failing_memory.h"

// Allocations of each common call fail in turn: alone and with all
// that come after it, in a process that has not used the layer yet and in one
// that has. Whatever becomes of the call, it is an answer, and the next one works.

namespace {

using namespace velk::test;

/// What a process that came to its end, however it did, has left behind.
struct Report {
    long allocation;
    HRESULT code;
    HRESULT again;
    bool hasFailed;
};

bool isOutOfMemory(HRESULT code) {
    return code == E_OUTOFMEMORY || code == STG_E_INSUFFICIENTMEMORY ||
           code == HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY);
}

class EachCall : public testing::TestWithParam<std::tuple<std::size_t, bool>> {
  protected:
    static void SetUpTestSuite() {
        // Not in this process, whose children shall find nothing open.
        inChild([] { installForCalls(); });
        shared_ = static_cast<Report*>(mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE,
                                            MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    }

    static int inChild(std::function<void()> const& work) noexcept {
        pid_t const child = fork();
        if (child == 0) {
            alarm(60);
            CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            work();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return status;
    }

    static CommonCall const& call() { return commonCalls()[std::get<0>(GetParam())]; }

    /// Makes the call without one allocation, and once more with all.
    static bool makeWithout(long allocation) {
        if (call().prepare != nullptr) call().prepare();
        *shared_ = {allocation, S_OK, S_OK, true};
        failAllocations(allocation, std::get<1>(GetParam()));
        shared_->code = call().run();
        shared_->hasFailed = endFailingAllocations();
        if (call().prepare != nullptr) call().prepare();
        shared_->again = call().run();
        return isRight();
    }

    static bool isRight() {
        bool const isAnswer = shared_->code == S_OK || isOutOfMemory(shared_->code);
        return isAnswer && shared_->again == S_OK;
    }

    void expectAnswers(int status) {
        EXPECT_EQ(status, 0) << "at allocation " << shared_->allocation;
        EXPECT_TRUE(isRight()) << "at allocation " << shared_->allocation << ": " << std::hex
                               << shared_->code << ", then " << shared_->again;
    }

    static inline Report* shared_ = nullptr;
};

TEST_P(EachCall, AnswersInAFreshProcess) {
    // Most of them are those of the first look into the registry: each call
    // takes other samples of these.
    auto const call = static_cast<long>(std::get<0>(GetParam()));
    long allocation = 0;
    do {
        expectAnswers(inChild([&] { makeWithout(allocation); }));
        allocation += 1 + (allocation + call) / 24;
    } while (shared_->hasFailed && !HasFailure());
}

TEST_P(EachCall, AnswersInABusyProcess) {
    expectAnswers(inChild([&] {
        if (call().prepare != nullptr) call().prepare();
        call().run();
        long allocation = 0;
        while (makeWithout(allocation) && shared_->hasFailed) allocation += 1 + allocation / 64;
    }));
}

INSTANTIATE_TEST_SUITE_P(OutOfMemory, EachCall,
                         testing::Combine(testing::Range(std::size_t{0}, commonCalls().size()),
                                          testing::Bool()),
                         [](auto const& each) {
                             std::string name = commonCalls()[std::get<0>(each.param)].name;
                             std::erase_if(name, [](char c) { return !std::isalnum(c); });
                             return name + (std::get<1>(each.param) ? "_AllFromOneOn" : "_One");
                         });

}  // namespace
