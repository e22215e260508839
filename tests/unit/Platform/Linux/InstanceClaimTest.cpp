#include "Platform/Linux/InstanceClaim.h"

#include "Platform/Linux/PrivateFolder.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;
using Role = InstanceClaim::Role;

namespace {

constexpr auto patience = 10s;

/// Answers `starts` further starts; how often the program was to show itself.
int answer(const InstanceClaim& claim, int starts)
{
    int shown = 0;
    for (int i = 0; i < starts; ++i) {
        pollfd entry = {claim.listener(), POLLIN, 0};
        if (poll(&entry, 1, 10'000) != 1)
            break;
        EXPECT_TRUE(claim.answerOne([&shown] { ++shown; }));
    }
    return shown;
}

/// Another process. It is killed when this object goes.
class Forked {
public:
    template <typename Work>
    explicit Forked(Work work)
        : m_id(fork())
    {
        if (m_id == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL); // stays not behind a test that fails badly
            _exit(work());
        }
    }
    ~Forked()
    {
        if (m_id > 0 && !m_ended)
            kill();
    }
    Forked(const Forked&) = delete;
    Forked& operator=(const Forked&) = delete;

    void send(int signal) const { ::kill(m_id, signal); }
    void kill()
    {
        send(SIGKILL);
        wait();
    }
    /// Its exit status; -1 when a signal ended it.
    int wait()
    {
        int status = 0;
        waitpid(m_id, &status, 0);
        m_ended = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    void waitUntilStopped() const
    {
        int status = 0;
        waitpid(m_id, &status, WUNTRACED);
    }

private:
    pid_t m_id;
    bool m_ended = false;
};

/// What lets processes wait for each other: each end can be waited at until the other is closed.
class Gate {
public:
    Gate()
    {
        if (pipe2(m_ends, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
    }
    ~Gate()
    {
        open();
        close(m_ends[0]);
    }
    /// For every process that has it: passed once all of them have opened it.
    void open()
    {
        if (m_ends[1] >= 0)
            close(std::exchange(m_ends[1], -1));
    }
    void pass()
    {
        open();
        char unused = 0;
        (void)!read(m_ends[0], &unused, 1);
    }

private:
    int m_ends[2] = {-1, -1};
};

class InstanceClaimTest : public testing::Test {
protected:
    std::string place() const { return folder / "place"; }

    InstanceClaim claim(std::chrono::milliseconds limit = patience) const
    {
        return InstanceClaim({place()}, getuid(), limit);
    }

    /// A process that has the claim and then does nothing.
    std::unique_ptr<Forked> idleInstance() const
    {
        Gate claimed;
        auto process = std::make_unique<Forked>([&] {
            const InstanceClaim claim = this->claim();
            claimed.open();
            for (;;)
                pause();
            return 0;
        });
        claimed.pass();
        return process;
    }

    /// A further start, from a thread: its role once the thread has ended.
    std::thread further(std::optional<Role>& role) const
    {
        return std::thread([this, &role] { role = claim().role(); });
    }

    /// A socket at the place's address, connected to it or listening at it.
    FileDescriptor rawSocket(bool listening) const
    {
        const FileDescriptor opened = PrivateFolder::open({place()}, getuid());
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const std::string path = PrivateFolder::pathIn(opened, "socket");
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        FileDescriptor file(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const auto* generic = reinterpret_cast<const sockaddr*>(&address);
        if (listening) {
            EXPECT_EQ(bind(file.get(), generic, sizeof address), 0);
            EXPECT_EQ(listen(file.get(), 5), 0);
        } else {
            EXPECT_EQ(connect(file.get(), generic, sizeof address), 0);
        }
        return file;
    }

    TemporaryFolder folder;
};

std::size_t openFiles()
{
    using std::filesystem::directory_iterator;
    return static_cast<std::size_t>(
        std::distance(directory_iterator("/proc/self/fd"), directory_iterator()));
}

} // namespace

TEST_F(InstanceClaimTest, AFurtherStartIsAnsweredAndShowsTheFirst)
{
    const InstanceClaim first = claim();
    ASSERT_EQ(first.role(), Role::First);
    for (int i = 0; i < 3; ++i) {
        std::optional<Role> role;
        std::thread start = further(role);
        EXPECT_EQ(answer(first, 1), 1);
        start.join();
        EXPECT_EQ(role, Role::HandedOver);
    }
}

TEST_F(InstanceClaimTest, TheClaimIsFreeWhenItsHolderGoes)
{
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(claim().role(), Role::First);
}

TEST_F(InstanceClaimTest, AKilledInstanceLocksNobodyOut)
{
    const auto process = idleInstance();
    process->kill();
    ASSERT_TRUE(std::filesystem::exists(place() + "/socket")); // it is still there
    const InstanceClaim next = claim(0ms);
    ASSERT_EQ(next.role(), Role::First);
    std::optional<Role> role;
    std::thread start = further(role);
    EXPECT_EQ(answer(next, 1), 1);
    start.join();
    EXPECT_EQ(role, Role::HandedOver);
}

TEST_F(InstanceClaimTest, AProgramThatTheInstanceStartedDoesNotKeepTheClaim)
{
    auto first = std::make_unique<InstanceClaim>(claim());
    ASSERT_EQ(first->role(), Role::First);
    // Its output only appears once it has replaced this process's image and closed what that does.
    ChildProcess child({{"sh", "-c", "touch '" + (folder / "runs") + "'; exec sleep 60"}, {}});
    while (!std::filesystem::exists(folder / "runs"))
        std::this_thread::yield();
    first.reset();
    EXPECT_EQ(claim(0ms).role(), Role::First);
}

TEST_F(InstanceClaimTest, AnInstanceThatHangsIsGivenUp)
{
    const auto process = idleInstance();
    process->send(SIGSTOP);
    process->waitUntilStopped();
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(claim(300ms).role(), Role::Unanswered);
    const auto taken = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(taken, 300ms);
    EXPECT_LT(taken, 5s);
}

TEST_F(InstanceClaimTest, AnInstanceWhoseQueueIsFullIsGivenUpToo)
{
    const FileDescriptor opened = PrivateFolder::open({place()}, getuid());
    ASSERT_EQ(flock(opened.get(), LOCK_EX), 0);
    const FileDescriptor listener = rawSocket(true);
    ASSERT_EQ(listen(listener.get(), 0), 0);
    const FileDescriptor waiting = rawSocket(false);
    EXPECT_EQ(claim(50ms).role(), Role::Unanswered);
}

TEST_F(InstanceClaimTest, AStartThatIsLeftWithoutAnAnswerAsksAgain)
{
    const FileDescriptor opened = PrivateFolder::open({place()}, getuid());
    ASSERT_EQ(flock(opened.get(), LOCK_EX), 0);
    const FileDescriptor listener = rawSocket(true);
    std::optional<Role> role;
    std::thread start = further(role);
    FileDescriptor(accept(listener.get(), nullptr, nullptr)); // and close it
    const FileDescriptor again(accept(listener.get(), nullptr, nullptr));
    EXPECT_EQ(send(again.get(), "!", 1, MSG_NOSIGNAL), 1);
    start.join();
    EXPECT_EQ(role, Role::HandedOver);
}

TEST_F(InstanceClaimTest, AStartWhileTheInstanceEndsTakesItsPlace)
{
    std::optional<Role> role;
    std::thread start;
    {
        const FileDescriptor opened = PrivateFolder::open({place()}, getuid());
        ASSERT_EQ(flock(opened.get(), LOCK_EX), 0);
        const FileDescriptor listener = rawSocket(true);
        start = further(role);
        FileDescriptor(accept(listener.get(), nullptr, nullptr));
    }
    start.join();
    EXPECT_EQ(role, Role::First);
}

TEST_F(InstanceClaimTest, OfStartsAtTheSameMomentOneIsFirstAndAnswersAllOthers)
{
    constexpr int starts = 8;
    for (int round = 0; round < 20; ++round) {
        if (round % 2 == 1)
            idleInstance()->kill();
        std::vector<std::unique_ptr<Forked>> processes;
        Gate gate;
        for (int i = 0; i < starts; ++i) {
            processes.push_back(std::make_unique<Forked>([&] {
                gate.pass();
                const InstanceClaim claim = this->claim();
                if (claim.role() == Role::First && answer(claim, starts - 1) != starts - 1)
                    return 99;
                return static_cast<int>(claim.role());
            }));
        }
        gate.open();
        std::vector<int> roles(3);
        for (const auto& process : processes) {
            const int status = process->wait();
            ASSERT_GE(status, 0);
            ASSERT_LT(status, 3);
            ++roles.at(static_cast<std::size_t>(status));
        }
        EXPECT_EQ(roles.at(static_cast<int>(Role::First)), 1);
        EXPECT_EQ(roles.at(static_cast<int>(Role::HandedOver)), starts - 1);
    }
}

TEST_F(InstanceClaimTest, AStartThatHasGivenUpShowsNothing)
{
    const InstanceClaim first = claim();
    rawSocket(false); // connects and goes
    EXPECT_EQ(answer(first, 1), 0);
}

TEST_F(InstanceClaimTest, WithoutADescriptorAStartHasToWaitAndIsNotLost)
{
    const InstanceClaim first = claim();
    const FileDescriptor waiting = rawSocket(false);
    ASSERT_TRUE(waiting);
    std::vector<FileDescriptor> all;
    for (;;) {
        FileDescriptor one(dup(waiting.get()));
        if (!one)
            break;
        all.push_back(std::move(one));
    }
    int shown = 0;
    const auto answered = [&] { return first.answerOne([&shown] { ++shown; }); };
    EXPECT_FALSE(answered());
    all.clear();
    EXPECT_TRUE(answered());
    EXPECT_EQ(shown, 1);
}

TEST_F(InstanceClaimTest, ClientsThatTalkOrKeepSilentNeitherBlockNorStay)
{
    const InstanceClaim first = claim();
    const std::size_t filesBefore = openFiles();
    {
        std::vector<FileDescriptor> clients;
        const std::string garbage(100'000, 'x');
        for (int i = 0; i < 20; ++i) {
            clients.push_back(rawSocket(false));
            if (i % 2 == 1) {
                EXPECT_GT(send(clients.back().get(), garbage.data(), garbage.size(),
                               MSG_DONTWAIT | MSG_NOSIGNAL),
                          0);
            }
        }
        answer(first, 20);
        EXPECT_EQ(openFiles(), filesBefore + 20); // the clients' own ends
        std::optional<Role> role;
        std::thread start = further(role);
        EXPECT_EQ(answer(first, 1), 1);
        start.join();
        EXPECT_EQ(role, Role::HandedOver);
    }
    EXPECT_EQ(openFiles(), filesBefore);
}

TEST_F(InstanceClaimTest, WithoutAPlaceTheProgramRunsAllTheSame)
{
    const InstanceClaim homeless({folder / "missing/place"}, getuid(), patience);
    EXPECT_EQ(homeless.role(), Role::First);
    EXPECT_LT(homeless.listener(), 0);
}

TEST_F(InstanceClaimTest, PeersAreToldByTheirUser)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    const FileDescriptor one(ends[0]);
    const FileDescriptor other(ends[1]);
    EXPECT_TRUE(InstanceClaim::isPeer(one, getuid()));
    EXPECT_FALSE(InstanceClaim::isPeer(one, getuid() + 1));
}

TEST_F(InstanceClaimTest, AFolderThatIsNotTheUsersAloneIsPassedOver)
{
    const std::string made = folder / "made";
    const auto opens = [](const std::string& path, uid_t user = getuid()) {
        return static_cast<bool>(PrivateFolder::open({path}, user));
    };
    EXPECT_TRUE(opens(made));
    struct stat status = {};
    ASSERT_EQ(stat(made.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700u);

    EXPECT_FALSE(opens(made, getuid() + 1));
    std::filesystem::create_symlink(made, folder / "link");
    EXPECT_FALSE(opens(folder / "link"));
    writeFile(folder / "file", "");
    EXPECT_FALSE(opens(folder / "file"));
    ASSERT_EQ(chmod(made.c_str(), 0710), 0);
    EXPECT_FALSE(opens(made));
    // The next one is taken.
    EXPECT_TRUE(PrivateFolder::open({made, folder / "second"}, getuid()));
    EXPECT_TRUE(std::filesystem::exists(folder / "second"));
}
