#include "hostile/world.h"

#include <cstdio>
#include <cstdlib>
#include <initializer_list>

namespace velk::test::hostile {
namespace {

/// Whether an object of this kind never holds another one that is given to it.
bool holdsNothing(mzComVariantC const& value) {
    if (value.getType() != mzTypeObject) return true;
    mzComPtrT<mzIUnknown> object;
    value.get(object);
    mzComPtrC found;
    return !object.isValid() ||
           object->queryInterface(mzIIDS("mzIComDispatchWrapper"), found) == mzSuccess;
}

bool holdsNothing(com::ComPtr<IUnknown> const& object) {
    return object.query<IUnknown>(IID_IVelkCOMProxy) || !object.query<IUnknown>(IID_IDispatch);
}

template <class Objects>
typename Objects::value_type takeOut(Objects& objects, unsigned place) {
    if (objects.empty()) return {};
    auto const found = objects.begin() + static_cast<long>(place % objects.size());
    auto taken = std::move(*found);
    objects.erase(found);
    return taken;
}

void empty(mzComVariantC const& value) {
    auto const object = dispatchOf(value);
    if (!object.isValid()) return;
    struct {
        char const* name;
        unsigned kind;
        std::initializer_list<mzComVariantC> arguments;
    } const calls[] = {{"RemoveAll", mzCallMethod, {}},
                       {"vt", mzCallPropertyPut, {0}},
                       {"ReDim", mzCallMethod, {-1}}};
    for (auto const& call : calls) {
        mzComVariantArrayC arguments;
        for (auto const& argument : call.arguments) arguments.append(argument);
        mzComVariantC result;
        mzComPtrT<mzIException> exception;
        object->invokeByName(call.name, call.kind, arguments, result, exception);
    }
}

void emptyVariable(mzComVariantC const& value) {
    mzComPtrT<mzIUnknown> held;
    value.get(held);
    mzComPtrT<mzScriptSymbolRefI> const variable{mzComPtrC(held.iface())};
    if (!variable.isValid()) return;
    mzComVariantArrayC arguments;
    arguments.append({});
    mzComVariantC result;
    mzComPtrT<mzIException> exception;
    variable->invokeByName(mzComStringC(), mzCallPropertyPut, arguments, result, exception);
}

void empty(com::ComPtr<IUnknown> const& object) {
    auto const dispatch = object.query<IDispatch>(IID_IDispatch);
    if (!dispatch) return;
    VARIANT nothing{};
    nothing.vt = VT_DISPATCH;
    VARIANT zero{};
    zero.vt = VT_I4;
    VARIANT minusOne = zero;
    minusOne.lVal = -1;
    DISPID put = DISPID_PROPERTYPUT;
    struct {
        OLECHAR const* name;
        WORD flags;
        DISPPARAMS parameters;
    } calls[] = {
        {OLESTR("Keep"), DISPATCH_METHOD, {&nothing, nullptr, 1, 0}},
        {OLESTR("Value"), DISPATCH_PROPERTYPUT, {&nothing, &put, 1, 1}},
        {OLESTR("Peer"), DISPATCH_PROPERTYPUTREF, {&nothing, &put, 1, 1}},
        {OLESTR("RemoveAll"), DISPATCH_METHOD, {}},
        {OLESTR("ReDim"), DISPATCH_METHOD, {&minusOne, nullptr, 1, 0}},
        {OLESTR("vt"), DISPATCH_PROPERTYPUT, {&zero, &put, 1, 1}},
        {OLESTR(""), DISPATCH_PROPERTYPUT, {&nothing, &put, 1, 1}},
    };
    for (auto& call : calls) {
        auto* name = const_cast<LPOLESTR>(call.name);
        DISPID id = 0;
        if (FAILED(dispatch->GetIDsOfNames(IID_NULL, &name, 1, 0, &id))) continue;
        dispatch->Invoke(id, IID_NULL, 0, call.flags, &call.parameters, nullptr, nullptr, nullptr);
    }
}

}  // namespace

void World::keep(com::ComPtr<IUnknown> object, unsigned place) {
    if (!object) return;
    bool const tied = mayTie_ && !holdsNothing(object);
    com::ComPtr<IUnknown> former;
    std::lock_guard const guard(mutex_);
    if (tied) tiedNatives_.push_back(object);
    if (natives_.size() >= mostOfEach) former = takeOut(natives_, place);
    natives_.push_back(std::move(object));
}

void World::keep(mzComVariantC value, unsigned place) {
    bool const tied = mayTie_ && !holdsNothing(value);
    mzComVariantC former;
    std::lock_guard const guard(mutex_);
    if (tied) tiedHosts_.push_back(value);
    if (hosts_.size() >= mostOfEach) former = takeOut(hosts_, place);
    hosts_.push_back(std::move(value));
}

com::ComPtr<IUnknown> World::native(unsigned place) const {
    std::lock_guard const guard(mutex_);
    return natives_.empty() ? com::ComPtr<IUnknown>() : natives_[place % natives_.size()];
}

mzComVariantC World::host(unsigned place) const {
    std::lock_guard const guard(mutex_);
    return hosts_.empty() ? mzComVariantC() : hosts_[place % hosts_.size()];
}

void World::dropNative(unsigned place) {
    com::ComPtr<IUnknown> gone;
    std::lock_guard const guard(mutex_);
    gone = takeOut(natives_, place);
}

void World::dropHost(unsigned place) {
    mzComVariantC gone;
    std::lock_guard const guard(mutex_);
    gone = takeOut(hosts_, place);
}

void World::untie() {
    // What is emptied may run code that keeps more.
    for (std::size_t i = 0; i < tiedHosts_.size(); ++i) {
        auto const value = tiedHosts_[i];
        emptyVariable(value);
        empty(value);
    }
    for (std::size_t i = 0; i < tiedNatives_.size(); ++i) {
        auto const object = tiedNatives_[i];
        empty(object);
    }
    untied_ = true;
}

void World::releaseAll(Choices& choices) {
    for (;;) {
        com::ComPtr<IUnknown> native;
        mzComVariantC host;
        unsigned const place = choices.byte();
        std::lock_guard const guard(mutex_);
        if (place % 2 == 0 && !natives_.empty())
            native = takeOut(natives_, place / 2);
        else if (!hosts_.empty())
            host = takeOut(hosts_, place / 2);
        else if (!natives_.empty())
            native = takeOut(natives_, place / 2);
        else if (!tiedHosts_.empty())
            host = takeOut(tiedHosts_, place / 2);
        else if (!tiedNatives_.empty())
            native = takeOut(tiedNatives_, place / 2);
        else
            return;
    }
}

mzComPtrT<mzIDispatch> dispatchOf(mzComVariantC const& value) {
    mzComPtrT<mzIUnknown> object;
    value.getExt(object);
    return mzComPtrT<mzIDispatch>(mzComPtrC(object.iface()));
}

void say(char const* step, std::string const& detail) {
    static bool const tells = std::getenv("VELK_STEPS") != nullptr;
    if (tells) std::fprintf(stderr, "%s %s\n", step, detail.c_str());
}

void complain(char const* what, std::string const& detail) {
    std::fprintf(stderr, "hostile client: %s %s\n", what, detail.c_str());
    std::abort();
}

}  // namespace velk::test::hostile
