/// The calls of the layer that programs make most.
#pragma once

#include <span>

#include <windows.h>

namespace velk::test {

/// One call, which gives back what it makes.
struct CommonCall {
    char const* name;
    HRESULT (*run)();
    /// Brings about what the call changes; null when it changes nothing.
    void (*prepare)() = nullptr;
};

std::span<CommonCall const> commonCalls();

/// Registers what the calls look for, once for all processes.
void installForCalls();

}  // namespace velk::test
