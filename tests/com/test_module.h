/// A module object for tests, with a class that records its life.
#pragma once

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "com/class_factory.h"
#include "com/module.h"
#include "com/registration/registrar.h"
#include "support/start_gate.h"

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

/// An object that tells how many references it has, and is not destroyed by the
/// last one. Shows the interfaces of its part, if it has one, as its own.
class CountingUnknown final : public IUnknown {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override {
        ++queries;
        if (!IsEqualGUID(id, IID_IUnknown) && part) return part->QueryInterface(id, out);
        *out = nullptr;
        if (!IsEqualGUID(id, IID_IUnknown)) return E_NOINTERFACE;
        *out = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    ULONG references = 0;
    int queries = 0;
    ComPtr<IUnknown> part;
};

struct IRecorded : IUnknown {
    virtual int STDMETHODCALLTYPE answer() = 0;
};
struct ISecond : IUnknown {
    virtual int STDMETHODCALLTYPE secondAnswer() = 0;
};

/// What happened to the objects of one test, in order, a word each.
inline std::string events;
inline void note(char const* event) {
    events += (events.empty() ? "" : " ") + std::string(event);
}

/// What the next objects of Recorded are to do, as words: "fails" in the second
/// step of construction, "throws" in the first, "uses itself" meanwhile, has
/// "no memory".
inline std::string plan;
inline bool planned(char const* word) {
    return plan.find(word) != plan.npos;
}

/// A class with two interfaces whose objects write down their life.
class Recorded : public CComObjectRootEx<CComMultiThreadModel>,
                 public CComCoClass<Recorded, &recordedClass>,
                 public IRecorded,
                 public ISecond {
  public:
    VELK_COM_MAP(Recorded, VELK_COM_INTERFACE(IRecorded, recordedInterface),
                 VELK_COM_INTERFACE(ISecond, secondInterface))

    Recorded() {
        if (planned("throws")) throw Error(REGDB_E_READREGDB, "planned");
        note("made");
    }
    ~Recorded() { note("destroyed"); }

    HRESULT finalConstruct() {
        note("constructed");
        if (planned("uses itself")) ComPtr<IRecorded>(static_cast<IRecorded*>(this)).reset();
        return planned("fails") ? E_ACCESSDENIED : S_OK;
    }
    void finalRelease() noexcept {
        // Whoever uses the object here takes and gives back references.
        ComPtr<IRecorded>(static_cast<IRecorded*>(this)).reset();
        note("released");
    }

    int STDMETHODCALLTYPE answer() override { return 42; }
    int STDMETHODCALLTYPE secondAnswer() override { return 43; }

    static void* operator new(std::size_t size, std::nothrow_t const& tag) noexcept {
        return planned("no memory") ? nullptr : ::operator new(size, tag);
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

/// A module with one class that only code can create, and a creatable one.
class ModuleTest : public testing::Test {
  protected:
    void SetUp() override {
        plan = {};
        events = {};
    }
    void TearDown() override { EXPECT_EQ(module.GetLockCount(), 0); }

    template <typename Interface = IUnknown>
    ComPtr<Interface> classObject(REFIID id = IID_IUnknown) {
        ComPtr<Interface> found;
        EXPECT_EQ(module.getClassObject(recordedClass, id, found.putVoid()), S_OK);
        return found;
    }

    ObjectMapEntry objects[2] = {
        {&hiddenClass, 0, nullptr, createWithOrWithoutOuter<Recorded>},
        {&recordedClass, 0, makeCachedClassFactory, createWithOrWithoutOuter<Recorded>}};
    ComModuleRecord record{objects};
    TestModule module{record, libraryOfTests};
};

/// What several threads get that ask at the same moment: one and the same.
template <typename Interface, typename Ask>
void expectOneForAll(Ask const& ask) {
    constexpr int threadCount = 4;
    std::vector<ComPtr<Interface>> found(threadCount);
    velk::test::StartGate start(threadCount);
    std::vector<std::thread> threads;
    for (auto& place : found) {
        threads.emplace_back([&] {
            start.arriveAndWait();
            ask(place);
        });
    }
    for (auto& thread : threads) thread.join();
    ComPtr<Interface> later;
    ask(later);
    ASSERT_TRUE(later);
    for (auto const& place : found) EXPECT_EQ(place, later);
}

}  // namespace velk::com::test
