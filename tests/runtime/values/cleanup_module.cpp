#include "cleanup_module.h"

#include "host/cleanup.h"

namespace {

std::string* target = nullptr;

void cleanup() {
    *target += "module ";
}

}  // namespace

void registerModuleCleanup(std::string& log) {
    target = &log;
    mzRegisterGlobalCleanup(&cleanup, 5);
}

void* moduleAddress() {
    return reinterpret_cast<void*>(&cleanup);
}
