#include "native_object.h"

#include "host/creation.h"

namespace hostscript {

ScriptObject ScriptObject::create(char const* name) {
    mzComPtrC object;
    if (mzComCreateObject(name, mzIDispatch::interfaceId(), object) != mzSuccess) {
        throw CallError(std::string("cannot create the host object ") + name);
    }
    ScriptObject result;
    result.object_ = mzComPtrT<mzIDispatch>(object);
    return result;
}

ScriptObject::ScriptObject(mzComVariantC const& value) {
    mzComPtrT<mzIUnknown> object;
    value.skipVariable().get(object);
    object_ = mzComPtrT<mzIDispatch>(mzComPtrC(object.iface()));
    if (!object_.isValid()) throw CallError("not an object: " + textOf(value));
}

mzComVariantC ScriptObject::call(char const* member,
                                 std::initializer_list<mzComVariantC> arguments) {
    return invoke(member, mzCallMethod, arguments);
}

mzComVariantC ScriptObject::get(char const* member,
                                std::initializer_list<mzComVariantC> arguments) {
    return invoke(member, mzCallPropertyGet, arguments);
}

void ScriptObject::put(char const* member, std::initializer_list<mzComVariantC> arguments) {
    invoke(member, mzCallPropertyPut, arguments);
}

mzComVariantC ScriptObject::asValue() const {
    mzComVariantC value;
    value.set(object_);
    return value;
}

mzComVariantC ScriptObject::invoke(char const* member, unsigned kind,
                                   std::initializer_list<mzComVariantC> arguments) {
    mzComVariantArrayC array;
    for (auto const& argument : arguments) array.append(argument);
    mzComVariantC result;
    mzComPtrT<mzIException> exception;
    if (object_->invokeByName(member, kind, array, result, exception) != mzSuccess) {
        throw CallError(mzComExceptionErrorString(exception, "the call failed").toUtf8());
    }
    return result;
}

std::string textOf(mzComVariantC const& value) {
    mzComStringC text;
    return value.getExt(text) == mzSuccess ? text.toUtf8() : "an object";
}

}  // namespace hostscript
