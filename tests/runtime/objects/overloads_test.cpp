#include <gtest/gtest.h>

#include "sample_objects.h"

// Members that share name, kind and argument count: the arguments' types decide.

namespace {

using velk::test::call;
using velk::test::reference;

class Overloaded : public proxyObjectC {
  public:
    mzComStringC text(mzComStringC const&) { return "text"; }
    mzComStringC number(double) { return "number"; }
    mzComStringC object(mzComPtrT<mzIUnknown> const&) { return "object"; }
    mzComStringC numberOnly(int) { return "integer"; }
    mzComStringC property(int) { return "property"; }
    mzComStringC methodToo(int) { return "method"; }

    proxyMemberDescListS const* getProxyTypeInfo() override {
        static proxyMemberDescS const members[] = {
            proxyMethod<&Overloaded::text>("Any", "", 1),
            proxyMethod<&Overloaded::number>("Any", "", 2),
            proxyMethod<&Overloaded::object>("Any", "", 3),
            proxyMethod<&Overloaded::numberOnly>("Narrow", "", 4),
            proxyMethod<&Overloaded::object>("Narrow", "", 5),
            proxyPropertyGet<&Overloaded::property>("Either", "", 6),
            proxyMethod<&Overloaded::methodToo>("Either", "", 7),
            proxyMembersEnd()};
        static proxyMemberDescListS const* const bases[] = {nullptr};
        static proxyMemberDescListS const record = {
            "Overloaded", proxyCastTo<Overloaded>, bases, members, nullptr, 0, nullptr, "", 1};
        return &record;
    }
};

TEST(Overloads, TheArgumentsTypeDecides) {
    mzComPtrT<Overloaded> overloaded(new Overloaded);
    mzComVariantC const object = reference(overloaded->getIUnknown());
    mzComVariantC const variable = mzComVariantC::createSymbolRef(2.5);
    struct Row {
        char const* what;
        char const* name;
        unsigned kind;
        mzComVariantC arg;
        char const* text;
    };
    Row const rows[] = {
        {"its own type", "Any", mzCallMethod, "a", "text"},
        {"its own type, not the first", "Any", mzCallMethod, 2.5, "number"},
        {"an object", "Any", mzCallMethod, object, "object"},
        {"a variable counts as what it holds", "Any", mzCallMethod, variable, "number"},
        {"the first that can read it", "Any", mzCallMethod, 3, "text"},
        {"text that reads as a number", "Narrow", mzCallMethod, "12", "integer"},
        {"a method goes before a property", "Either", mzCallMethod | mzCallPropertyGet, 1,
         "method"},
        {"but the kind comes first", "Either", mzCallPropertyGet, 1, "property"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.what);
        auto const outcome = call(overloaded.iface(), row.name, row.kind, {row.arg});
        EXPECT_EQ(outcome.code, mzSuccess) << outcome.exception;
        EXPECT_EQ(outcome.text(), row.text);
    }
}

TEST(Overloads, WhenNoneCanReadTheArgumentTheCallFails) {
    mzComPtrT<Overloaded> overloaded(new Overloaded);
    auto const outcome = call(overloaded.iface(), "Narrow", mzCallMethod, {"no number"});
    EXPECT_EQ(outcome.code, mzFailure);
    EXPECT_EQ(outcome.exception,
              "An argument of 'Narrow' cannot be read as the type that it takes");
}

}  // namespace
