#include "sample_object.h"

mzComPtrT<mzIDispatch> SampleObject::create() {
    return mzComPtrT<mzIDispatch>(new SampleObject);
}

proxyMemberDescListS const* SampleObject::getStaticProxyTypeInfo() {
    static proxyMemberDescS const members[] = {
        proxyMethod<&SampleObject::add>("Add", __FILE__, 14),
        proxyMethod<&SampleObject::echo>("Echo", __FILE__, 15),
        proxyMethod<&SampleObject::other>("Member03", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member04", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member05", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member06", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member07", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member08", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member09", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member10", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member11", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member12", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member13", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member14", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member15", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member16", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member17", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member18", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member19", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member20", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member21", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member22", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member23", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member24", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member25", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member26", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member27", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member28", __FILE__, 17),
        proxyMethod<&SampleObject::other>("Member29", __FILE__, 17),
        proxyMethod<&SampleObject::last>("Last", __FILE__, 16),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {"SampleObject",
                                                &proxyCastTo<SampleObject>,
                                                bases,
                                                members,
                                                nullptr,
                                                0,
                                                nullptr,
                                                __FILE__,
                                                9};
    return &record;
}
