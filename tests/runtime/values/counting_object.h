#pragma once

#include <functional>
#include <string>

#include "host/dispatch.h"
#include "host/variant_array.h"

/// A dispatch object on the stack of a test, which asserts its count.
class CountingDispatch : public mzIDispatch {
  public:
    /// `id` is what it answers beside "mzIUnknown".
    explicit CountingDispatch(mzIIDS const& id = mzIDispatch::interfaceId()) : id_(id) {}

    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override {
        bool const known = iid.equal(id_) || iid.equal(mzIUnknown::interfaceId());
        out.attach(known ? this : nullptr);
        return known ? mzSuccess : mzFailure;
    }
    unsigned addRef() override { return ++references; }
    unsigned release() override {
        unsigned const left = --references;
        if (onRelease) onRelease();
        return left;
    }
    unsigned invokeByName(mzComStringC const& name, unsigned callKind,
                          mzComVariantArrayC const& args, mzComVariantC& result,
                          mzComPtrT<mzIException>& exception) override {
        calls += name.toUtf8() + "/" + std::to_string(callKind) + "/" +
                 std::to_string(args.size()) + " ";
        return onInvoke ? onInvoke(result, exception) : mzMemberNotFound;
    }

    unsigned references = 0;
    /// Name, kind and number of arguments of each.
    std::string calls;
    std::function<void()> onRelease;
    std::function<unsigned(mzComVariantC&, mzComPtrT<mzIException>&)> onInvoke;

  private:
    mzIIDS id_;
};
