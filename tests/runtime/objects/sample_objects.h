#pragma once

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/host.h"

namespace velk::test {

/// What a call by name brought back.
struct Outcome {
    unsigned code;
    mzComVariantC value;
    std::string exception;  ///< its text, empty without an exception object

    int integer() const { return value.getInt(); }
    std::string text() const {
        mzComStringC text;
        value.getExt(text);
        return text.toUtf8();
    }
};

Outcome call(mzIUnknown* object, char const* name, unsigned kind,
             std::vector<mzComVariantC> const& args = {});

/// For classes that have `mzIUnknown` in more than one base.
inline Outcome call(proxyObjectC* object, char const* name, unsigned kind,
                    std::vector<mzComVariantC> const& args = {}) {
    return call(object->getIUnknown(), name, kind, args);
}

/// A variant that refers to an object.
mzComVariantC reference(mzIUnknown* object);

/// A new "qxttools.array" while the servers run.
mzComPtrC newArray();

/// The record of a class; null for `scriptName` where scripts do not create it.
template <class Class>
proxyMemberDescListS recordOf(char const* name, char const* scriptName,
                              proxyMemberDescS const* members,
                              proxyMemberDescListS const* const* bases) {
    return {name, proxyCastTo<Class>, bases, members, scriptName, 0, proxyCreate<Class>, "", 1};
}

/// A script object with a member of every kind. It belongs to its thread.
class Sample : public proxyObjectC {
  public:
    Sample() { ++alive_; }
    ~Sample() override { --alive_; }

    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

    /// How many exist.
    static int alive() { return alive_; }

    int value() const { return value_; }
    void setValue(int value) { value_ = value; }
    int add(int amount) { return value_ += amount; }
    int addBoth(int first, int second) { return value_ += first + second; }
    int plain() { return 77; }
    mzComStringC readDefault() { return "default read"; }
    void writeDefault(mzComStringC const& text) { written_ = text; }
    mzComStringC written() { return written_; }
    void fail(mzComStringC const& message) { throwExecuteException(message, "Fail", 1); }
    void throwStandard() { throw std::runtime_error("standard failure"); }
    void throwNumber() { throw 42; }
    bool onThread(double) { return thread_ == std::this_thread::get_id(); }
    mzComPtrT<mzIUnknown> self() { return getIUnknown(); }
    /// Calls a member of another object from inside its own.
    mzComVariantC forward(mzComPtrT<mzIUnknown> const& target) {
        return call(target.iface(), "Add", mzCallMethod, {1}).value;
    }

    // Members that share names, kinds and argument counts: the arguments decide.
    mzComStringC text(mzComStringC const&) { return "text"; }
    mzComStringC number(double) { return "number"; }
    mzComStringC object(mzComPtrT<mzIUnknown> const&) { return "object"; }
    mzComStringC integer(int) { return "integer"; }
    mzComStringC property(int) { return "property"; }
    mzComVariantC same(mzComVariantC const& value) { return value; }

    using proxyObjectC::setNonStickyThread;
    using proxyObjectC::setThreadSafe;

  private:
    static inline std::atomic<int> alive_{0};
    int value_ = 0;
    std::thread::id const thread_ = std::this_thread::get_id();
    mzComStringC written_;
};

/// Derives from `Sample`, replaces one member and adds another.
class DerivedSample : public Sample {
  public:
    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

    int addDouble(int amount) { return add(2 * amount); }
    mzComStringC extra() { return "extra"; }
};

/// Runs the servers for a scope, with the classes above known to scripts.
class Servers {
  public:
    Servers();
    ~Servers();

  private:
    proxyAutoRegisterT<Sample> sample_;
    proxyAutoRegisterT<DerivedSample> derived_;
};

/// Runs a function when it is next asked who it is, as keys and items are,
/// another one whenever a reference to it is given up, and one when the last is.
class Curious : public mzComDispatchBaseC {
  public:
    ~Curious() override {
        if (onEnd) onEnd();
    }
    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override {
        if (onQuestion) std::exchange(onQuestion, nullptr)();
        return mzComDispatchBaseC::queryInterface(iid, out);
    }
    unsigned release() override {
        if (auto const action = std::exchange(onRelease, nullptr)) {
            action();
            onRelease = action;
        }
        return mzComDispatchBaseC::release();
    }
    unsigned invokeByName(mzComStringC const&, unsigned, mzComVariantArrayC const&, mzComVariantC&,
                          mzComPtrT<mzIException>&) override {
        return mzMemberNotFound;
    }

    std::function<void()> onQuestion, onRelease, onEnd;
};

}  // namespace velk::test
