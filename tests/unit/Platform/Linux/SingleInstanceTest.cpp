#include "Platform/Application.h"
#include "Platform/Linux/InstanceClaim.h"
#include "Platform/Linux/X11/DisplayName.h"
#include "support/EventLoop.h"
#include "support/TemporaryFolder.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <map>
#include <thread>

#include <unistd.h>

using namespace std::chrono_literals;
using Platform::SingleInstance;

namespace {

/// An environment variable that has its old value again when the test ends.
class Variable {
public:
    explicit Variable(const char* name)
        : m_name(name)
        , m_wasSet(qEnvironmentVariableIsSet(name))
        , m_before(qgetenv(name))
    {
    }
    ~Variable()
    {
        if (m_wasSet)
            qputenv(m_name, m_before);
        else
            qunsetenv(m_name);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

    void set(const std::string& value) const { qputenv(m_name, QByteArray::fromStdString(value)); }
    void unset() const { qunsetenv(m_name); }

private:
    const char* m_name;
    bool m_wasSet;
    QByteArray m_before;
};

class SingleInstanceTest : public testing::Test {
protected:
    SingleInstanceTest()
    {
        runtimeVariable.set(runtime.path());
        temporaryVariable.set(temporary.path());
        display.set(":4711");
    }

    static std::string name(const char* desktop)
    {
        return "tamrik-" + std::to_string(getuid()) + '-' + desktop;
    }

    Variable runtimeVariable{"XDG_RUNTIME_DIR"};
    Variable temporaryVariable{"TMPDIR"};
    Variable display{"DISPLAY"};
    TemporaryFolder runtime;
    TemporaryFolder temporary;
};

} // namespace

TEST_F(SingleInstanceTest, FurtherStartsAreToldFromTheEventLoopAlsoThoseBefore)
{
    SingleInstance instance;
    ASSERT_EQ(instance.role(), SingleInstance::Role::First);
    std::vector<InstanceClaim::Role> roles(3, InstanceClaim::Role::Unanswered);
    std::vector<std::thread> starts;
    for (auto& role : roles) {
        starts.emplace_back([this, &role] {
            role = InstanceClaim({runtime / name(":4711.0")}, getuid(), 10s).role();
        });
    }
    int shown = 0;
    instance.onStartedAgain([&shown] { ++shown; });
    EXPECT_TRUE(runUntil([&shown] { return shown == 3; }));
    for (std::thread& start : starts)
        start.join();
    for (const auto role : roles)
        EXPECT_EQ(role, InstanceClaim::Role::HandedOver);
}

TEST_F(SingleInstanceTest, EachDesktopHasItsOwn)
{
    const SingleInstance one;
    display.set(":4712");
    const SingleInstance two;
    EXPECT_EQ(one.role(), SingleInstance::Role::First);
    EXPECT_EQ(two.role(), SingleInstance::Role::First);
    EXPECT_EQ(runtime.names(), (std::vector{name(":4711.0"), name(":4712.0")}));
}

TEST_F(SingleInstanceTest, WithoutARuntimeFolderItIsAmongTheTemporaryFiles)
{
    for (const std::string& none : {std::string(), runtime / "missing", std::string("relative")}) {
        runtimeVariable.set(none);
        const SingleInstance instance;
        EXPECT_EQ(instance.role(), SingleInstance::Role::First);
        EXPECT_EQ(temporary.names(), std::vector{name(":4711.0")});
    }
    EXPECT_TRUE(runtime.names().empty());
}

TEST_F(SingleInstanceTest, ADisplaysSpellingsAreOneDesktop)
{
    const std::map<const char*, const char*> names = {
        {":0", ":0.0"},   {":0.0", ":0.0"}, {"unix:0", ":0.0"},
        {":0.1", ":0.1"}, {":10", ":10.0"}, {"ana.example:10", "ana.example:10.0"},
        {"nonsense", ""},
    };
    for (const auto& [spelling, expected] : names) {
        display.set(spelling);
        EXPECT_EQ(X11::displayName(), QLatin1String(expected)) << spelling;
    }
    display.unset();
    EXPECT_EQ(X11::displayName(), QString());
}
