#pragma once

#include "host/dispatch_client.h"

namespace scripting {

/// What every typed client is: a reference to a script object, or unbound.
/// Copies share the object. A client has no lock: it is used on one thread at a
/// time, and the object decides what concurrent calls mean.
///
/// Clients never tell that a call failed: a member function then gives the
/// default of its type (0, false, empty text, an unbound client), and so it
/// does, without calling anything, when the client is unbound. What an object
/// throws through its `invokeByName` passes on to the caller.
class ScriptingBase {
  public:
    virtual ~ScriptingBase() = default;

    /// Whether there is an object to call.
    bool isBound() const { return object_.isValid(); }
    /// The object; an unbound one to give it up.
    mzIDispatchC const& scriptObject() const { return object_; }

  protected:
    ScriptingBase() = default;
    explicit ScriptingBase(mzIDispatchC object) : object_(std::move(object)) {}
    ScriptingBase(ScriptingBase const&) = default;
    ScriptingBase& operator=(ScriptingBase const&) = default;

  private:
    mzIDispatchC object_;
};

/// As the first argument of a constructor: make a new object.
struct CreateNew {};
inline constexpr CreateNew createNew;

/// A new object of the class with this script name; unbound when there is none.
mzIDispatchC newScriptObject(char const* scriptName);

}  // namespace scripting
