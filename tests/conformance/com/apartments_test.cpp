#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "conformance/com/test_classes.h"

// Programs that include objbase.h alone expect the property sets with it.
static_assert(PIDSI_TITLE == 2 && sizeof(PROPVARIANT) >= sizeof(VARTYPE));

namespace {

using namespace velk::test;

constexpr DWORD single = COINIT_APARTMENTTHREADED, multi = COINIT_MULTITHREADED;

/// Runs on a thread of its own, so that each case begins outside any apartment.
template <typename Body>
void onFreshThread(Body body) {
    std::thread(body).join();
}

struct Seen {
    HRESULT result;
    APTTYPE type;
    APTTYPEQUALIFIER qualifier;
};

Seen apartmentNow() {
    Seen seen{};
    seen.result = CoGetApartmentType(&seen.type, &seen.qualifier);
    return seen;
}

TEST(Apartments, RepeatedEntriesAreCounted) {
    struct Step {
        DWORD flags;
        HRESULT expected;
    };
    std::vector<std::vector<Step>> const runs = {
        {{single, S_OK}, {single, S_FALSE}, {single | COINIT_DISABLE_OLE1DDE, S_FALSE}},
        {{multi, S_OK}, {multi, S_FALSE}, {multi | COINIT_SPEED_OVER_MEMORY, S_FALSE}},
        {{single, S_OK}, {multi, RPC_E_CHANGED_MODE}, {single, S_FALSE}},
        {{multi, S_OK}, {single, RPC_E_CHANGED_MODE}, {multi, S_FALSE}},
    };
    for (auto const& run : runs) {
        onFreshThread([&] {
            int entries = 0;
            for (auto const& step : run) {
                HRESULT const result = CoInitializeEx(nullptr, step.flags);
                EXPECT_EQ(result, step.expected) << "flags " << step.flags;
                if (SUCCEEDED(result)) ++entries;
            }
            for (; entries > 1; --entries) {
                CoUninitialize();
                EXPECT_EQ(apartmentNow().result, S_OK) << entries - 1 << " entries are left";
            }
            CoUninitialize();
            EXPECT_EQ(apartmentNow().result, CO_E_NOTINITIALIZED);
        });
    }
}

TEST(Apartments, LeavingTooOftenDoesNoHarm) {
    onFreshThread([] {
        for (int time = 0; time < 3; ++time) CoUninitialize();
        EXPECT_EQ(CoInitializeEx(nullptr, multi), S_OK);
        CoUninitialize();
        CoUninitialize();
        EXPECT_EQ(CoInitializeEx(nullptr, single), S_OK);
        CoUninitialize();
    });
}

TEST(Apartments, TypeTellsWhereTheThreadIs) {
    onFreshThread([] {
        Seen seen = apartmentNow();
        EXPECT_EQ(seen.result, CO_E_NOTINITIALIZED);
        EXPECT_EQ(seen.type, APTTYPE_CURRENT);

        ApartmentStay const main(single);
        EXPECT_EQ(apartmentNow().type, APTTYPE_MAINSTA);
        onFreshThread([] {
            EXPECT_EQ(apartmentNow().result, CO_E_NOTINITIALIZED);
            ApartmentStay const second(single);
            EXPECT_EQ(apartmentNow().type, APTTYPE_STA);
        });
        onFreshThread([] {
            ApartmentStay const shared(multi);
            Seen const own = apartmentNow();
            EXPECT_EQ(own.type, APTTYPE_MTA);
            EXPECT_EQ(own.qualifier, APTTYPEQUALIFIER_NONE);
            onFreshThread([] {
                Seen const guest = apartmentNow();
                EXPECT_EQ(guest.result, S_OK);
                EXPECT_EQ(guest.type, APTTYPE_MTA);
                EXPECT_EQ(guest.qualifier, APTTYPEQUALIFIER_IMPLICIT_MTA);
                // A guest may still enter an apartment of its own.
                EXPECT_EQ(ApartmentStay(single).result(), S_OK);
            });
        });
    });
}

TEST(Apartments, TypeNeedsBothPointers) {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    EXPECT_EQ(CoGetApartmentType(nullptr, &qualifier), E_INVALIDARG);
    EXPECT_EQ(CoGetApartmentType(&type, nullptr), E_INVALIDARG);
}

TEST(Apartments, ClassesNeedAnApartment) {
    onFreshThread([] {
        auto* object = reinterpret_cast<IUnknown*>(1);
        EXPECT_EQ(CoCreateInstance(plainClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                   reinterpret_cast<void**>(&object)),
                  CO_E_NOTINITIALIZED);
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(CoGetClassObject(plainClass, CLSCTX_INPROC_SERVER, nullptr, IID_IUnknown,
                                   reinterpret_cast<void**>(&object)),
                  CO_E_NOTINITIALIZED);
    });
}

}  // namespace
