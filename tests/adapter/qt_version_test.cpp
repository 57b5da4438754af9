#include "module/qt_version.h"

#include <gtest/gtest.h>

#include <QString>

namespace {

TEST(QtVersion, MustBeOfTheMajorVersionAndNoOlder) {
    auto const isUsable = [](int newerMajor, int newerMinor) {
        auto const version = QStringLiteral("%1.%2.0");
        return velk::adapter::canUseQt(
            version.arg(QT_VERSION_MAJOR + newerMajor).arg(QT_VERSION_MINOR + newerMinor).toUtf8());
    };
    EXPECT_TRUE(velk::adapter::canUseQt(qVersion()));
    EXPECT_TRUE(isUsable(0, 0) && isUsable(0, 1));
    EXPECT_FALSE(isUsable(0, -1) || isUsable(1, 0) || isUsable(-1, 0));
    for (char const* none : {"5", "", "five.fifteen"})
        EXPECT_FALSE(velk::adapter::canUseQt(none)) << none;
}

}  // namespace
