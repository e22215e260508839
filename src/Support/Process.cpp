#include "Support/Process.h"

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

    m_process.start(command.program, command.arguments);
    // Only waits until the child has replaced its image, which takes a millisecond or two.
    if (!m_process.waitForStarted(-1))
        return Failure{m_process.errorString().toStdString()};
    connect(
        &m_process, &QProcess::finished, this, [ended = std::move(ended)] { ended(); },
        Qt::QueuedConnection);
    return std::nullopt;
}
