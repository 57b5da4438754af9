#include "hostile/client.h"

#include <chrono>
#include <random>

#include "hostile/puppets.h"
#include "servers/automation/test_server_ids.h"
#include "support/leaks.h"
#include "support/loaded_module.h"

namespace velk::test::hostile {
namespace {

template <class Function>
void find(HMODULE module, char const* name, Function& function) {
    function =
        reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
    if (!function) complain("the module does not have", name);
}

std::vector<com::ComPtr<IRecordInfo>> testRecords() {
    std::vector<com::ComPtr<IRecordInfo>> records;
    com::ComPtr<ITypeLib> library;
    LoadTypeLib(AutomationServer::path().c_str(), library.put());
    for (GUID const& id : {server::pointId, server::personId}) {
        com::ComPtr<ITypeInfo> type;
        com::ComPtr<IRecordInfo> record;
        if (FAILED(library->GetTypeInfoOfGuid(id, type.put())) ||
            FAILED(GetRecordInfoFromTypeInfo(type.get(), record.put())))
            complain("no record");
        records.push_back(record);
    }
    return records;
}

com::ComPtr<IDispatch> made(com::ComPtr<IClassFactory> const& factory) {
    com::ComPtr<IDispatch> object;
    if (FAILED(factory->CreateInstance(nullptr, IID_IDispatch, object.putVoid())))
        complain("no object of the server");
    return object;
}

com::ComPtr<IClassFactory> factoryOf(CLSID const& id) {
    com::ComPtr<IClassFactory> factory;
    if (FAILED(CoGetClassObject(id, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                                factory.putVoid())))
        complain("no class of the server");
    return factory;
}

/// What every program begins with: one object of each kind that matters.
void furnish(World& world, com::ComPtr<IDispatch> const& sample,
             com::ComPtr<IDispatch> const& faulty) {
    for (char const* const name : {"scripting.dictionary", "qxttools.array", "qxttools.comadapter",
                                   "comadapter.variantwrapper"}) {
        auto const value = newHostObject(name);
        com::ComPtr<IDispatch> facade;
        entry.facadeOver(dispatchOf(value).iface(), facade.put());
        world.keep(value, 0);
        world.keep(facade, 0);
    }
    for (auto const& object : {sample, faulty}) {
        world.keep(wrapped(object), 0);
        world.keep(object, 0);
    }
    world.keep(hostPuppet(), 0);
    world.keep(nativePuppet(), 0);
    world.keep(newProxy(), 0);
}

}  // namespace

Entry entry{};

com::ComPtr<IVelkCOMProxy> newProxy() {
    com::ComPtr<IClassFactory> factory;
    com::ComPtr<IVelkCOMProxy> proxy;
    if (FAILED(entry.getClassObject(CLSID_VelkCOMProxy, IID_IClassFactory, factory.putVoid())) ||
        FAILED(factory->CreateInstance(nullptr, IID_IVelkCOMProxy, proxy.putVoid())))
        complain("no proxy");
    return proxy;
}

mzComVariantC newHostObject(char const* name) {
    mzComPtrC object;
    mzComVariantC value;
    if (mzComCreateObject(name, mzIUnknown::interfaceId(), object) == mzSuccess)
        value.set(mzComPtrT<mzIUnknown>(object.iface()));
    return value;
}

mzComVariantC wrapped(com::ComPtr<IDispatch> const& object) {
    mzComVariantC value = newHostObject("comadapter.dspwrapper");
    mzComPtrT<mzIUnknown> held;
    value.get(held);
    mzComPtrT<mzIComDispatchWrapper> const wrapper(mzComPtrC(held.iface()));
    if (!wrapper.isValid()) return {};
    wrapper->setDispatch(object.get());
    com::ComPtr<IDispatch> back;
    if (wrapper->getDispatch(back.put()) == mzSuccess && !(back == object))
        complain("a wrapper holds another object");
    return value;
}

void forgetThread() {
    // The last failure of a thread is kept until its adapter goes.
    newHostObject("qxttools.comadapter");
}

Program drawn(unsigned seed) {
    std::minstd_rand random(seed + 1);
    Program program(64 + random() % 512);
    for (auto& byte : program) byte = static_cast<std::uint8_t>(random() >> 8);
    return program;
}

Client::Client(bool usesRecords) {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    module_ = com::Module(LoadLibraryW(modulePath().c_str()));
    find(module_.get(), "DllGetClassObject", entry.getClassObject);
    find(module_.get(), "DllCanUnloadNow", entry.canUnloadNow);
    find(module_.get(), "convertMZCOMIDispatch2MSCOMIDispatch", entry.facadeOver);
    server_.emplace();
    if (FAILED(server_->registration())) complain("no server");
    sample_ = factoryOf(server::sampleClass);
    faulty_ = factoryOf(server::faultyClass);
    // Nobody serves calls for long here.
    mzComSetCallLimits({20, 1000});
    if (usesRecords) World::records = testRecords();
    newProxy()->InitApplication(nullptr, nullptr);
    // Some things are made once and kept for the process.
    for (unsigned seed = 0; seed < 64; ++seed) run(drawn(seed));
    before_ = alive();
}

Client::~Client() {
    World::records.clear();
    sample_.reset();
    faulty_.reset();
    newProxy()->TerminateApplication();
    server_.reset();
    module_.reset();
    // The last one to leave COM has it give up the server, which it keeps for a
    // while otherwise.
    PCoInitializer::detach();
    CoUninitialize();
}

std::string Client::run(std::span<std::uint8_t const> program) {
    Choices choices(program);
    {
        World world(choices.oneIn(2));
        furnish(world, made(sample_), made(faulty_));
        {
            Actor actor(world, choices);
            actor.run();
            choices = Choices(program);
        }
        if (choices.oneIn(2))
            world.releaseAll(choices);
        else
            std::thread([&] {
                CoInitializeEx(nullptr, COINIT_MULTITHREADED);
                world.releaseAll(choices);
                forgetThread();
                CoUninitialize();
            }).join();
    }
    newProxy()->InitApplication(nullptr, nullptr);
    forgetThread();
    std::string now = alive();
    using namespace std::chrono_literals;
    // Threads that are about to end still hold things.
    for (int tries = 0; now != before_ && !before_.empty() && tries < 100; ++tries) {
        std::this_thread::sleep_for(10ms);
        now = alive();
    }
    return now == before_ ? "" : "before: " + before_ + "; after: " + now;
}

std::string Client::alive() const {
    return std::to_string(Puppet::alive) + " puppets, " + std::to_string(server_->liveObjects()) +
           " objects of the server, " +
           (entry.canUnloadNow() == S_OK ? "unloadable, " : "not unloadable, ") + thingsAlive();
}

}  // namespace velk::test::hostile
