#pragma once

#include <functional>
#include <utility>

#include "host/host.h"

namespace velk::test {

/// Runs a function when it is next asked who it is, as keys and items are, and
/// another one when it ends.
class Curious : public mzComDispatchBaseC {
  public:
    ~Curious() override {
        if (onEnd) onEnd();
    }
    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override {
        if (onQuestion) std::exchange(onQuestion, nullptr)();
        return mzComDispatchBaseC::queryInterface(iid, out);
    }
    unsigned invokeByName(mzComStringC const&, unsigned, mzComVariantArrayC const&, mzComVariantC&,
                          mzComPtrT<mzIException>&) override {
        return mzMemberNotFound;
    }

    std::function<void()> onQuestion;
    std::function<void()> onEnd;
};

}  // namespace velk::test
