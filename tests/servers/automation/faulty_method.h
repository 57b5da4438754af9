/// The methods of the faulty object.
#pragma once

#include <span>

#include <windows.h>

#include <oleauto.h>

namespace velk::test::server {

class Faulty;

/// One call as it reached Invoke. Pointers that the caller left out are null.
struct FaultyCall {
    DISPPARAMS const& parameters;
    VARIANT* result;
    EXCEPINFO* exception;
    UINT* argumentError;

    /// The argument at `index` from the first, or null.
    VARIANT* argument(UINT index) const {
        bool const given = index < parameters.cArgs;
        return given ? &parameters.rgvarg[parameters.cArgs - 1 - index] : nullptr;
    }
};

/// One named fault.
struct FaultyMethod {
    char const* name;
    /// What Invoke answers. May throw, which is then the fault.
    HRESULT (*run)(Faulty& object, FaultyCall const& call);
};

/// Successes and results that are wrong:
/// - SuccessWithoutResult: S_OK, the result is not touched
/// - AnswersFalse: S_FALSE with the result VT_I4 7
/// - PositiveCode(n): n as the code, with the result VT_I4 n
/// - BadType: the type 0x0FFE, which does not exist
/// - BadTypeAllBits: the type 0x7FFF with a null pointer
/// - NullRecord: VT_RECORD with neither record nor information
/// - NullArray: VT_ARRAY|VT_I4 without an array
/// - NullByRef: VT_BYREF|VT_I4 without a place
/// - SelfReference: VT_BYREF|VT_VARIANT to a VARIANT that refers to itself
/// - NullDispatch: VT_DISPATCH without an object
/// - EmbeddedNull: the text "before", a zero character, "after"
std::span<FaultyMethod const> faultyResults();

/// Failures:
/// - Throws: a C++ exception inside; E_UNEXPECTED outside
/// - ThrowsAcross: std::runtime_error leaves Invoke
/// - DeferredFillIn: EXCEPINFO whose function fills in source "Faulty",
///   description "filled in later" and scode 0x80040301
/// - DeferredFails: that function answers E_FAIL and fills in nothing
/// - DeferredThrows: that function throws std::runtime_error
/// - GarbageArgumentIndex: DISP_E_TYPEMISMATCH for the argument 0xDEADBEEF
/// - UnsetArgumentIndex: DISP_E_TYPEMISMATCH, the index is not touched
/// - ParamNotFoundGarbage: DISP_E_PARAMNOTFOUND for the argument 0xDEADBEEF
/// - ExceptionWithoutInfo: DISP_E_EXCEPTION with an EXCEPINFO of zeros
/// - ExceptionSuccessCode: DISP_E_EXCEPTION with wCode 1001 and scode 0
/// - LongText: DISP_E_EXCEPTION with a description of a million characters
std::span<FaultyMethod const> faultyFailures();

/// What the object does to others and to itself:
/// - Vanish: this call succeeds, every later one answers RPC_E_DISCONNECTED
/// - Recurse(object, method): calls that method of that object with the same
///   two arguments; the code of the call inside comes back
/// - ChangesTypeOfByRef(value): a VT_BYREF|VT_VARIANT argument becomes the
///   text "changed", whatever it was; DISP_E_TYPEMISMATCH for another one
/// - RecordedCalls, ClearRecorded: as the sample's
std::span<FaultyMethod const> faultyActions();

}  // namespace velk::test::server
