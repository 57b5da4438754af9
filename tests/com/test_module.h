/// A module object for tests, with a class that records its life.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "com/class_factory.h"
#include "com/module.h"
#include "com/registrar.h"

namespace velk::com::test {

inline constexpr GUID libraryOfTests = {
    0x3f0c6b52, 0x8d21, 0x4a77, {0x9b, 0x6e, 0x10, 0x55, 0xc2, 0x7e, 0x41, 0x0d}};
inline constexpr CLSID recordedClass = {
    0x6a1d9e04, 0x27b3, 0x4c58, {0xa2, 0x0f, 0x7b, 0x3e, 0x91, 0x4d, 0x65, 0xc8}};
inline constexpr CLSID hiddenClass = {
    0x6a1d9e05, 0x27b3, 0x4c58, {0xa2, 0x0f, 0x7b, 0x3e, 0x91, 0x4d, 0x65, 0xc8}};
inline constexpr IID recordedInterface = {
    0xd42e7f11, 0x50c6, 0x4b39, {0x8e, 0x74, 0x2f, 0xa8, 0x06, 0xbd, 0x93, 0x5a}};
inline constexpr IID secondInterface = {
    0xd42e7f12, 0x50c6, 0x4b39, {0x8e, 0x74, 0x2f, 0xa8, 0x06, 0xbd, 0x93, 0x5a}};

/// Events of the objects of one test, in order.
using Events = std::vector<std::string>;

struct IRecorded : IUnknown {
    virtual int STDMETHODCALLTYPE answer() = 0;
};
struct ISecond : IUnknown {
    virtual int STDMETHODCALLTYPE secondAnswer() = 0;
};

/// What the next objects of Recorded are to do.
struct RecordedPlan {
    Events events;
    HRESULT construction = S_OK;
    bool throwInConstructor = false;
    bool referenceItselfMeanwhile = false;
    bool noMemory = false;
};
inline RecordedPlan plan;

/// A class with two interfaces whose objects write down their life.
class Recorded : public CComObjectRootEx<CComMultiThreadModel>,
                 public CComCoClass<Recorded, &recordedClass>,
                 public IRecorded,
                 public ISecond {
  public:
    VELK_COM_MAP(Recorded, VELK_COM_INTERFACE(IRecorded, recordedInterface),
                 VELK_COM_INTERFACE(ISecond, secondInterface))

    Recorded() {
        if (plan.throwInConstructor) throw Error(REGDB_E_READREGDB, "planned");
        plan.events.push_back("made");
    }
    ~Recorded() { plan.events.push_back("destroyed"); }

    HRESULT finalConstruct() {
        plan.events.push_back("constructed");
        if (plan.referenceItselfMeanwhile) {
            ComPtr<IRecorded>(static_cast<IRecorded*>(this)).reset();
        }
        return plan.construction;
    }
    void finalRelease() noexcept {
        // Whoever uses the object here takes and gives back references.
        ComPtr<IRecorded>(static_cast<IRecorded*>(this)).reset();
        plan.events.push_back("released");
    }

    int STDMETHODCALLTYPE answer() override { return 42; }
    int STDMETHODCALLTYPE secondAnswer() override { return 43; }

    static void* operator new(std::size_t size, std::nothrow_t const& tag) noexcept {
        return plan.noMemory ? nullptr : ::operator new(size, tag);
    }
    static void operator delete(void* memory) { ::operator delete(memory); }
    static void operator delete(void* memory, std::nothrow_t const&) noexcept {
        ::operator delete(memory);
    }
};

class TestModule final : public DllModule {
  public:
    using DllModule::DllModule;
    void AddCommonRGSReplacements(Registrar& registrar) override {
        registrar.addReplacement(OLESTR("APPID"), OLESTR("{of the test}"));
    }
};

/// A module with one creatable class, one that only code can create, and
/// hooks that record its start and end.
class ModuleTest : public testing::Test {
  protected:
    void SetUp() override { plan = {}; }
    void TearDown() override { EXPECT_EQ(module.GetLockCount(), 0); }

    static void mainHook(bool starting) noexcept {
        plan.events.push_back(starting ? "module starts" : "module ends");
    }

    ObjectMapEntry objects[2] = {{&hiddenClass, 0, nullptr, createWithOrWithoutOuter<Recorded>},
                                 {&recordedClass, 0, makeCachedClassFactory,
                                  createWithOrWithoutOuter<Recorded>, nullptr, mainHook}};
    ComModuleRecord record{objects};
    TestModule module{record, libraryOfTests};
};

}  // namespace velk::com::test
