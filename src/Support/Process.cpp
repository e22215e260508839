#include "Support/Process.h"

#include <csignal>
#include <utility>
#include <vector>

#include <fcntl.h>

using namespace std::chrono_literals;

namespace {

/// QProcess kills a child that is still running when it goes; so this one never goes. What the
/// child says on standard error is not lost on it as long as the program runs.
void leaveRunning(std::unique_ptr<QProcess> process)
{
    static auto& left = *new std::vector<std::unique_ptr<QProcess>>;
    left.push_back(std::move(process));
}

} // namespace

Process::Process(QObject* parent)
    : QObject(parent)
    , m_process(std::make_unique<QProcess>())
{
    m_process->setProcessChannelMode(QProcess::ForwardedChannels);
    m_process->setInputChannelMode(QProcess::ForwardedInputChannel);
}

Process::~Process()
{
    m_process->disconnect(this);
    if (waitForEnd())
        return;
    if (m_isLeftRunning) {
        leaveRunning(std::move(m_process));
    } else {
        m_process->kill();
        m_process->waitForFinished(-1);
    }
}

bool Process::waitForEnd()
{
    return m_process->state() == QProcess::NotRunning ||
           m_process->waitForFinished(static_cast<int>(std::exchange(m_grace, 0ms).count()));
}

PossibleFailure Process::start(const Command& command, std::function<void()> ended)
{
    m_isLeftRunning = command.isLeftRunning;
    m_grace = command.grace;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (auto it = command.environment.begin(); it != command.environment.end(); ++it)
        environment.insert(it.key(), it.value());
    m_process->setProcessEnvironment(environment);

    if (command.keepsErrors)
        m_process->setProcessChannelMode(QProcess::ForwardedOutputChannel);
    if (command.sharedDescriptor >= 0) {
        // In the child alone, or all other children would get it too.
        m_process->setChildProcessModifier(
            [shared = command.sharedDescriptor] { fcntl(shared, F_SETFD, 0); });
    }

    m_process->start(command.program, command.arguments);
    // Only waits until the child has replaced its image, which takes a millisecond or two.
    if (!m_process->waitForStarted(-1))
        return Failure{m_process->errorString().toStdString()};
    connect(
        m_process.get(), &QProcess::finished, this, [ended = std::move(ended)] { ended(); },
        Qt::QueuedConnection);
    return std::nullopt;
}

void Process::interrupt()
{
    if (const qint64 pid = m_process->processId(); pid > 0)
        kill(static_cast<pid_t>(pid), SIGINT);
}

QByteArray Process::errors()
{
    return m_process->readAllStandardError();
}
