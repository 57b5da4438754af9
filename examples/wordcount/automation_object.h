/// Late-bound calls on an automation object, as any controller makes them.
#pragma once

#include <map>
#include <span>
#include <stdexcept>
#include <string>

#include <ole2.h>

#include "com/owners.h"

namespace wordcount {

/// A native call that failed; what() says which member, the code and, where
/// the object gave one, its description.
class CallError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One automation object, called by member name. Used on the thread that made it.
class AutomationObject {
  public:
    /// Creates the object registered under `progId`. Throws CallError.
    static AutomationObject create(OLECHAR const* progId);

    /// Takes the object out of a call's result. Throws CallError, which names
    /// `member`, when the result is no object.
    AutomationObject(velk::com::Variant result, char const* member);

    /// Calls a method. The arguments stand in the order in which a person
    /// writes them and stay the caller's.
    velk::com::Variant call(OLECHAR const* member, std::span<VARIANT const> arguments = {});
    /// Reads a property, with an index or without.
    velk::com::Variant get(OLECHAR const* member, std::span<VARIANT const> arguments = {});
    /// Writes a property; the new value is the last argument.
    void put(OLECHAR const* member, std::span<VARIANT const> arguments);

  private:
    explicit AutomationObject(velk::com::ComPtr<IDispatch> object) : object_(std::move(object)) {}

    DISPID identifier(OLECHAR const* member);
    velk::com::Variant invoke(OLECHAR const* member, WORD flags,
                              std::span<VARIANT const> arguments);

    velk::com::ComPtr<IDispatch> object_;
    /// Identifiers are asked for once: they stay the same while the object lives.
    std::map<OLECHAR const*, DISPID> identifiers_;
};

}  // namespace wordcount
