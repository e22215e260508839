#include "Platform/LoginItem.h"

#include "support/ConfigFolder.h"

#include <QCoreApplication>
#include <QFile>

#include <gtest/gtest.h>

namespace {

constexpr const char* entryFile = "autostart/tamrik.desktop";

class LoginItemTest : public testing::Test {
protected:
    QByteArray contents() const { return config.contents(entryFile); }

    void append(const QByteArray& line) const { config.write(entryFile, contents() + line); }

    ConfigFolder config;
};

} // namespace

TEST_F(LoginItemTest, EnablingWritesAnAutostartEntryForThisProgram)
{
    EXPECT_FALSE(Platform::loginItemEnabled());
    ASSERT_FALSE(Platform::enableLoginItem());
    EXPECT_TRUE(Platform::loginItemEnabled());
    const QByteArray text = contents();
    EXPECT_TRUE(text.startsWith("[Desktop Entry]\nType=Application\n"));
    EXPECT_TRUE(
        text.contains("\nExec=\"" + QCoreApplication::applicationFilePath().toUtf8() + "\"\n"))
        << text.constData();
}

TEST_F(LoginItemTest, DisablingRemovesIt)
{
    ASSERT_FALSE(Platform::enableLoginItem());
    ASSERT_FALSE(Platform::disableLoginItem());
    EXPECT_FALSE(Platform::loginItemEnabled());
    EXPECT_FALSE(QFile::exists(config.path(entryFile)));
}

TEST_F(LoginItemTest, AnEntryThatTheDesktopSwitchedOffIsNotEnabled)
{
    for (const char* line : {"Hidden=true\n", "X-GNOME-Autostart-enabled = false\n"}) {
        ASSERT_FALSE(Platform::enableLoginItem());
        append(line);
        EXPECT_FALSE(Platform::loginItemEnabled()) << line;
        ASSERT_FALSE(Platform::enableLoginItem());
        EXPECT_TRUE(Platform::loginItemEnabled()) << line;
    }
}

TEST_F(LoginItemTest, AnEntryOfAProgramThatWasMovedIsNotEnabled)
{
    append("[Desktop Entry]\nType=Application\nName=Tamrik\nExec=\"/old/place/tamrik\"\n");
    EXPECT_FALSE(Platform::loginItemEnabled());
    ASSERT_FALSE(Platform::enableLoginItem());
    EXPECT_TRUE(Platform::loginItemEnabled());
    EXPECT_FALSE(contents().contains("/old/place"));
}

TEST_F(LoginItemTest, AFailureSaysWhy)
{
    QFile inTheWay(config.path("autostart"));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    const PossibleFailure enabled = Platform::enableLoginItem();
    ASSERT_TRUE(enabled);
    EXPECT_FALSE(enabled->message.empty());
    const PossibleFailure disabled = Platform::disableLoginItem();
    ASSERT_TRUE(disabled);
    EXPECT_FALSE(disabled->message.empty());
}
