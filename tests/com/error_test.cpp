#include "com/error.h"

#include <functional>
#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

namespace velk::com::test {
namespace {

HRESULT atBoundary(std::function<void()> const& action) noexcept {
    try {
        action();
        return S_OK;
    }
    VELK_COM_CATCH
}

TEST(Error, BecomesAnHresultAtTheBoundary) {
    struct Case {
        char const* name;
        std::function<void()> action;
        HRESULT expected;
    };
    Case const cases[] = {
        {"nothing thrown", [] {}, S_OK},
        {"own error", [] { throw Error(DISP_E_BADINDEX); }, DISP_E_BADINDEX},
        // A success code thrown as an error must not read as success.
        {"success as error", [] { throw Error(S_FALSE); }, E_UNEXPECTED},
        {"no memory", [] { throw std::bad_alloc(); }, E_OUTOFMEMORY},
        {"standard exception", [] { throw std::out_of_range("x"); }, E_FAIL},
        {"foreign exception", [] { throw 7; }, E_UNEXPECTED},
        {"failed call", [] { throwIfFailed(E_ACCESSDENIED); }, E_ACCESSDENIED},
        {"positive code", [] { throwIfFailed(S_FALSE); }, S_OK},
        {"system error", [] { throwIfError(ERROR_ACCESS_DENIED, "x"); }, E_ACCESSDENIED},
        {"no system error", [] { throwIfError(ERROR_SUCCESS, "x"); }, S_OK},
    };
    for (auto const& entry : cases) {
        EXPECT_EQ(atBoundary(entry.action), entry.expected) << entry.name;
    }
}

TEST(Error, SaysWhatFailed) {
    EXPECT_STREQ(Error(E_POINTER).what(), "0x80004003");
    try {
        throwIfFailed(E_FAIL, "open the thing");
        FAIL() << "no error";
    } catch (Error const& error) {
        EXPECT_STREQ(error.what(), "open the thing: 0x80004005");
    }
}

}  // namespace
}  // namespace velk::com::test
