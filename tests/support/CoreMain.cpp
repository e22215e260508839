#include "support/PrivateHome.h"
#include "support/TestLog.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const PrivateHome home;
    QCoreApplication app(argc, argv);
    TestLog::install();
    return RUN_ALL_TESTS();
}
