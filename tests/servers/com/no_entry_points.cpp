/// A module without the entry points of a class module.
#include "servers/com/exports.h"

VELK_TEST_EXPORT int somethingElse() {
    return 7;
}
