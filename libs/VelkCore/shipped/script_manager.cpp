#include "script_manager.h"

#include "host/auto_register.h"
#include "host/creation.h"
#include "host/proxy_member.h"
#include "host/sleep.h"

#include "class_constants.h"
#include "script_array.h"

namespace velk::core {

namespace {

/// Stands for a class without being an instance of it: its properties are the
/// constants of the class, which can only be read. Any thread may read them.
class NullType : public proxyObjectC {
  public:
    explicit NullType(ConstantClass const& constants) : class_(constants) { setThreadSafe(); }

    /// Answers every constant itself; what is left are the runtime's own members.
    unsigned invokeByName(mzComStringC const& name, unsigned callKind,
                          mzComVariantArrayC const& args, mzComVariantC& result,
                          mzComPtrT<mzIException>& exception) override {
        ClassConstant const* const constant = class_.find(name);
        if (constant != nullptr && (callKind & mzCallPropertyGet) != 0 && args.size() == 0) {
            result = constant->value();
            return mzSuccess;
        }
        return proxyObjectC::invokeByName(name, callKind, args, result, exception);
    }

    proxyMemberDescListS const* getProxyTypeInfo() override {
        static proxyMemberDescS const members[] = {proxyMembersEnd()};
        static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                            nullptr};
        static proxyMemberDescListS const record = {
            "prxNullTypeObjC", proxyCastTo<NullType>, bases,   members, nullptr, 0,
            nullptr,           "script_manager.cpp",  __LINE__};
        return &record;
    }

  private:
    ConstantClass const& class_;
};

ConstantClass const& requireClass(mzComStringC const& typeName, char const* operation) {
    ConstantClass const* const found = constantClass(typeName);
    if (found == nullptr) {
        proxyObjectC::throwExecuteException("The type '" + typeName + "' is not known", operation,
                                            1);
    }
    return *found;
}

}  // namespace

ScriptManager::ScriptManager() {
    setThreadSafe();
}

mzComPtrT<mzIUnknown> ScriptManager::createNullType(mzComStringC const& typeName) {
    return (new NullType(requireClass(typeName, "CreateNullType")))->getIUnknown();
}

bool ScriptManager::hasType(mzComStringC const& typeName) {
    return constantClass(typeName) != nullptr;
}

mzComPtrT<mzIUnknown> ScriptManager::types() {
    std::vector<mzComVariantC> names;
    for (ConstantClass const& known : constantClasses()) names.emplace_back(known.typeName);
    return newScriptArray(std::move(names));
}

mzComPtrT<mzIUnknown> ScriptManager::constantNames(mzComStringC const& typeName) {
    std::vector<mzComVariantC> names;
    for (ClassConstant const& constant : requireClass(typeName, "ConstantNames").constants) {
        names.emplace_back(constant.name);
    }
    return newScriptArray(std::move(names));
}

mzComVariantC ScriptManager::constant(mzComStringC const& typeName, mzComStringC const& name) {
    ClassConstant const* const found = requireClass(typeName, "Constant").find(name);
    if (found == nullptr) {
        throwExecuteException("The type '" + typeName + "' has no constant '" + name + "'",
                              "Constant", 1);
    }
    return found->value();
}

mzComPtrT<mzIUnknown> ScriptManager::createObject(mzComStringC const& progId) {
    mzComPtrC object;
    if (mzComCreateObject(progId.toAscii().c_str(), mzIDispatch::interfaceId(), object) !=
        mzSuccess) {
        throwExecuteException("The class '" + progId + "' cannot be created", "CreateObject", 1);
    }
    return mzComPtrT<mzIUnknown>(object);
}

mzComPtrT<mzIUnknown> ScriptManager::getObject(mzComStringC const& progId) {
    mzComPtrC object;
    if (mzComGetActiveObject(progId.toAscii().c_str(), mzIDispatch::interfaceId(), 3, object, 0) !=
        mzSuccess) {
        throwExecuteException("No object '" + progId + "' is running", "GetObject", 1);
    }
    return mzComPtrT<mzIUnknown>(object);
}

bool ScriptManager::hasClass(mzComStringC const& name) {
    proxyMemberDescListS const* const record =
        proxyFactoryC::instance().find(name.toAscii().c_str());
    return record != nullptr && record->creator != nullptr;
}

void ScriptManager::sleep(int milliseconds) {
    if (milliseconds < 0) {
        throwExecuteException("A time to wait cannot be negative", "Sleep", 1);
    }
    mzComSleep(static_cast<unsigned>(milliseconds), 0, nullptr);
}

proxyMemberDescListS const* ScriptManager::getStaticProxyTypeInfo() {
    constexpr unsigned reads = mzCallMethod | mzCallPropertyGet;
    constexpr char const* file = "script_manager.h";
    using M = ScriptManager;
    static proxyMemberDescS const members[] = {
        proxyMethod<&M::createNullType>("CreateNullType", file, __LINE__),
        proxyMethod<&M::hasType>("HasType", file, __LINE__),
        proxyMember<&M::types>("Types", reads, file, __LINE__),
        proxyMethod<&M::constantNames>("ConstantNames", file, __LINE__),
        proxyMethod<&M::constant>("Constant", file, __LINE__),
        proxyMethod<&M::createObject>("CreateObject", file, __LINE__),
        proxyMethod<&M::getObject>("GetObject", file, __LINE__),
        proxyMethod<&M::hasClass>("HasClass", file, __LINE__),
        proxyMethod<&M::sleep>("Sleep", file, __LINE__),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {
        "prxScriptManagerObjC", proxyCastTo<M>, bases,   members, "qxttools.scriptmanager", 0,
        proxyCreate<M>,         file,           __LINE__};
    return &record;
}

}  // namespace velk::core

static proxyAutoRegisterT<velk::core::ScriptManager> registerScriptManager;
