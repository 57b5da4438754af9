// Objects that are called through their description in a type library, handed
// on in every way there is: whoever holds one last can still call it.

#include <functional>

#include "com/owners.h"
#include "support/expected_difference.h"
#include "support/script_test.h"

namespace {

using namespace velk::test;

constexpr char const* sampleId = "{7E0B5A10-3C64-4D2F-9B18-52D6A1C40E05}";
constexpr char const* extraId = "{7E0B5A10-3C64-4D2F-9B18-52D6A1C40E06}";

class HandOver : public ScriptTest {
  protected:
    using Object = mzComPtrT<mzIDispatch>;

    /// Created for an interface, and called through its description.
    Object createdFor(char const* id) const {
        auto const made = callHost(adapter_.iface(), "CreateObject", mzCallMethod,
                                   {"VelkTest.Sample", id, serverPath()});
        EXPECT_EQ(made.code, mzSuccess) << made.text();
        return dispatchIn(made.result);
    }

    /// Made from a value that holds an object of the type `type`.
    Object changedFrom(int type) const {
        auto const value = create("comadapter.variantwrapper");
        callHost(value.iface(), "ChangeType", mzCallMethod, {type, valueOf(sample())});
        auto const made =
            callHost(value.iface(), "ChangeType", mzCallMethod, {9, extraId, serverPath()});
        EXPECT_EQ(made.code, mzSuccess) << made.text();
        return dispatchIn(made.result);
    }

    /// A wrapper of the empty value of a type.
    mzComVariantC emptyValue(int type) const {
        auto const value = create("comadapter.variantwrapper");
        callHost(value.iface(), "Create", mzCallMethod, {type});
        return valueOf(value);
    }

    Object resultOf(Object const& object, char const* member,
                    std::initializer_list<mzComVariantC> arguments = {}) const {
        return dispatchIn(callHost(object.iface(), member, mzCallMethod, arguments).result);
    }
};

struct Source {
    char const* name;
    std::function<mzComPtrT<mzIDispatch>()> make;
};

struct Way {
    char const* name;
    /// Gives the object back, or another one over it, without keeping the first.
    std::function<mzComPtrT<mzIDispatch>(mzComPtrT<mzIDispatch>)> pass;
};

TEST_F(HandOver, TypedObjectsLiveAsLongAsAnyoneHoldsThem) {
    auto const other = sample();
    auto const nothing = emptyValue(VT_DISPATCH);
    Source const sources[] = {
        {"created", [&] { return createdFor(extraId); }},
        {"changed from an object", [&] { return changedFrom(VT_DISPATCH); }},
        {"changed from an interface", [&] { return changedFrom(VT_UNKNOWN); }},
    };
    Way const ways[] = {
        {"kept by the script", [](auto object) { return object; }},
        {"kept by a native object",
         [&](auto object) {
             callHost(other.iface(), "Keep", mzCallMethod, {valueOf(object)});
             object.detach();
             auto const kept = resultOf(other, "Kept");
             EXPECT_EQ(callText(kept, "Twice", {4}), "ok integer 8");
             EXPECT_EQ(callText(other, "Keep", {nothing}), "ok empty");
             return kept;
         }},
        {"echoed", [&](auto object) { return resultOf(other, "EchoDispatch", {valueOf(object)}); }},
        {"echoed in a VARIANT",
         [&](auto object) { return resultOf(other, "EchoVariant", {valueOf(object)}); }},
        {"passed in a variable",
         [&](auto object) {
             auto const held = variable(valueOf(object));
             object.detach();
             EXPECT_EQ(callText(other, "EchoVariant", {held}), "ok object");
             return dispatchIn(held.skipVariable());
         }},
        {"asked for its dispatch interface",
         [&](auto object) {
             return resultOf(adapter_, "QueryInterface",
                             {"{00020400-0000-0000-C000-000000000046}", valueOf(object)});
         }},
        {"converted",
         [&](auto object) {
             auto const value = create("comadapter.variantwrapper");
             callHost(value.iface(), "ChangeType", mzCallMethod, {9, valueOf(object)});
             object.detach();
             return resultOf(value, "");
         }},
        {"an element of an array",
         [&](auto object) {
             auto const array = create("comadapter.variantwrapper");
             callHost(array.iface(), "Create", mzCallMethod, {0x2000, 12, 1});
             callHost(array.iface(), "", mzCallPropertyPut, {0, valueOf(object)});
             object.detach();
             return resultOf(array, "", {0});
         }},
    };
    for (auto const& source : sources) {
        for (auto const& way : ways) {
            SCOPED_TRACE(std::string(source.name) + ", " + way.name);
            long const before = server_->liveObjects();
            auto object = way.pass(source.make());
            ASSERT_TRUE(object.isValid());
            EXPECT_EQ(callText(object, "Twice", {21}), "ok integer 42");
            EXPECT_EQ(callText(object, "Add", {20, 22}), "Invoke DSP: Member 'Add' not found");
            EXPECT_EQ(server_->liveObjects(), before + 1);
            object.detach();
            EXPECT_EQ(server_->liveObjects(), before);
        }
    }
}

TEST_F(HandOver, ATypedObjectIsHeldWhileItIsCalled) {
    RecordingHolder const host;
    auto typed = createdFor(sampleId);
    host->respond = [&](RecordedCall const&) {
        typed.detach();
        return Answer{mzSuccess, 7};
    };
    auto* const object = typed.iface();
    EXPECT_EQ(callHost(object, "CallBack", mzCallMethod, {host.asValue(), "Member", 1}).text(),
              "ok integer 7");
    EXPECT_EQ(server_->liveObjects(), 0);
    host->respond = {};
}

TEST_F(HandOver, ATypedObjectIsMadeFromAnObjectOnly) {
    for (int const type : {VT_EMPTY, VT_I4, VT_BSTR, VT_DECIMAL, VT_UNKNOWN, VT_DISPATCH}) {
        EXPECT_EQ(callText(dispatchIn(emptyValue(type)), "ChangeType", {9, extraId, serverPath()}),
                  "Invoke DSP: Failed create a dispatch with the given data: 0x80070057")
            << type;
    }
}

TEST_F(HandOver, ATypedObjectHasOneIdentity) {
    auto const typed = createdFor(extraId);
    auto const other = sample();
    auto const echoed = resultOf(other, "EchoDispatch", {valueOf(typed)});
    EXPECT_EQ(callText(other, "Same", {valueOf(typed), valueOf(echoed)}), "ok integer -1");
    EXPECT_EQ(callText(other, "Same", {valueOf(typed), valueOf(other)}), "ok integer 0");
    expectDifference("unknown-by-name", [&] {
        for (char const* member : {"QueryInterface", "AddRef", "Release"}) {
            EXPECT_EQ(callText(typed, member).substr(0, 11), "Invoke DSP:") << member;
        }
    });
    // The interfaces of the instance are not this object's.
    EXPECT_EQ(callText(adapter_, "QueryInterface", {extraId, valueOf(typed)}),
              "QueryInterface: invalid query interface on MS-COM-VB object");
}

}  // namespace
