#include "module/qt_version.h"

#include <cstdio>

#include <qglobal.h>

namespace velk::adapter {

bool canUseQt(char const* version) noexcept {
    int major = 0;
    int minor = 0;
    return std::sscanf(version, "%d.%d", &major, &minor) == 2 && major == QT_VERSION_MAJOR &&
           minor >= QT_VERSION_MINOR;
}

}  // namespace velk::adapter
