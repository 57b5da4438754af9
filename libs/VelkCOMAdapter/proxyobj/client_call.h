#pragma once

#include <type_traits>

#include "host/creation.h"
#include "host/symbol_ref.h"

#include "proxyobj/scripting_base.h"

/// How the member functions of the typed clients call: by a single function
/// for members and one for constants.
namespace scripting::detail {

/// A parameter as the host value that is sent.
inline mzComVariantC argument(int value) {
    return value;
}
inline mzComVariantC argument(bool value) {
    return value;
}
inline mzComVariantC argument(double value) {
    return value;
}
inline mzComVariantC argument(char const* value) {
    return value;
}
inline mzComVariantC argument(mzComStringC const& value) {
    return value;
}
inline mzComVariantC argument(mzComVariantC const& value) {
    return value;
}
inline mzComVariantC argument(mzComPtrT<mzIUnknown> const& value) {
    mzComVariantC reference;
    reference.set(value);
    return reference;
}
inline mzComVariantC argument(ScriptingBase const& client) {
    return argument(mzComPtrT<mzIUnknown>(client.scriptObject().dispatch().iface()));
}

/// A host value as what a member function returns; the default of the type
/// when it cannot be read so. `value` is no script variable.
template <class Type>
Type read(mzComVariantC const& value) {
    if constexpr (std::is_same_v<Type, mzComVariantC>) {
        return value;
    } else if constexpr (std::is_base_of_v<ScriptingBase, Type>) {
        auto const object = read<mzComPtrT<mzIUnknown>>(value);
        return Type(mzIDispatchC(mzComPtrC(object.iface())));
    } else if constexpr (std::is_same_v<Type, mzComPtrT<mzIUnknown>>) {
        Type object;
        value.get(object);
        return object;
    } else {
        Type result{};
        return value.getExt(result) == mzSuccess ? result : Type{};
    }
}

/// A parameter that the callee may write: a script variable with the caller's
/// value, which takes back what is in the variable in the end. A value of
/// another kind leaves the caller's as it was.
template <class Type>
class OutParameter {
  public:
    explicit OutParameter(Type& target)
        : target_(target), variable_(mzComVariantC::createSymbolRef(argument(target))) {}

    mzISymbolRefC const& variable() const { return variable_; }

    void takeBack() const {
        mzComVariantC value;
        if (variable_.get(value) != mzSuccess) return;
        if constexpr (std::is_same_v<Type, mzComVariantC>) {
            target_ = value;
        } else {
            value.getExt(target_);
        }
    }

  private:
    Type& target_;
    mzISymbolRefC variable_;
};

template <class Type>
mzComVariantC argument(OutParameter<Type> const& parameter) {
    return parameter.variable();
}

template <class Type>
void takeBack(Type const&) {}
template <class Type>
void takeBack(OutParameter<Type> const& parameter) {
    parameter.takeBack();
}

/// Calls a member with the parameters in their order, and reads its result.
template <class Result, class... Parameters>
Result callMember(mzIDispatchC const& object, char const* name, unsigned callKind,
                  Parameters const&... parameters) {
    if (!object.isValid()) return Result();
    mzComVariantArrayC arguments;
    (arguments.append(argument(parameters)), ...);
    mzComVariantC result;
    // The outcome is told by the result alone.
    object.invokeByName(name, callKind, arguments, result);
    (takeBack(parameters), ...);
    if constexpr (!std::is_void_v<Result>) return read<Result>(result.skipVariable());
}

/// A constant of the class that the script manager knows by this type name.
/// Each read asks a new manager: nothing is kept.
mzComVariantC classConstant(char const* typeName, char const* name);

}  // namespace scripting::detail
