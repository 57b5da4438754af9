#pragma once

#include "host/dispatch.h"
#include "host/variant.h"

/// A script variable as an object. `invokeByName` with an empty name reads it
/// (call kind method or get, no arguments) and writes it (put, one value);
/// every other call goes to the object that the variable holds.
class mzScriptSymbolRefI : public mzIDispatch {
  public:
    static mzIIDS const& interfaceId() {
        static mzIIDS const id("mzScriptSymbolRefI");
        return id;
    }

    /// Writes the variable's current value into `value`. Host result code.
    virtual unsigned get(mzComVariantC& value) = 0;

  protected:
    ~mzScriptSymbolRefI() = default;
};

/// A reference to a script variable: pass it as an argument, then read what
/// the callee left there. Copies refer to the same variable.
class mzISymbolRefC {
  public:
    mzISymbolRefC() = default;
    explicit mzISymbolRefC(mzComPtrT<mzScriptSymbolRefI> symbol) : symbol_(std::move(symbol)) {}

    bool isValid() const { return symbol_.isValid(); }
    /// Reads the variable's current value; `mzFailure` without a variable.
    unsigned get(mzComVariantC& value) const {
        return symbol_.isValid() ? symbol_->get(value) : mzFailure;
    }
    mzComPtrT<mzScriptSymbolRefI> const& symbol() const { return symbol_; }
    /// The variable as an argument.
    operator mzComVariantC() const {
        mzComVariantC argument;
        argument.set(mzComPtrT<mzIUnknown>(symbol_.iface()));
        return argument;
    }

  private:
    mzComPtrT<mzScriptSymbolRefI> symbol_;
};
