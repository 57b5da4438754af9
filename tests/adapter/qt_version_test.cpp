#include "module/qt_version.h"

#include <gtest/gtest.h>

#include <QString>

namespace {

TEST(QtVersion, MustBeOfTheMajorVersionAndNoOlder) {
    auto const version = [](int major, int minor) {
        return QStringLiteral("%1.%2.0").arg(major).arg(minor).toStdString();
    };
    struct Case {
        std::string version;
        bool isUsable;
    };
    Case const cases[] = {
        {qVersion(), true},
        {version(QT_VERSION_MAJOR, QT_VERSION_MINOR), true},
        {version(QT_VERSION_MAJOR, QT_VERSION_MINOR + 1), true},
        {version(QT_VERSION_MAJOR, QT_VERSION_MINOR - 1), false},
        {version(QT_VERSION_MAJOR + 1, QT_VERSION_MINOR), false},
        {version(QT_VERSION_MAJOR - 1, QT_VERSION_MINOR), false},
        {"5", false},
        {"", false},
        {"five.fifteen", false},
    };
    for (auto const& entry : cases) {
        EXPECT_EQ(velk::adapter::canUseQt(entry.version.c_str()), entry.isUsable) << entry.version;
    }
}

}  // namespace
