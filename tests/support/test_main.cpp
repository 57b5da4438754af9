#include <cstdio>

#include <gmock/gmock.h>

#include "support/leaks.h"

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    velk::test::addNativeLeakChecks();
    int const result = RUN_ALL_TESTS();
    velk::test::tearDown();
    std::string const left = velk::test::thingsAlive();
    if (left.empty()) return result;
    std::printf("[  LEAK    ] still alive after the last test: %s\n", left.c_str());
    return 1;
}
