/// Objects as a host script sees them, in few words.
#pragma once

#include <initializer_list>
#include <stdexcept>
#include <string>

#include "host/host.h"

namespace hostscript {

/// A call that failed, with the text that a script would get.
class CallError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A host object, or a native one in its wrapper, called by name. Every
/// failure is a CallError.
class ScriptObject {
  public:
    /// A new host object by its script name.
    static ScriptObject create(char const* name);
    /// The object in a value.
    explicit ScriptObject(mzComVariantC const& value);

    mzComVariantC call(char const* member, std::initializer_list<mzComVariantC> arguments = {});
    mzComVariantC get(char const* member, std::initializer_list<mzComVariantC> arguments = {});
    /// The last argument is the new value.
    void put(char const* member, std::initializer_list<mzComVariantC> arguments);
    /// The object as an argument.
    mzComVariantC asValue() const;

  private:
    ScriptObject() = default;
    mzComVariantC invoke(char const* member, unsigned kind,
                         std::initializer_list<mzComVariantC> arguments);

    mzComPtrT<mzIDispatch> object_;
};

/// A value as text.
std::string textOf(mzComVariantC const& value);

}  // namespace hostscript
