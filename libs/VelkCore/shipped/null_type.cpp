#include "null_type.h"

#include "host/codes.h"
#include "host/proxy_member.h"

namespace velk::core {

NullType::NullType(ConstantClass const& constants) : class_(constants) {
    setThreadSafe();
}

unsigned NullType::invokeByName(mzComStringC const& name, unsigned callKind,
                                mzComVariantArrayC const& args, mzComVariantC& result,
                                mzComPtrT<mzIException>& exception) {
    ClassConstant const* const constant = class_.find(name);
    if (constant != nullptr && (callKind & mzCallPropertyGet) != 0 && args.size() == 0) {
        result = constant->value();
        return mzSuccess;
    }
    return proxyObjectC::invokeByName(name, callKind, args, result, exception);
}

proxyMemberDescListS const* NullType::getProxyTypeInfo() {
    static proxyMemberDescS const members[] = {proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {
        "prxNullTypeObjC", proxyCastTo<NullType>, bases,   members, nullptr, 0,
        nullptr,           "null_type.h",         __LINE__};
    return &record;
}

}  // namespace velk::core
