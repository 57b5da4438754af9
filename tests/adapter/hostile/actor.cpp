#include <algorithm>
#include <memory>

#include "hostile/puppets.h"
#include "hostile/values.h"

namespace velk::test::hostile {
namespace {

/// The call parameters of a client of whatever mind.
class Parameters {
  public:
    explicit Parameters(Actor& actor) : values_(actor) {
        unsigned const count = actor.choices.below(5);
        for (unsigned i = 0; i < count; ++i) passed_.push_back(values_.make());
        for (auto& id : named_) id = actor.choices.oneIn(2) ? DISPID_PROPERTYPUT : i_++;
        parameters_ = {passed_.data(), named_, count, std::min(count, actor.choices.below(3))};
    }
    DISPPARAMS* get() { return &parameters_; }

  private:
    NativeValues values_;
    std::vector<VARIANT> passed_;
    DISPID i_ = 0;
    DISPID named_[3];
    DISPPARAMS parameters_{};
};

/// What the module made: it gets the null pointers that other objects do not.
bool isOfModule(IUnknown& object) {
    com::ComPtr<IUnknown> const held(&object);
    return held.query<IUnknown>(IID_Ivelkdspwrap) || held.query<IUnknown>(IID_IVelkCOMProxy);
}

bool isFacade(IUnknown& object) {
    return bool(com::ComPtr<IUnknown>(&object).query<IUnknown>(IID_Ivelkdspwrap));
}

com::ComPtr<IDispatch> native(Actor& actor) {
    auto const object = actor.world.native(actor.choices.byte());
    return object ? object.query<IDispatch>(IID_IDispatch) : com::ComPtr<IDispatch>();
}

std::string utf8(std::basic_string<OLECHAR> const& text) {
    return mzComStringC(text.c_str()).toUtf8();
}

void serveUntil(std::atomic<bool> const& condition) {
    while (!condition) mzComSleepUntil(20, condition);
}

}  // namespace

thread_local Actor* Actor::current_ = nullptr;

Actor::Actor(World& world, Choices choices, bool isWorker)
    : world(world), choices(choices), isWorker_(isWorker), outer_(std::exchange(current_, this)) {}

Actor::~Actor() {
    current_ = outer_;
    if (isWorker_) return;
    // Objects belong to their threads: while one is at work, all serve.
    for (auto const& ended : ended_) serveUntil(*ended);
    world.untie();
    for (auto& thread : threads_) thread.join();
}

void Actor::run() {
    while (choices.more()) step();
}

void Actor::runNested() {
    constexpr int mostLevels = 6;
    if (depth_ >= mostLevels) return;
    ++depth_;
    for (unsigned steps = 1 + choices.below(3); steps > 0; --steps) step();
    --depth_;
}

void Actor::step() {
    static constexpr struct {
        char const* name;
        void (Actor::*run)();
    } steps[] = {
        {"drop", &Actor::drop},
        {"call native", &Actor::callNative},
        {"call native", &Actor::callNative},
        {"call native", &Actor::callNative},
        {"call host", &Actor::callHost},
        {"call host", &Actor::callHost},
        {"call host", &Actor::callHost},
        {"ask native", &Actor::askNative},
        {"ask interface", &Actor::askInterface},
        {"create native", &Actor::createNative},
        {"create host", &Actor::createHost},
        {"create host", &Actor::createHost},
        {"proxy", &Actor::useProxy},
        {"cross over", &Actor::crossOver},
        {"nest", &Actor::nest},
        {"thread", &Actor::startThread},
    };
    auto const& step = choices.of(steps);
    say(step.name);
    (this->*step.run)();
}

void Actor::callNative() {
    auto const object = native(*this);
    if (!object) return;
    bool const ours = isOfModule(*object.get());
    Parameters parameters(*this);
    auto name = memberName(*this);
    auto* text = name.data();
    // Not the server's own numbers.
    DISPID id = choices.bits<short>() | 0x400;
    if (!choices.oneIn(8) && FAILED(object->GetIDsOfNames(IID_NULL, &text, 1, 0, &id))) return;
    say(" member", utf8(name));
    com::Variant result;
    com::ExceptionInfo exception;
    UINT wrongArgument = 0;
    unsigned const without = choices.below(16);
    DISPPARAMS* given = parameters.get();
    if (ours && without == 9) given = nullptr;
    if (isFacade(*object.get()) && without == 10) given->rgvarg = nullptr;
    constexpr WORD flags[] = {DISPATCH_METHOD,      DISPATCH_PROPERTYGET,    3,
                              DISPATCH_PROPERTYPUT, DISPATCH_PROPERTYPUTREF, 12};
    WORD const used = choices.oneIn(8) ? choices.bits<WORD>() : choices.of(flags);
    try {
        object->Invoke(id, IID_NULL, 0, used, given, without == 1 ? nullptr : result.put(),
                       without == 2 ? nullptr : exception.put(),
                       without == 3 ? nullptr : &wrongArgument);
    } catch (...) {
        if (ours) complain("an object of the module threw", std::to_string(id));
    }
    if (result.get().vt == VT_DISPATCH || result.get().vt == VT_UNKNOWN)
        world.keep(com::ComPtr<IUnknown>(result.get().punkVal), choices.byte());
}

void Actor::callHost() {
    auto const object = dispatchOf(world.host(choices.byte()));
    if (!object.isValid()) return;
    auto const name = memberName(*this);
    say(" member", utf8(name));
    mzComVariantArrayC arguments;
    for (unsigned count = choices.below(5); count > 0; --count) arguments.append(hostValue(*this));
    mzComVariantC result;
    mzComPtrT<mzIException> exception;
    mzComStringC const member(mzComStringC(name.c_str()));
    bool const isOwn = mzComPtrT<mzIComDispatchWrapper>(mzComPtrC(object.iface())).isValid() ||
                       mzComPtrT<mzIComVariantWrapper>(mzComPtrC(object.iface())).isValid();
    try {
        unsigned const code =
            object->invokeByName(member, choices.below(8), arguments, result, exception);
        if (isOwn && code != mzSuccess && code != mzFailure && code != mzMemberNotFound)
            complain("a wrapper answered", std::to_string(code));
    } catch (...) {
        if (isOwn) complain("a wrapper threw", member.toUtf8());
    }
    mzComVariantC told;
    if (exception.isValid()) mzComExceptionErrorString(exception, "\n");
    world.keep(std::move(result), choices.byte());
}

void Actor::askNative() {
    auto const object = native(*this);
    if (!object) return;
    auto first = memberName(*this);
    auto second = memberName(*this);
    LPOLESTR names[] = {first.data(), second.data()};
    DISPID ids[2] = {};
    bool const facade = isFacade(*object.get());
    switch (choices.below(facade ? 7 : 4)) {
        case 0:
            object->GetIDsOfNames(IID_NULL, names, 2, 0, ids);
            break;
        case 1: {
            UINT count = 0;
            object->GetTypeInfoCount(&count);
            break;
        }
        case 2: {
            com::ComPtr<ITypeInfo> type;
            object->GetTypeInfo(choices.byte() / 128, choices.bits<LCID>(), type.put());
            world.keep(com::ComPtr<IUnknown>(type.get()), choices.byte());
            break;
        }
        case 3:
            object->GetIDsOfNames(interfaceId(*this), names, 1, choices.bits<LCID>(), ids);
            break;
        case 4:
            object->GetIDsOfNames(IID_NULL, nullptr, 1, 0, ids);
            object->GetIDsOfNames(IID_NULL, names, 1, 0, nullptr);
            object->GetTypeInfoCount(nullptr);
            object->GetTypeInfo(0, 0, nullptr);
            break;
        case 5:
            names[0] = nullptr;
            object->GetIDsOfNames(IID_NULL, names, choices.below(3), 0, ids);
            break;
        default:
            object.query<Ivelkdspwrap>(IID_Ivelkdspwrap)->bindToDispatch(choices.bits<LONGLONG>());
            break;
    }
}

void Actor::askInterface() {
    auto const object = world.native(choices.byte());
    if (!object) return;
    auto const found = object.query<IUnknown>(interfaceId(*this));
    auto const identity = object.query<IUnknown>(IID_IUnknown);
    if (found && !(found.query<IUnknown>(IID_IUnknown) == identity))
        complain("an object has two identities");
    world.keep(found, choices.byte());
}

void Actor::createNative() {
    IID const id = interfaceId(*this);
    com::ComPtr<IClassFactory> factory;
    switch (choices.below(6)) {
        case 0:
            world.keep(nativePuppet(), choices.byte());
            return;
        case 1: {
            com::ComPtr<IUnknown> any;
            entry.getClassObject(choices.oneIn(2) ? CLSID_VelkCOMProxy : id, id, any.putVoid());
            world.keep(any, choices.byte());
            return;
        }
        case 2:
            entry.getClassObject(CLSID_velkdspwrap, id, nullptr);
            entry.canUnloadNow();
            return;
        default:
            break;
    }
    if (entry.getClassObject(CLSID_VelkCOMProxy, IID_IClassFactory, factory.putVoid()) != S_OK)
        complain("no class object");
    com::ComPtr<IUnknown> made;
    // The outer object of an aggregate outlives it.
    auto const outer = choices.oneIn(4) ? nativePuppet() : com::ComPtr<IUnknown>();
    factory->CreateInstance(outer.get(), outer ? IID_IUnknown : id, made.putVoid());
    if (choices.oneIn(4)) factory->LockServer(TRUE), factory->LockServer(FALSE);
    if (!outer) world.keep(made, choices.byte());
}

void Actor::createHost() {
    if (choices.oneIn(4)) return world.keep(hostPuppet(), choices.byte());
    char const* const name = className(*this);
    say(" class", name);
    world.keep(newHostObject(name), choices.byte());
}

void Actor::useProxy() {
    auto const proxy = newProxy();
    char const* const name = className(*this);
    std::basic_string<OLECHAR> const wide(name, name + std::strlen(name));
    com::Bstr const text = com::makeBstr(wide);
    com::ComPtr<IDispatch> made;
    switch (choices.below(32)) {
        case 0:
            proxy->TerminateApplication();
            break;
        case 1:
        case 2:
            proxy->InitApplication(text.get(), choices.oneIn(2) ? nullptr : text.get());
            break;
        case 3:
            proxy->GetObject(text.get(), made.put());
            break;
        case 4:
            proxy->CreateObject(nullptr, made.put());
            proxy->CreateObject(text.get(), nullptr);
            break;
        case 5:
        case 6:
            world.keep(proxy, choices.byte());
            break;
        default:
            proxy->CreateObject(text.get(), made.put());
            break;
    }
    world.keep(made, choices.byte());
}

/// A facade over a host object, or a host wrapper over a native one.
void Actor::crossOver() {
    if (choices.oneIn(2)) {
        com::ComPtr<IDispatch> facade;
        auto const object = dispatchOf(world.host(choices.byte()));
        if (!entry.facadeOver(object.iface(), facade.put())) complain("no facade");
        world.keep(facade, choices.byte());
        return;
    }
    world.keep(wrapped(native(*this)), choices.byte());
}

/// Facades of dictionaries with wrappers of facades in them, many levels deep.
void Actor::nest() {
    mzComVariantC value = hostValue(*this);
    say(" of type", std::to_string(value.getType()));
    for (unsigned level = choices.below(64); level > 0; --level) {
        mzComPtrT<prxDictionaryObjC> const dictionary(new prxDictionaryObjC);
        dictionary->addObj("next", value);
        com::ComPtr<IDispatch> facade;
        if (!entry.facadeOver(dictionary.iface(), facade.put())) complain("no facade");
        value = wrapped(facade);
    }
    world.keep(value, choices.byte());
}

void Actor::startThread() {
    constexpr std::size_t mostThreads = 3;
    if (isWorker_ || depth_ > 0 || threads_.size() >= mostThreads) return;
    Choices const part = choices.part(choices.byte());
    bool const waits = choices.oneIn(2);
    ended_.push_back(std::make_unique<std::atomic<bool>>(false));
    auto* const ended = ended_.back().get();
    threads_.emplace_back([this, part, ended, starter = mzComThreadNumber()] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        {
            Actor actor(world, part, true);
            actor.run();
        }
        *ended = true;
        mzComWake(starter);
        serveUntil(world.untied());
        forgetThread();
        CoUninitialize();
    });
    if (waits) serveUntil(*ended);
}

void Actor::drop() {
    if (choices.oneIn(2))
        world.dropHost(choices.byte());
    else
        world.dropNative(choices.byte());
}

}  // namespace velk::test::hostile
