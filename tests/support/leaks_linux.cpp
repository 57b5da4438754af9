#include <velk_live_counts.h>

#include "support/leaks.h"

namespace velk::test {

void addNativeLeakChecks() {
    static constexpr struct {
        int kind;
        char const* name;
    } kinds[] = {{VELK_LIVE_BSTR, "BSTRs"},
                 {VELK_LIVE_SAFEARRAY, "SAFEARRAYs"},
                 {VELK_LIVE_TASK_MEMORY, "task memory blocks"},
                 {VELK_LIVE_TYPE_LIBRARY, "type libraries"},
                 {VELK_LIVE_DESCRIPTION, "type descriptions"},
                 {VELK_LIVE_REGISTRY_KEY, "registry keys"},
                 {VELK_LIVE_RECORD, "records"},
                 {VELK_LIVE_COMPOUND_FILE, "compound files"}};
    for (auto const& entry : kinds) {
        addLeakCheck(entry.name, [kind = entry.kind] { return VelkLiveCount(kind); });
    }
}

}  // namespace velk::test
