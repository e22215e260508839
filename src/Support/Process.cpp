#include "Support/Process.h"

#include <csignal>

#include <fcntl.h>

namespace {

constexpr int quitGraceMilliseconds = 3000;

} // namespace

Process::Process(QObject* parent)
    : QObject(parent)
{
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
    m_process.setInputChannelMode(QProcess::ForwardedInputChannel);
}

Process::~Process()
{
    m_process.disconnect(this);
    if (m_process.state() != QProcess::NotRunning)
        m_process.waitForFinished(quitGraceMilliseconds);
}

PossibleFailure Process::start(const Command& command, std::function<void()> ended)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (auto it = command.environment.begin(); it != command.environment.end(); ++it)
        environment.insert(it.key(), it.value());
    m_process.setProcessEnvironment(environment);

    if (command.keepsErrors)
        m_process.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    if (command.sharedDescriptor >= 0) {
        // In the child alone, or all other children would get it too.
        m_process.setChildProcessModifier(
            [shared = command.sharedDescriptor] { fcntl(shared, F_SETFD, 0); });
    }

    m_process.start(command.program, command.arguments);
    // Only waits until the child has replaced its image, which takes a millisecond or two.
    if (!m_process.waitForStarted(-1))
        return Failure{m_process.errorString().toStdString()};
    connect(
        &m_process, &QProcess::finished, this, [ended = std::move(ended)] { ended(); },
        Qt::QueuedConnection);
    return std::nullopt;
}

void Process::interrupt()
{
    if (const qint64 pid = m_process.processId(); pid > 0)
        kill(static_cast<pid_t>(pid), SIGINT);
}

QByteArray Process::errors()
{
    return m_process.readAllStandardError();
}
