#include "VelkQXTProxy/call_arguments.h"

#include <algorithm>

#include "VelkQXTProxy/wrapper_interfaces.h"
#include "com/owners.h"
#include "conversions.h"
#include "host/exception.h"
#include "host/symbol_ref.h"
#include "variant_references.h"

namespace velk::adapter {
namespace {

// The bit of a wrapper's flags that has its value passed by value.
constexpr unsigned passByValue = 1;

mzComPtrT<mzScriptSymbolRefI> variableIn(mzComVariantC const& argument) {
    if (argument.getType() != mzTypeObject) return {};
    mzComPtrT<mzIUnknown> object;
    if (argument.get(object) != mzSuccess) return {};
    return mzComPtrT<mzScriptSymbolRefI>(mzComPtrC(object.iface()));
}

mzComPtrT<mzIComVariantWrapper> wrapperIn(mzComVariantC const& value) {
    mzComPtrT<mzIUnknown> object;
    if (value.get(object) != mzSuccess) return {};
    return mzComPtrT<mzIComVariantWrapper>(mzComPtrC(object.iface()));
}

/// A reference to the value of `value` in its own type.
VARIANT typedReference(VARIANT& value) {
    VARIANT reference = value;
    reference.vt = VT_BYREF | value.vt;
    // A record is held by pointers already, and a reference stays what it is.
    if (value.vt == VT_RECORD || (value.vt & VT_BYREF)) return reference;
    reference.byref = value.vt == VT_DECIMAL ? static_cast<void*>(&value.decVal)
                                             : static_cast<void*>(&value.llVal);
    return reference;
}

/// A variable that holds a wrapper keeps it, with the new value in it; every
/// other one gets a new host value.
void writeBack(mzScriptSymbolRefI& variable, VARIANT const& value) {
    mzComVariantC current;
    variable.get(current);
    VARIANT const* const end = followReferences(&value);
    if (!end) return;
    if (auto const wrapper = wrapperIn(current); wrapper.isValid()) {
        wrapper->setVariant(*end);
        return;
    }
    mzComVariantC converted;
    if (!convertMSCOMVariant2MZCOMVariant(value, converted, true, true)) return;
    mzComVariantArrayC arguments;
    arguments.append(converted);
    mzComVariantC ignored;
    mzComPtrT<mzIException> exception;
    variable.invokeByName(mzComStringC(), mzCallPropertyPut, arguments, ignored, exception);
}

}  // namespace

CallArguments::CallArguments(int count) : count_(count) {
    if (count > usualCount) {
        large_ = std::make_unique<VARIANT[]>(2 * static_cast<std::size_t>(count));
        converted_ = large_.get();
        passed_ = converted_ + count;
    } else {
        converted_ = usual_.data();
        passed_ = converted_ + usualCount;
    }
    std::fill_n(converted_, count, VARIANT{});
}

CallArguments::~CallArguments() {
    for (int i = 0; i < count_; ++i) com::closeVariant(converted_[i]);
}

bool CallArguments::convert(mzComVariantArrayC const& args, bool isPut) {
    for (int i = 0; i < count_; ++i) {
        mzComVariantC const& argument = args.at(i);
        bool const isVariable = argument.getType() == mzTypeObject && argument.isVariable();
        unsigned typedByRef = 0;
        unsigned wrapperFlags = 0;
        if (!convertMZCOMVariant2MSCOMVariant(isVariable ? argument.skipVariable() : argument,
                                              converted_[i], typedByRef, wrapperFlags)) {
            return false;
        }
        bool const isValueOfPut = isPut && i == count_ - 1;
        pass(i, !isVariable || isValueOfPut, typedByRef, wrapperFlags);
    }
    return true;
}

void CallArguments::pass(int index, bool byValue, unsigned typedByRef, unsigned wrapperFlags) {
    VARIANT& value = converted_[index];
    VARIANT& target = passed_[count_ - 1 - index];
    if (byValue || (wrapperFlags & passByValue)) {
        target = value;
    } else if (typedByRef) {
        target = typedReference(value);
    } else {
        VariantInit(&target);
        target.vt = VT_BYREF | VT_VARIANT;
        target.pvarVal = &value;
    }
}

DISPPARAMS CallArguments::parameters(bool isPut) noexcept {
    return {passed_, &valueOfPut_, static_cast<UINT>(count_), isPut ? 1U : 0U};
}

void CallArguments::copyBack(mzComVariantArrayC const& args) {
    for (int i = 0; i < count_; ++i) {
        if (auto const variable = variableIn(args.at(i)); variable.isValid()) {
            writeBack(*variable.iface(), converted_[i]);
        }
    }
}

}  // namespace velk::adapter
