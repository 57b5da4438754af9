#include "VelkQXTProxy/failures.h"

namespace velk::adapter {

unsigned raise(mzComStringC const& message, mzComPtrT<mzIException>& exception) {
    exception = mzComCreateException("Invoke DSP", message, {});
    return mzFailure;
}

mzComStringC hexText(HRESULT code) {
    return mzComStringC::fromInt(static_cast<int>(code), 16);
}

mzComStringC unknownFailureText(HRESULT code) {
    return "unknown exception :0x" + hexText(code);
}

}  // namespace velk::adapter
