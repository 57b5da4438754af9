#pragma once

#include <string>
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

/// A script object with a member of every kind. It belongs to its thread.
class Sample : public proxyObjectC {
  public:
    Sample();
    ~Sample() override;

    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

    /// How many exist.
    static int alive();

    int value() const { return value_; }
    void setValue(int value) { value_ = value; }
    int add(int amount) { return value_ += amount; }
    int addBoth(int first, int second) { return value_ += first + second; }
    int plain() { return 77; }
    mzComStringC readDefault() { return "default read"; }
    void writeDefault(mzComStringC const& text) { written_ = text; }
    mzComStringC written() { return written_; }
    void fail(mzComStringC const& message);
    void throwStandard();
    void throwNumber();
    bool onThread(double number);
    mzComPtrT<mzIUnknown> self() { return getIUnknown(); }

    using proxyObjectC::setNonStickyThread;
    using proxyObjectC::setThreadSafe;

  private:
    int value_ = 0;
    std::int64_t thread_;
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

/// Its members share names, kinds and argument counts: the arguments decide.
class Overloaded : public proxyObjectC {
  public:
    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

    mzComStringC text(mzComStringC const&) { return "text"; }
    mzComStringC number(double) { return "number"; }
    mzComStringC object(mzComPtrT<mzIUnknown> const&) { return "object"; }
    mzComStringC integer(int) { return "integer"; }
    mzComStringC property(int) { return "property"; }
    mzComVariantC same(mzComVariantC const& value) { return value; }
};

/// Runs the servers for a scope, with the classes above known to scripts.
class Servers {
  public:
    Servers();
    ~Servers();

  private:
    proxyAutoRegisterT<Sample> sample_;
    proxyAutoRegisterT<DerivedSample> derived_;
    proxyAutoRegisterT<Overloaded> overloaded_;
};

}  // namespace velk::test
