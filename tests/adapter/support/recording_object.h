/// A host object that remembers how it was called.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "host/host.h"

namespace velk::test {

/// One call as it reached a host object.
struct RecordedCall {
    std::string name;
    unsigned callKind;
    std::vector<mzComVariantC> arguments;
};

/// What a host object answers to a call.
struct Answer {
    unsigned code = mzSuccess;
    mzComVariantC result = {};
    mzComPtrT<mzIException> exception = {};
};

/// Answers every member alike, or as `respond` says; "__vbs_isnothing" is a
/// member only of an object made with `isNothing`.
class RecordingObject : public mzComDispatchBaseC {
  public:
    using Respond = std::function<Answer(RecordedCall const&)>;

    explicit RecordingObject(bool isNothing = false) : isNothing_(isNothing) {}

    unsigned invokeByName(mzComStringC const& name, unsigned callKind,
                          mzComVariantArrayC const& args, mzComVariantC& result,
                          mzComPtrT<mzIException>& exception) override {
        if (name.toUtf8() == "__vbs_isnothing") return isNothing_ ? mzSuccess : mzMemberNotFound;
        RecordedCall call{name.toUtf8(), callKind, {}};
        for (int index = 0; index < args.size(); ++index) call.arguments.push_back(args.at(index));
        Answer const given = respond ? respond(call) : answer;
        {
            std::lock_guard const guard(mutex_);
            calls_.push_back(std::move(call));
        }
        result = given.result;
        exception = given.exception;
        return given.code;
    }

    std::vector<RecordedCall> calls() const {
        std::lock_guard const guard(mutex_);
        return calls_;
    }
    /// The last call; a call without a name of kind 0 when there was none.
    RecordedCall lastCall() const {
        auto const all = calls();
        return all.empty() ? RecordedCall{"", 0, {}} : all.back();
    }
    void forgetCalls() {
        std::lock_guard const guard(mutex_);
        calls_.clear();
    }

    /// Counts the references, the caller's own not included.
    unsigned references() {
        addRef();
        return release();
    }

    Answer answer;
    Respond respond;

  private:
    bool isNothing_;
    mutable std::mutex mutex_;
    std::vector<RecordedCall> calls_;
};

/// A host object and the reference that keeps it alive.
class RecordingHolder {
  public:
    explicit RecordingHolder(bool isNothing = false)
        : object_(new RecordingObject(isNothing)), dispatch_(object_) {}

    RecordingObject* operator->() const { return object_; }
    RecordingObject* get() const { return object_; }
    mzIDispatch* dispatch() const { return dispatch_.iface(); }
    mzComVariantC asValue() const {
        mzComVariantC value;
        value.set(mzComPtrT<mzIUnknown>(dispatch_.iface()));
        return value;
    }

  private:
    RecordingObject* object_;
    mzComPtrT<mzIDispatch> dispatch_;
};

/// The object that a host value holds, without a new reference; null when it
/// holds none.
inline mzIUnknown* objectIn(mzComVariantC const& value) {
    mzComPtrT<mzIUnknown> object;
    value.get(object);
    return object.iface();
}

/// A host value as text for comparison and for messages: type and content.
inline std::string describe(mzComVariantC const& value) {
    switch (value.getType()) {
        case mzTypeEmpty:
            return "empty";
        case mzTypeInteger:
            return "integer " + std::to_string(value.getInt());
        case mzTypeDouble:
            return "number " + std::to_string(value.getDouble());
        case mzTypeString: {
            mzComStringC text;
            value.get(text);
            return "text " + text.toUtf8();
        }
        default:
            return objectIn(value) ? "object" : "null object";
    }
}

}  // namespace velk::test
