#include "support/loaded_module.h"

#include <QString>

namespace velk::test {

std::basic_string<OLECHAR> modulePath() {
    QString const path = QString::fromUtf8(VELK_TEST_MODULE);
    return {reinterpret_cast<OLECHAR const*>(path.utf16()), static_cast<std::size_t>(path.size())};
}

}  // namespace velk::test
