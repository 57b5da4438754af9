#include "VelkQXTProxy/exception_info.h"

#include "host/proxy_member.h"
#include "module/process_objects.h"

using velk::com::Bstr;
using velk::com::makeBstr;
using velk::com::TextView;

namespace {

// Unit and lines as member descriptors publish them: constants of the class, no
// places in this file.
constexpr char const* sourceUnit = "VelkQXTProxy";

Bstr copyUpToNul(BSTR text) {
    return text ? makeBstr(TextView(text)) : Bstr();
}

}  // namespace

prx_EXCEPINFO::prx_EXCEPINFO()
    : source_(makeBstr(TextView())),
      description_(makeBstr(TextView())),
      helpFile_(makeBstr(TextView())) {
    setThreadSafe();
}

prx_EXCEPINFO::prx_EXCEPINFO(EXCEPINFO const& source)
    : code_(source.wCode),
      reserved_(source.wReserved),
      source_(copyUpToNul(source.bstrSource)),
      description_(copyUpToNul(source.bstrDescription)),
      helpFile_(copyUpToNul(source.bstrHelpFile)),
      helpContext_(source.dwHelpContext),
      reservedPointer_(source.pvReserved),
      deferredFillIn_(source.pfnDeferredFillIn),
      scode_(source.scode) {
    setThreadSafe();
}

QVariant prx_EXCEPINFO::dwHelpContext() const {
    return QVariant::fromValue(static_cast<unsigned long>(helpContext_));
}

QVariant prx_EXCEPINFO::scode() const {
    return QVariant::fromValue(static_cast<long>(scode_));
}

proxyMemberDescListS const* prx_EXCEPINFO::getStaticProxyTypeInfo() {
    static proxyMemberDescS const members[] = {
        proxyPropertyGet<&prx_EXCEPINFO::wCode>("WCode", sourceUnit, 205),
        proxyPropertyGet<&prx_EXCEPINFO::wReserved>("WReserved", sourceUnit, 206),
        proxyPropertyGet<&prx_EXCEPINFO::bstrSource>("BstrSource", sourceUnit, 207),
        proxyPropertyGet<&prx_EXCEPINFO::bstrDescription>("BstrDescription", sourceUnit, 208),
        proxyPropertyGet<&prx_EXCEPINFO::bstrHelpFile>("BstrHelpFile", sourceUnit, 209),
        proxyPropertyGet<&prx_EXCEPINFO::dwHelpContext>("DwHelpContext", sourceUnit, 210),
        proxyPropertyGet<&prx_EXCEPINFO::scode>("Scode", sourceUnit, 211),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {"prx_EXCEPINFO",
                                                &proxyCastTo<prx_EXCEPINFO>,
                                                bases,
                                                members,
                                                nullptr,
                                                0,
                                                nullptr,
                                                sourceUnit,
                                                196};
    return &record;
}

namespace velk::adapter {

void setLastException(mzComPtrC const& value) {
    if (mzComPtrC* const holder = lastExceptionSlot.holder()) *holder = value;
}

mzComPtrC takeLastException() {
    mzComPtrC* const holder = lastExceptionSlot.holder();
    mzComPtrC last = holder ? *holder : mzComPtrC();
    resetLastException();
    return last;
}

namespace {

template <typename... Source>
void setLastExceptionTo(Source const&... source) {
    mzComPtrC made;
    try {
        made.attach((new prx_EXCEPINFO(source...))->getIUnknown());
    } catch (std::bad_alloc const&) {
        // No object then: the failure itself is told all the same.
    } catch (com::Error const&) {
        // The same, from a text that could not be copied.
    }
    setLastException(made);
}

}  // namespace

void rememberException(EXCEPINFO const& info) {
    setLastExceptionTo(info);
}

void resetLastException() {
    setLastExceptionTo();
}

}  // namespace velk::adapter
