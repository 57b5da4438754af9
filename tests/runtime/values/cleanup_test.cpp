#include "host/cleanup.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "cleanup_module.h"

namespace {

std::string order;

void first() {
    order += "first ";
}
void second() {
    order += "second ";
}
void last() {
    order += "last ";
}
void failing() {
    order += "failing ";
    throw std::runtime_error("clean-up failed");
}
void again() {
    order += "again ";
    mzRegisterGlobalCleanup(&again, 0);
}

void* ownAddress() {
    return reinterpret_cast<void*>(&first);
}

TEST(Cleanup, RunsFromTheHighestPriorityDown) {
    order.clear();
    mzRegisterGlobalCleanup(&last, -2000002);
    mzRegisterGlobalCleanup(&second, 0);
    mzRegisterGlobalCleanup(&first, 7);
    mzRunGlobalCleanupFor(ownAddress());
    EXPECT_EQ(order, "first second last ");
    mzRunGlobalCleanupFor(ownAddress());
    EXPECT_EQ(order, "first second last ");
}

TEST(Cleanup, TheNewestGoesFirstAmongEquals) {
    order.clear();
    mzRegisterGlobalCleanup(&second, 3);
    mzRegisterGlobalCleanup(&first, 3);
    mzRunGlobalCleanupFor(ownAddress());
    EXPECT_EQ(order, "first second ");
}

TEST(Cleanup, OnlyTheModuleOfTheAddressIsCleaned) {
    order.clear();
    std::string moduleLog;
    mzRegisterGlobalCleanup(&first, 9);
    registerModuleCleanup(moduleLog);
    mzRunGlobalCleanupFor(moduleAddress());
    EXPECT_EQ(moduleLog, "module ");
    EXPECT_EQ(order, "");
    registerModuleCleanup(moduleLog);
    mzRunGlobalCleanup();
    EXPECT_EQ(moduleLog, "module module ");
    EXPECT_EQ(order, "first ");
}

TEST(Cleanup, AFailureDoesNotStopTheOthers) {
    order.clear();
    mzRegisterGlobalCleanup(&last, 0);
    mzRegisterGlobalCleanup(&failing, 1);
    mzRegisterGlobalCleanup(nullptr, 2);
    mzRunGlobalCleanupFor(ownAddress());
    EXPECT_EQ(order, "failing last ");
}

TEST(Cleanup, OneThatKeepsRegisteringItselfHasAnEnd) {
    order.clear();
    mzRegisterGlobalCleanup(&again, 0);
    mzRunGlobalCleanupFor(ownAddress());
    EXPECT_GT(order.size(), std::string("again ").size());
    // The last registration is still there, and forgotten like this.
    order.clear();
    mzRunGlobalCleanupFor(nullptr);
    EXPECT_EQ(order, "");
}

}  // namespace
