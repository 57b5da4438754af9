#include <mutex>

#include "host/dispatch_client.h"
#include "host/symbol_ref.h"
#include "host/variant_array.h"
#include "values/counted_object.h"

namespace {

/// A script variable. It never holds another variable: what is written is the
/// value behind it.
class ScriptVariable final : public velk::core::CountedObject<mzScriptSymbolRefI, mzIDispatch> {
  public:
    explicit ScriptVariable(mzComVariantC value) : value_(std::move(value)) {}

    unsigned invokeByName(mzComStringC const& name, unsigned callKind,
                          mzComVariantArrayC const& args, mzComVariantC& result,
                          mzComPtrT<mzIException>& exception) override {
        if (name.isEmpty() && callKind == mzCallPropertyPut && args.size() == 1) {
            write(args.at(0).skipVariable());
            result.clear();
            return mzSuccess;
        }
        if (name.isEmpty() && args.size() == 0 && !(callKind & mzCallPropertyPut)) {
            return get(result);
        }
        mzComPtrT<mzIDispatch> const object = read().toDispatch().dispatch();
        if (!object.isValid()) return mzMemberNotFound;
        return object->invokeByName(name, callKind, args, result, exception);
    }

    unsigned get(mzComVariantC& value) override {
        value = read();
        return mzSuccess;
    }

  private:
    mzComVariantC read() const {
        std::lock_guard const guard(mutex_);
        return value_;
    }

    // The old value goes outside the lock: giving up an object runs its code.
    void write(mzComVariantC value) {
        std::lock_guard const guard(mutex_);
        std::swap(value_, value);
    }

    mutable std::mutex mutex_;
    mzComVariantC value_;
};

// Variables of others may hold variables, and each other in a ring.
constexpr int longestChain = 1 << 20;

mzComPtrT<mzScriptSymbolRefI> variableOf(mzComVariantC const& value) {
    mzComPtrT<mzIUnknown> object;
    if (value.get(object) != mzSuccess) return {};
    return mzComPtrT<mzScriptSymbolRefI>(mzComPtrC(object.iface()));
}

}  // namespace

bool mzComVariantC::isVariable() const {
    return type_ == mzTypeObject && variableOf(*this).isValid();
}

mzComVariantC mzComVariantC::skipVariable() const {
    if (type_ != mzTypeObject) return *this;
    mzComPtrT<mzScriptSymbolRefI> variable = variableOf(*this);
    if (!variable.isValid()) return *this;
    mzComVariantC value;
    for (int length = 0; variable.isValid(); ++length) {
        if (length == longestChain || variable->get(value) != mzSuccess) return {};
        variable = variableOf(value);
    }
    return value;
}

mzISymbolRefC mzComVariantC::createSymbolRef(mzComVariantC const& value) {
    mzComPtrT<mzScriptSymbolRefI> variable = variableOf(value);
    if (!variable.isValid()) variable = new ScriptVariable(value);
    return mzISymbolRefC(std::move(variable));
}
