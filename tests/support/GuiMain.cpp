#include "support/PrivateHome.h"
#include "support/TestLog.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const PrivateHome home;
    QGuiApplication app(argc, argv);
    TestLog::install();
    return RUN_ALL_TESTS();
}
