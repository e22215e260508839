#include "Platform/Defaults.h"

#include "support/ConfigFolder.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr const char* storeFile = "tamrik/preferences.json";
constexpr const char* asideFile = "tamrik/preferences.json.unreadable";

class DefaultsTest : public testing::Test {
protected:
    QByteArray stored() const { return config.contents(storeFile); }
    QByteArray keptAside() const { return config.contents(asideFile); }
    void overwrite(const QByteArray& bytes) const { config.write(storeFile, bytes); }

    /// Runs `work` in a child process, which has a store of its own.
    static pid_t inChild(const std::function<void()>& work)
    {
        const pid_t child = fork();
        if (child == 0) {
            work();
            _exit(0);
        }
        return child;
    }

    ConfigFolder config;
};

} // namespace

TEST_F(DefaultsTest, ValuesKeepTheirTypes)
{
    {
        const auto store = Platform::openDefaults();
        store->setValue(QStringLiteral("text"), QStringLiteral("1"));
        store->setValue(QStringLiteral("whole"), 4294967295LL);
        store->setValue(QStringLiteral("real"), 0.1);
        store->setValue(QStringLiteral("flag"), true);
        store->sync();
        EXPECT_EQ(store->status(), QSettings::NoError);
    }
    const auto store = Platform::openDefaults();
    EXPECT_EQ(store->value(QStringLiteral("text")).typeId(), QMetaType::QString);
    EXPECT_EQ(store->value(QStringLiteral("whole")).typeId(), QMetaType::LongLong);
    EXPECT_EQ(store->value(QStringLiteral("whole")).toLongLong(), 4294967295LL);
    EXPECT_EQ(store->value(QStringLiteral("real")).typeId(), QMetaType::Double);
    EXPECT_EQ(store->value(QStringLiteral("real")).toDouble(), 0.1);
    EXPECT_EQ(store->value(QStringLiteral("flag")).typeId(), QMetaType::Bool);
}

TEST_F(DefaultsTest, KeysOfOthersStay)
{
    overwrite(R"({"theirs": {"nested": [1, "two", null]}, "ours": 1})");
    const auto store = Platform::openDefaults();
    store->setValue(QStringLiteral("ours"), 2);
    store->sync();
    const QJsonObject written = QJsonDocument::fromJson(stored()).object();
    EXPECT_EQ(
        written,
        QJsonDocument::fromJson(R"({"theirs": {"nested": [1, "two", null]}, "ours": 2})").object());
}

TEST_F(DefaultsTest, AnUnreadableStoreIsKeptAsideAndReadsAsEmpty)
{
    const QByteArray damaged = R"({"chipPosition": "topLeft", )";
    overwrite(damaged);
    const auto store = Platform::openDefaults();
    EXPECT_TRUE(store->allKeys().isEmpty());
    store->setValue(QStringLiteral("recordMic"), true);
    store->sync();
    EXPECT_EQ(keptAside(), damaged);
    EXPECT_EQ(QJsonDocument::fromJson(stored()).object(),
              QJsonDocument::fromJson(R"({"recordMic": true})").object());
}

TEST_F(DefaultsTest, AStoreThatIsNoObjectIsKeptAsideToo)
{
    overwrite("[1, 2]");
    EXPECT_TRUE(Platform::openDefaults()->allKeys().isEmpty());
    EXPECT_EQ(keptAside(), "[1, 2]");
}

TEST_F(DefaultsTest, ASecondDamageLeavesTheFirstOnesCopyAlone)
{
    overwrite("{\"first\": ");
    (void)Platform::openDefaults()->allKeys();
    (void)Platform::openDefaults()->allKeys();
    overwrite("{\"second\": ");
    (void)Platform::openDefaults()->allKeys();
    EXPECT_EQ(keptAside(), "{\"first\": ");
    EXPECT_EQ(config.contents("tamrik/preferences.json.unreadable-2"), "{\"second\": ");
    EXPECT_FALSE(QFile::exists(config.path("tamrik/preferences.json.unreadable-3")));
}

TEST_F(DefaultsTest, TwoWritersDoNotLoseEachOthersKeys)
{
    constexpr int rounds = 50;
    const auto write = [](const char* key) {
        const auto store = Platform::openDefaults();
        for (int i = 1; i <= rounds; ++i) {
            store->setValue(QLatin1String(key), i);
            store->sync();
        }
    };
    const pid_t first = inChild([&] { write("first"); });
    const pid_t second = inChild([&] { write("second"); });
    for (const pid_t child : {first, second}) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    const auto store = Platform::openDefaults();
    EXPECT_EQ(store->value(QStringLiteral("first")).toInt(), rounds);
    EXPECT_EQ(store->value(QStringLiteral("second")).toInt(), rounds);
}

TEST_F(DefaultsTest, AWriterThatIsKilledLeavesTheOldOrTheNewFileWhole)
{
    Platform::openDefaults()->setValue(QStringLiteral("value"), 0);
    for (int round = 0; round < 20; ++round) {
        const pid_t child = inChild([] {
            const auto store = Platform::openDefaults();
            for (int i = 1;; ++i) {
                store->setValue(QStringLiteral("value"), i);
                store->sync();
            }
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(2 + round));
        ASSERT_EQ(kill(child, SIGKILL), 0);
        ASSERT_EQ(waitpid(child, nullptr, 0), child);
        ASSERT_TRUE(QJsonDocument::fromJson(stored()).object().contains(QStringLiteral("value")));
    }
    EXPECT_FALSE(QFile::exists(config.path(asideFile)));
}

TEST_F(DefaultsTest, ALockThatAKilledWriterLeftEmptyIsTakenAway)
{
    // Writing would wait for half a minute.
    config.write("tamrik/preferences.json.lock", {});
    (void)Platform::openDefaults();
    EXPECT_FALSE(QFile::exists(config.path("tamrik/preferences.json.lock")));
}

TEST_F(DefaultsTest, ALockThatNamesItsWriterIsLeftToIt)
{
    config.write("tamrik/preferences.json.lock", "1\ninit\nhost\n");
    (void)Platform::openDefaults();
    EXPECT_TRUE(QFile::exists(config.path("tamrik/preferences.json.lock")));
}

TEST_F(DefaultsTest, AFolderThatCannotBeMadeStillReadsAndRemembers)
{
    QFile inTheWay(config.path("tamrik"));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    const auto store = Platform::openDefaults();
    store->setValue(QStringLiteral("recordMic"), true);
    store->sync();
    EXPECT_TRUE(store->value(QStringLiteral("recordMic")).toBool());
}
