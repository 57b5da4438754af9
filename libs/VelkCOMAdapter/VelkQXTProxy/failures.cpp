#include "VelkQXTProxy/failures.h"

#include <exception>
#include <new>

#include "com/error.h"
#include "host/execute_exception.h"

namespace velk::adapter {

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
