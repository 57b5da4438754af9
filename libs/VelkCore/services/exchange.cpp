#include "host/exchange.h"

#include <atomic>

bool mzThreadSafeExchangeInt(int* target, int expected, int desired) {
    return target && std::atomic_ref(*target).compare_exchange_strong(expected, desired);
}
