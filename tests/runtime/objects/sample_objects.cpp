#include "sample_objects.h"

#include <atomic>
#include <stdexcept>

#include <gtest/gtest.h>

namespace velk::test {

namespace {

std::atomic<int> aliveSamples{0};

// A number for each thread that needs nothing of the code under test.
std::int64_t threadMark() {
    static thread_local char mark;
    return reinterpret_cast<std::int64_t>(&mark);
}

}  // namespace

Outcome call(mzIUnknown* object, char const* name, unsigned kind,
             std::vector<mzComVariantC> const& args) {
    mzComVariantArrayC list;
    for (mzComVariantC const& arg : args) {
        list.append(arg);
    }
    mzComPtrT<mzIDispatch> const dispatch{mzComPtrC(object)};
    Outcome outcome{mzFailure, {}, {}};
    mzComPtrT<mzIException> exception;
    outcome.code = dispatch->invokeByName(name, kind, list, outcome.value, exception);
    if (exception.isValid()) {
        outcome.exception = mzComExceptionErrorString(exception, "\n").toUtf8();
    }
    return outcome;
}

mzComVariantC reference(mzIUnknown* object) {
    mzComVariantC value;
    value.set(mzComPtrT<mzIUnknown>(object));
    return value;
}

Sample::Sample() : thread_(threadMark()) {
    ++aliveSamples;
}

Sample::~Sample() {
    --aliveSamples;
}

int Sample::alive() {
    return aliveSamples;
}

void Sample::fail(mzComStringC const& message) {
    throwExecuteException(message, "Fail", 1);
}

void Sample::throwStandard() {
    throw std::runtime_error("standard failure");
}

void Sample::throwNumber() {
    throw 42;
}

bool Sample::onThread(double) {
    return thread_ == threadMark();
}

proxyMemberDescListS const* Sample::getStaticProxyTypeInfo() {
    static char const* const file = "sample_objects.h";
    static proxyMemberDescS const members[] = {
        proxyPropertyGet<&Sample::value>("Value", file, 1),
        proxyPropertyPut<&Sample::setValue>("Value", file, 2),
        proxyMethod<&Sample::add>("Add", file, 3),
        proxyMethod<&Sample::addBoth>("Add", file, 4),
        proxyPlainMethod<&Sample::plain>("Plain", file, 5),
        proxyMember<&Sample::readDefault>("", mzCallPropertyGet, file, 6),
        proxyPropertyPut<&Sample::writeDefault>("", file, 7),
        proxyPropertyGet<&Sample::written>("Written", file, 8),
        proxyMethod<&Sample::fail>("Fail", file, 9),
        proxyMethod<&Sample::throwStandard>("ThrowStandard", file, 10),
        proxyMethod<&Sample::throwNumber>("ThrowNumber", file, 11),
        proxyMethod<&Sample::onThread>("OnThread", file, 12),
        proxyMethod<&Sample::self>("Self", file, 13),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {
        "Sample", proxyCastTo<Sample>, bases, members, "velktest.sample",
        0,        proxyCreate<Sample>, file,  1};
    return &record;
}

proxyMemberDescListS const* DerivedSample::getStaticProxyTypeInfo() {
    static char const* const file = "sample_objects.h";
    static proxyMemberDescS const members[] = {
        proxyMethod<&DerivedSample::addDouble>("Add", file, 1),
        proxyMethod<&DerivedSample::extra>("Extra", file, 2), proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {Sample::getStaticProxyTypeInfo(), nullptr};
    static proxyMemberDescListS const record = {"DerivedSample",
                                                proxyCastTo<DerivedSample>,
                                                bases,
                                                members,
                                                "velktest.derived",
                                                0,
                                                proxyCreate<DerivedSample>,
                                                file,
                                                1};
    return &record;
}

proxyMemberDescListS const* Overloaded::getStaticProxyTypeInfo() {
    static proxyMemberDescS const members[] = {
        proxyMethod<&Overloaded::text>("Any", "", 1),
        proxyMethod<&Overloaded::number>("Any", "", 2),
        proxyMethod<&Overloaded::object>("Any", "", 3),
        proxyMethod<&Overloaded::integer>("Narrow", "", 4),
        proxyMethod<&Overloaded::object>("Narrow", "", 5),
        proxyPropertyGet<&Overloaded::property>("Either", "", 6),
        proxyMethod<&Overloaded::integer>("Either", "", 7),
        proxyMethod<&Overloaded::same>("Same", "", 8),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {nullptr};
    static proxyMemberDescListS const record = {"Overloaded",
                                                proxyCastTo<Overloaded>,
                                                bases,
                                                members,
                                                "velktest.overloaded",
                                                0,
                                                proxyCreate<Overloaded>,
                                                "",
                                                1};
    return &record;
}

Servers::Servers() {
    EXPECT_EQ(mzComServerInit(), mzSuccess);
}

Servers::~Servers() {
    EXPECT_EQ(mzComServerDone(), mzSuccess);
}

}  // namespace velk::test
