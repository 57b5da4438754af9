#pragma once

#include "host/host.h"

namespace velk::test {

/// A host object that throws whatever it is asked.
class ThrowingObject : public mzComDispatchBaseC {
  public:
    explicit ThrowingObject(void (*throwOne)()) : throwOne_(throwOne) {}
    unsigned invokeByName(mzComStringC const&, unsigned, mzComVariantArrayC const&, mzComVariantC&,
                          mzComPtrT<mzIException>&) override {
        throwOne_();
        return mzSuccess;
    }

  private:
    void (*throwOne_)();
};

}  // namespace velk::test
