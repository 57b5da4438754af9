// Calls of the wrappers that no script in its right mind makes: every type of
// value, member and kind of call with arguments of every sort. Each one ends
// with a result code.

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "VelkQXTProxy/dispatch_wrapper.h"
#include "VelkQXTProxy/exception_info.h"
#include "VelkQXTProxy/variant_wrapper.h"
#include "support/host_calls.h"
#include "support/scripted_dispatch.h"
#include "support/throwing_object.h"

namespace {

using namespace velk::test;

[[noreturn]] void throwInTurn() {
    static unsigned turn = 0;
    switch (++turn % 3) {
        case 0:
            proxyObjectC::throwExecuteException("told", "Member", 1);
        case 1:
            throw std::runtime_error("oh");
        default:
            throw 5;
    }
}

std::vector<mzComVariantC> hostileValues() {
    mzComPtrT<mzIDispatch> const throwing(new ThrowingObject(&throwInTurn));
    mzComVariantC nullObject;
    nullObject.set(mzComPtrT<mzIUnknown>());
    mzComVariantC emptyWrapper;
    emptyWrapper.set(vbsComVariantWrapperC::make({}));
    std::vector<mzComVariantC> values = {{},
                                         0,
                                         1,
                                         -1,
                                         36,
                                         0x2000,
                                         0x4003,
                                         2147483647,
                                         1e300,
                                         "",
                                         "{00020400-0000-0000-C000-000000000046}",
                                         "/dev/null",
                                         nullObject,
                                         valueOf(throwing),
                                         emptyWrapper};
    for (std::size_t i = 0, plain = values.size(); i < plain; ++i) {
        values.push_back(mzComVariantC::createSymbolRef(values[i]));
    }
    return values;
}

/// Calls without and with one and two of the values, and asks that each ends
/// as calls of host objects end.
class HostileCaller {
  public:
    void callAll(mzIDispatch& object, std::string const& title) {
        for (char const* name : {"", "Copy", "ChangeType", "Create", "lbound", "ubound", "flags",
                                 "vt", "val", "Member"}) {
            for (unsigned kind = 0; kind < 8; ++kind) {
                callOnce(object, name, kind, {}, title);
                std::size_t const turn = next_++ % values_.size();
                for (auto const& value : values_) {
                    callOnce(object, name, kind, {value}, title);
                    callOnce(object, name, kind, {value, values_[turn]}, title);
                    callOnce(object, name, kind, {values_[turn], value, 1}, title);
                }
            }
        }
    }
    int calls() const { return calls_; }

  private:
    void callOnce(mzIDispatch& object, char const* name, unsigned kind,
                  std::initializer_list<mzComVariantC> arguments, std::string const& title) {
        ++calls_;
        try {
            auto const outcome = callHost(&object, name, kind, arguments);
            bool const known = outcome.code == mzSuccess || outcome.code == mzFailure ||
                               outcome.code == mzMemberNotFound;
            EXPECT_TRUE(known) << title << " '" << name << "' " << kind << ": " << outcome.code;
        } catch (...) {
            ADD_FAILURE() << title << " '" << name << "' " << kind << " with " << arguments.size()
                          << " arguments threw";
        }
    }

    std::vector<mzComVariantC> const values_ = hostileValues();
    std::size_t next_ = 0;
    int calls_ = 0;
};

class HostileCalls : public testing::Test {
  protected:
    // The object of this thread would count as a leak.
    ~HostileCalls() override { velk::adapter::setLastException({}); }
};

TEST_F(HostileCalls, WrappersOfEveryTypeAnswer) {
    HostileCaller caller;
    for (unsigned const form : {0U, 0x2000U, 0x4000U, 0x6000U, 0x1000U}) {
        for (unsigned type = 0; type <= 40; ++type) {
            mzComPtrT<mzIDispatch> const wrapper{
                mzComPtrC(vbsComVariantWrapperC::make({}).iface())};
            int const code = static_cast<int>(form | type);
            ASSERT_EQ(callHost(wrapper.iface(), "vt", mzCallPropertyPut, {code}).code, mzSuccess);
            caller.callAll(*wrapper.iface(), std::to_string(code));
            if (HasFailure()) return;
        }
    }
    EXPECT_GT(caller.calls(), 100000);
}

TEST_F(HostileCalls, ResultsOfEveryTypeAreTaken) {
    VARTYPE type = 0;
    ScriptedDispatch native([&type](NativeCallArguments& call) {
        call.result->vt = type;
        return S_OK;
    });
    mzComPtrT<mzIDispatch> const wrapper(new vbsComDispatchWrapperC(&native));
    for (unsigned code = 0; code <= 0xffff; ++code) {
        type = static_cast<VARTYPE>(code);
        try {
            unsigned const answered = callHost(wrapper.iface(), "Member", mzCallMethod).code;
            EXPECT_LE(answered, mzFailure) << code;
        } catch (...) {
            ADD_FAILURE() << code << " threw";
        }
    }
    HostileCaller().callAll(*wrapper.iface(), "native object");
}

}  // namespace
