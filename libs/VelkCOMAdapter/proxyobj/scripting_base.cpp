#include "proxyobj/scripting_base.h"

#include "proxyobj/client_call.h"

namespace scripting {

mzIDispatchC newScriptObject(char const* scriptName) {
    mzComPtrC object;
    // A name that cannot be created leaves the pointer empty.
    mzComCreateObject(scriptName, mzIDispatch::interfaceId(), object);
    return mzIDispatchC(object);
}

mzComVariantC detail::classConstant(char const* typeName, char const* name) {
    mzComVariantArrayC arguments;
    arguments.append(typeName);
    mzIDispatchC const nullInstance =
        newScriptObject("qxttools.scriptmanager").call("CreateNullType", arguments).toDispatch();
    mzComVariantC value;
    nullInstance.getProperty(name, value);
    return value.skipVariable();
}

}  // namespace scripting
