#include "support/PrivateHome.h"
#include "support/TestLog.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const PrivateHome home;
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    TestLog::install();
    // The offscreen platform has no system tray.
    TestLog::allowWarningAlways(
        QRegularExpression(QStringLiteral("No such signal .*::systemTrayWindowChanged")));
    return RUN_ALL_TESTS();
}
