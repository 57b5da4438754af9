/// Objects of both sides that do what the program of their caller says.
#pragma once

#include <atomic>
#include <string>

#include "hostile/world.h"

namespace velk::test::hostile {

com::ComPtr<IUnknown> nativePuppet();
mzComVariantC hostPuppet();

struct Puppet {
    /// How many are alive.
    static inline std::atomic<int> alive{0};
    /// The module of the tests' server.
    static std::basic_string<OLECHAR> serverPath();
};

}  // namespace velk::test::hostile
