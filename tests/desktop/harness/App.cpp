#include "desktop/harness/App.h"

#include "desktop/harness/VirtualDesktop.h"

#include <QtCore/QFile>

#include <csignal>
#include <cstdio>

namespace Desktop {
namespace {

QString read(const QString& path)
{
    QFile file(path);
    // A file that is not there yet is one that nothing was written to.
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

App::App(const QString& program)
{
    m_process.setProgram(program);
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setStandardOutputFile(m_folder.filePath(QStringLiteral("out")));
    m_process.setStandardErrorFile(m_folder.filePath(QStringLiteral("err")));
}

Outcome<std::unique_ptr<App>> App::start(const VirtualDesktop& desktop, const QString& program,
                                         const QStringList& arguments,
                                         const QMap<QString, QString>& extra)
{
    QProcessEnvironment environment = desktop.environment();
    for (auto it = extra.begin(); it != extra.end(); ++it)
        environment.insert(it.key(), it.value());
    return start(environment, program, arguments, desktop.home());
}

Outcome<std::unique_ptr<App>> App::start(const QProcessEnvironment& environment,
                                         const QString& program, const QStringList& arguments,
                                         const QString& workingDirectory)
{
    std::unique_ptr<App> app(new App(program));
    if (!app->m_folder.isValid())
        return Failure{app->m_folder.errorString()};
    app->m_process.setArguments(arguments);
    app->m_process.setProcessEnvironment(environment);
    app->m_process.setWorkingDirectory(workingDirectory);
    app->m_process.start();
    if (!app->m_process.waitForStarted())
        return Failure{program + QStringLiteral(" did not start: ") + app->m_process.errorString()};
    return app;
}

App::~App()
{
    if (!isRunning())
        return;
    if (const auto stopped = stop(); !stopped)
        std::fprintf(stderr, "%s\n", qUtf8Printable(stopped.error()));
}

bool App::isRunning()
{
    // Without an event loop, only waiting makes the process notice its end.
    if (m_process.state() != QProcess::NotRunning)
        m_process.waitForFinished(0);
    return m_process.state() != QProcess::NotRunning;
}

Outcome<Exit> App::waitForExit(std::chrono::milliseconds deadline)
{
    if (isRunning() && !m_process.waitForFinished(static_cast<int>(deadline.count())))
        return gaveUp(QStringLiteral("the end of ") + m_process.program(), deadline);
    return Exit{m_process.exitCode(), m_process.exitStatus() == QProcess::CrashExit};
}

Outcome<void> App::signal(int number)
{
    if (!isRunning())
        return Failure{m_process.program() + QStringLiteral(" is not running")};
    // Its number is its own as long as nobody has waited for it, which only m_process does.
    if (::kill(static_cast<pid_t>(pid()), number) != 0)
        return Failure{m_process.program() + QStringLiteral(" took no signal")};
    return {};
}

Outcome<Exit> App::stop(std::chrono::milliseconds deadline)
{
    if (const auto asked = signal(SIGTERM); !asked)
        return asked.failure();
    auto ended = waitForExit(deadline);
    if (!ended) {
        m_process.kill();
        m_process.waitForFinished();
    }
    return ended;
}

QString App::output() const
{
    return read(m_folder.filePath(QStringLiteral("out")));
}

QString App::errorOutput() const
{
    return read(m_folder.filePath(QStringLiteral("err")));
}

Outcome<void> App::awaitOutput(const QString& text, std::chrono::milliseconds deadline)
{
    const auto attempt = [&]() -> Outcome<void> {
        const QString written = output();
        if (written.contains(text))
            return {};
        return Failure{
            QStringLiteral("\"%1\" and on standard error \"%2\"").arg(written, errorOutput())};
    };
    return waitFor(QStringLiteral("\"%1\" on standard output").arg(text), attempt, deadline);
}

Outcome<void> App::awaitErrorOutput(const QString& text, std::chrono::milliseconds deadline)
{
    const auto attempt = [&]() -> Outcome<void> {
        const QString written = errorOutput();
        return written.contains(text) ? Outcome<void>() : Failure{u'"' + written + u'"'};
    };
    return waitFor(QStringLiteral("\"%1\" on standard error").arg(text), attempt, deadline);
}

} // namespace Desktop
