#include "sample_objects.h"

#include <gtest/gtest.h>

namespace velk::test {

Outcome call(mzIUnknown* object, char const* name, unsigned kind,
             std::vector<mzComVariantC> const& args) {
    mzComVariantArrayC list;
    for (mzComVariantC const& arg : args) list.append(arg);
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

mzComPtrC newArray() {
    return mzComPtrC(proxyFactoryC::instance().find("qxttools.array")->creator()->getIUnknown());
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
        proxyMethod<&Sample::forward>("Forward", file, 14),
        proxyMethod<&Sample::text>("Any", file, 15),
        proxyMethod<&Sample::number>("Any", file, 16),
        proxyMethod<&Sample::object>("Any", file, 17),
        proxyMethod<&Sample::integer>("Narrow", file, 18),
        proxyMethod<&Sample::object>("Narrow", file, 19),
        proxyPropertyGet<&Sample::property>("Either", file, 20),
        proxyMethod<&Sample::integer>("Either", file, 21),
        proxyMethod<&Sample::same>("Same", file, 22),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static auto const record = recordOf<Sample>("Sample", "velktest.sample", members, bases);
    return &record;
}

proxyMemberDescListS const* DerivedSample::getStaticProxyTypeInfo() {
    static proxyMemberDescS const members[] = {proxyMethod<&DerivedSample::addDouble>("Add", "", 1),
                                               proxyMethod<&DerivedSample::extra>("Extra", "", 2),
                                               proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {Sample::getStaticProxyTypeInfo(), nullptr};
    static auto const record =
        recordOf<DerivedSample>("DerivedSample", "velktest.derived", members, bases);
    return &record;
}

Servers::Servers() {
    EXPECT_EQ(mzComServerInit(), mzSuccess);
}

Servers::~Servers() {
    EXPECT_EQ(mzComServerDone(), mzSuccess);
}

}  // namespace velk::test
