/// What the threads of one program share: the objects that it holds.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "VelkQXTProxy/wrapper_interfaces.h"
#include "com/owners.h"
#include "host/host.h"
#include "hostile/choices.h"
#include "module/interfaces.h"

namespace velk::test::hostile {

/// Objects and values, named by choices. Whatever they do when they go, they go
/// while no lock is held. A program that may `tie` objects to each other keeps
/// those that could become part of a circle until its end.
class World {
  public:
    explicit World(bool mayTie) : mayTie_(mayTie) {}

    bool mayTie() const { return mayTie_; }

    void keep(com::ComPtr<IUnknown> object, unsigned place);
    void keep(mzComVariantC value, unsigned place);
    com::ComPtr<IUnknown> native(unsigned place) const;
    mzComVariantC host(unsigned place) const;
    void dropNative(unsigned place);
    void dropHost(unsigned place);

    /// Has everything let go of everything else.
    void untie();
    std::atomic<bool> const& untied() const { return untied_; }
    /// Releases all, in an order that the program draws.
    void releaseAll(Choices& choices);

    /// Descriptions of the records that programs use.
    static inline std::vector<com::ComPtr<IRecordInfo>> records;

  private:
    static constexpr std::size_t mostOfEach = 16;

    bool const mayTie_;
    std::atomic<bool> untied_{false};
    mutable std::mutex mutex_;
    std::vector<com::ComPtr<IUnknown>> natives_;
    std::vector<mzComVariantC> hosts_;
    std::vector<com::ComPtr<IUnknown>> tiedNatives_;
    std::vector<mzComVariantC> tiedHosts_;
};

/// One thread that works off choices. Objects that it calls reach it by
/// `current` and go on with them.
class Actor {
  public:
    Actor(World& world, Choices choices, bool isWorker = false);
    /// Ends what the workers of a first actor began.
    ~Actor();
    Actor(Actor const&) = delete;
    Actor& operator=(Actor const&) = delete;

    /// The one of this thread; null on threads that are not the program's.
    static Actor* current() { return current_; }

    /// Does everything that is left.
    void run();
    /// A few steps in the middle of another one.
    void runNested();

    World& world;
    Choices choices;

  private:
    void step();
    void callNative();
    void callHost();
    void askNative();
    void askInterface();
    void createNative();
    void createHost();
    void useProxy();
    void crossOver();
    void nest();
    void startThread();
    void drop();

    static thread_local Actor* current_;
    bool const isWorker_;
    Actor* const outer_;
    int depth_ = 0;
    std::vector<std::thread> threads_;
    std::vector<std::unique_ptr<std::atomic<bool>>> ended_;
};

/// The entry points of the module.
struct Entry {
    HRESULT(STDAPICALLTYPE* getClassObject)(REFCLSID, REFIID, LPVOID*);
    HRESULT(STDAPICALLTYPE* canUnloadNow)();
    bool (*facadeOver)(mzIDispatch*, IDispatch**);
};
extern Entry entry;

com::ComPtr<IVelkCOMProxy> newProxy();
/// A host object by its name; empty where there is none.
mzComVariantC newHostObject(char const* name);
/// A host wrapper over a native object; empty while there is no application,
/// which has the class.
mzComVariantC wrapped(com::ComPtr<IDispatch> const& object);
/// Has this thread give up the last failure that it met.
void forgetThread();

/// The object in a host value, or in the variable that it is; empty for none.
mzComPtrT<mzIDispatch> dispatchOf(mzComVariantC const& value);

/// Tells a step where VELK_STEPS is set.
void say(char const* step, std::string const& detail = {});

/// Ends the program: what the module did is wrong.
[[noreturn]] void complain(char const* what, std::string const& detail = {});

}  // namespace velk::test::hostile
