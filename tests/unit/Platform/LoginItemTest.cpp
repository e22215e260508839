#include "Platform/LoginItem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class LoginItemTest : public testing::Test {
protected:
    void SetUp() override
    {
        oldConfig = qgetenv("XDG_CONFIG_HOME");
        qputenv("XDG_CONFIG_HOME", folder.path().toLocal8Bit());
    }

    void TearDown() override { qputenv("XDG_CONFIG_HOME", oldConfig); }

    QString entry() const { return folder.filePath(QStringLiteral("autostart/tamrik.desktop")); }

    QByteArray contents() const
    {
        QFile file(entry());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void append(const QByteArray& line)
    {
        QFile file(entry());
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write(line);
    }

    QTemporaryDir folder;
    QByteArray oldConfig;
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
    EXPECT_FALSE(QFile::exists(entry()));
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
    ASSERT_TRUE(QDir(folder.path()).mkpath(QStringLiteral("autostart")));
    append("[Desktop Entry]\nType=Application\nName=Tamrik\nExec=\"/old/place/tamrik\"\n");
    EXPECT_FALSE(Platform::loginItemEnabled());
    ASSERT_FALSE(Platform::enableLoginItem());
    EXPECT_TRUE(Platform::loginItemEnabled());
    EXPECT_FALSE(contents().contains("/old/place"));
}

TEST_F(LoginItemTest, AFailureSaysWhy)
{
    QFile inTheWay(folder.filePath(QStringLiteral("autostart")));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    const PossibleFailure enabled = Platform::enableLoginItem();
    ASSERT_TRUE(enabled);
    EXPECT_FALSE(enabled->message.empty());
    const PossibleFailure disabled = Platform::disableLoginItem();
    ASSERT_TRUE(disabled);
    EXPECT_FALSE(disabled->message.empty());
}
