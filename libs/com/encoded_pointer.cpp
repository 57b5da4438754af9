#include "com/encoded_pointer.h"

#include <bit>
#include <chrono>
#include <random>

namespace velk::com {
namespace {

constexpr int rotation = 17;

// Addresses never reach the upper bits, so a secret with the top bit set
// keeps every encoded pointer apart from 0, the form of null.
constexpr std::uintptr_t topBit = std::uintptr_t{1} << (sizeof(std::uintptr_t) * 8 - 1);

std::uintptr_t makeSecret() noexcept {
    std::uint64_t seed;
    try {
        std::random_device device;
        seed = (static_cast<std::uint64_t>(device()) << 32) | device();
    } catch (...) {
        // Without a source of randomness the clock and the place where the
        // code was loaded still differ from process to process.
        seed =
            static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
        seed ^= reinterpret_cast<std::uintptr_t>(&makeSecret) * 0x9E3779B97F4A7C15U;
    }
    return static_cast<std::uintptr_t>(seed) | topBit;
}

std::uintptr_t secret() noexcept {
    static std::uintptr_t const value = makeSecret();
    return value;
}

}  // namespace

std::uintptr_t encodePointer(void* pointer) noexcept {
    if (pointer == nullptr) return 0;
    return std::rotl(reinterpret_cast<std::uintptr_t>(pointer) ^ secret(), rotation);
}

void* decodePointer(std::uintptr_t encoded) noexcept {
    if (encoded == 0) return nullptr;
    return reinterpret_cast<void*>(std::rotr(encoded, rotation) ^ secret());
}

}  // namespace velk::com
