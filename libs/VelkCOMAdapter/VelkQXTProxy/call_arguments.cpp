#include "VelkQXTProxy/call_arguments.h"

#include <algorithm>

#include "VelkQXTProxy/wrapper_interfaces.h"
#include "com/owners.h"
#include "conversion/conversions.h"
#include "conversion/variant_references.h"
#include "host/exception.h"
#include "host/symbol_ref.h"

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

/// Whether a script made the value to receive one of any type.
bool isForAnyType(mzComVariantC const& value) {
    auto const wrapper = wrapperIn(value);
    unsigned type = VT_EMPTY;
    unsigned flags = 0;
    return wrapper.isValid() && wrapper->getVartype(type) == mzSuccess && type == VT_VARIANT &&
           wrapper->getFlags(flags) == mzSuccess && !(flags & passByValue);
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
        bool const isValueOfPut = isPut && i == count_ - 1;
        if (!convertOne(isVariable ? argument.skipVariable() : argument,
                        !isVariable || isValueOfPut, i)) {
            return false;
        }
    }
    return true;
}

bool CallArguments::convertOne(mzComVariantC const& argument, bool byValue, int index) {
    unsigned typedByRef = 0;
    unsigned wrapperFlags = 0;
    if (convertMZCOMVariant2MSCOMVariant(argument, converted_[index], typedByRef, wrapperFlags)) {
        pass(index, byValue, typedByRef, wrapperFlags);
        return true;
    }
    if (byValue || !isForAnyType(argument)) return false;
    passAsVariant(index);
    return true;
}

void CallArguments::pass(int index, bool byValue, unsigned typedByRef, unsigned wrapperFlags) {
    if (byValue || (wrapperFlags & passByValue)) {
        passed_[count_ - 1 - index] = converted_[index];
    } else if (typedByRef) {
        passTyped(index);
    } else {
        passAsVariant(index);
    }
}

/// As a reference to the value in its own type, where that is one.
void CallArguments::passTyped(int index) {
    VARIANT& value = converted_[index];
    if (value.vt == VT_EMPTY || value.vt == VT_NULL) {
        value = VARIANT{};
        passAsVariant(index);
        return;
    }
    VARIANT& target = passed_[count_ - 1 - index];
    target = value;
    target.vt = VT_BYREF | value.vt;
    // A record is held by pointers already, and a reference stays what it is.
    if (value.vt == VT_RECORD || (value.vt & VT_BYREF)) return;
    target.byref = &value.llVal;
    if (value.vt == VT_DECIMAL) target.pdecVal = referredDecimal(index);
}

DECIMAL* CallArguments::referredDecimal(int index) {
    if (!decimals_) {
        decimals_ = std::make_unique<ReferredDecimal[]>(static_cast<std::size_t>(count_));
    }
    auto& [value, inUse] = decimals_[static_cast<std::size_t>(index)];
    value = converted_[index].decVal;
    value.wReserved = 0;
    inUse = true;
    return &value;
}

void CallArguments::passAsVariant(int index) {
    VARIANT& target = passed_[count_ - 1 - index];
    target = VARIANT{};
    target.vt = VT_BYREF | VT_VARIANT;
    target.pvarVal = &converted_[index];
}

DISPPARAMS CallArguments::parameters(bool isPut) noexcept {
    return {passed_, &valueOfPut_, static_cast<UINT>(count_), isPut ? 1U : 0U};
}

void CallArguments::takeReferredDecimal(int index) {
    if (!decimals_ || !decimals_[static_cast<std::size_t>(index)].inUse) return;
    converted_[index].decVal = decimals_[static_cast<std::size_t>(index)].value;
    converted_[index].vt = VT_DECIMAL;
}

void CallArguments::copyBack(mzComVariantArrayC const& args) {
    for (int i = 0; i < count_; ++i) {
        takeReferredDecimal(i);
        if (auto const variable = variableIn(args.at(i)); variable.isValid()) {
            writeBack(*variable.iface(), converted_[i]);
        }
    }
}

}  // namespace velk::adapter
