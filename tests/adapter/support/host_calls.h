/// Calls of host objects in few words.
#pragma once

#include <initializer_list>
#include <string>

#include "host/host.h"
#include "support/recording_object.h"

namespace velk::test {

/// What a call of a host object left.
struct HostOutcome {
    unsigned code = mzSuccess;
    mzComVariantC result;
    mzComPtrT<mzIException> exception;

    /// "ok " and the result, "failed" without an exception, or the exception's
    /// source and text.
    std::string text() const {
        if (code == mzSuccess) return "ok " + describe(result);
        if (!exception.isValid())
            return code == mzFailure ? "failed" : "code " + std::to_string(code);
        return exception->source().toUtf8() + ": " +
               mzComExceptionErrorString(exception, "\n").toUtf8();
    }
};

inline HostOutcome callHost(mzIDispatch* object, char const* name, unsigned kind,
                            std::initializer_list<mzComVariantC> arguments = {}) {
    mzComVariantArrayC array;
    for (auto const& argument : arguments) array.append(argument);
    HostOutcome outcome;
    outcome.code = object->invokeByName(name, kind, array, outcome.result, outcome.exception);
    return outcome;
}

template <class Object>
mzComVariantC valueOf(mzComPtrT<Object> const& object) {
    mzComVariantC value;
    value.set(object);
    return value;
}

/// The object in a host value, as it is called; empty for none.
inline mzComPtrT<mzIDispatch> dispatchIn(mzComVariantC const& value) {
    return mzComPtrT<mzIDispatch>(mzComPtrC(objectIn(value)));
}

}  // namespace velk::test
