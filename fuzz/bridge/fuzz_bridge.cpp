// Uses the module as a client of bad intent does, as any bytes say.

#include <cstddef>
#include <cstdint>

#include "hostile/client.h"
#include "support/leaks.h"

// The module keeps its class objects by pointers that the search for lost
// memory cannot read. What the counters count is looked for after each program.
extern "C" char const* __asan_default_options() {
    return "detect_leaks=0";
}

static velk::test::hostile::Client* client;

// It never ends: the sanitizers look for what is lost before the system does.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    velk::test::addNativeLeakChecks();
    client = new velk::test::hostile::Client(true);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const left = client->run({data, size});
    if (!left.empty()) velk::test::hostile::complain("left behind", left);
    return 0;
}
