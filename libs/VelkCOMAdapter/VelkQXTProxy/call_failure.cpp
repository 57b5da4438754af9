#include "VelkQXTProxy/call_failure.h"

#include <exception>
#include <new>

#include "com/error.h"
#include "host/execute_exception.h"

namespace velk::adapter {
namespace {

mzComStringC notFoundText(mzComStringC const& member) {
    return "Member '" + member + "' not found";
}

/// What the called object told of its failure.
mzComStringC toldBy(EXCEPINFO const& info) {
    return mzComStringC::fromBSTR(info.bstrSource) + ":" +
           mzComStringC::fromBSTR(info.bstrDescription) + ":" + hexText(info.scode);
}

}  // namespace

void CallOutcome::takeException(mzComStringC const& member) {
    status = threwException;
    info.reset();
    EXCEPINFO* const told = info.address();
    told->scode = threwException;
    told->bstrSource =
        com::makeBstr(com::TextView(member.oleText(), static_cast<std::size_t>(member.length())))
            .release();
    told->bstrDescription = com::makeBstr(OLESTR("unknown exception")).release();
}

mzComStringC failureText(mzComStringC const& member, CallOutcome const& outcome) {
    EXCEPINFO const& info = outcome.info.get();
    switch (outcome.status) {
        case DISP_E_BADPARAMCOUNT:
            return "wrong number of arguments";
        case DISP_E_MEMBERNOTFOUND:
            if (info.scode == 0) return notFoundText(member);
            return "Exception (" + notFoundText(member) + "): " + toldBy(info);
        case DISP_E_TYPEMISMATCH:
            return "Argument mismatch at position :" +
                   mzComStringC::fromInt(static_cast<int>(outcome.wrongArgument + 1), 10);
        case DISP_E_EXCEPTION:
            return "Exception:" + toldBy(info);
        case DISP_E_PARAMNOTOPTIONAL:
            return "A required parameter was omitted";
        case threwException:
            return unhandledException;
        default:
            return unknownFailureText(outcome.status);
    }
}

unsigned raise(mzComStringC const& message, mzComPtrT<mzIException>& exception) {
    exception = mzComCreateException("Invoke DSP", message, {});
    return mzFailure;
}

unsigned raiseCurrentException(mzComPtrT<mzIException>& exception) {
    try {
        throw;
    } catch (mzExecuteExceptionC const& failed) {
        return raise(failed.message(), exception);
    } catch (com::Error const& error) {
        return raise(unknownFailureText(error.code()), exception);
    } catch (std::bad_alloc const&) {
        return raise(unknownFailureText(E_OUTOFMEMORY), exception);
    } catch (...) {
        return raise(unhandledException, exception);
    }
}

mzComStringC hexText(HRESULT code) {
    return mzComStringC::fromInt(static_cast<int>(code), 16);
}

mzComStringC unknownFailureText(HRESULT code) {
    return "unknown exception :0x" + hexText(code);
}

}  // namespace velk::adapter
