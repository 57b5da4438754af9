#include "host/sleep.h"

#include <chrono>
#include <thread>

void mzSleep(int milliseconds) {
    if (milliseconds > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    } else {
        std::this_thread::yield();
    }
}
