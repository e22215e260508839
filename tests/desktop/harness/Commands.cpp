#include "desktop/harness/Commands.h"

#include <QtCore/QProcess>

namespace Desktop {
namespace {

Failure failed(QProcess& process, const QString& how)
{
    QString text = process.program() + u' ' + process.arguments().join(u' ') + u' ' + how;
    const QByteArray errors = process.readAllStandardError().trimmed();
    if (!errors.isEmpty())
        text += QStringLiteral(": ") + QString::fromUtf8(errors);
    return {text};
}

Outcome<void> finish(QProcess& process, const QByteArray& input, std::chrono::milliseconds deadline)
{
    process.start();
    if (!process.waitForStarted())
        return failed(process, QStringLiteral("did not start"));
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(static_cast<int>(deadline.count()))) {
        process.kill();
        process.waitForFinished();
        return failed(process, QStringLiteral("took more than %1 ms").arg(deadline.count()));
    }
    if (process.exitStatus() != QProcess::NormalExit)
        return failed(process, QStringLiteral("crashed"));
    if (process.exitCode() != 0)
        return failed(process, QStringLiteral("ended with %1").arg(process.exitCode()));
    return {};
}

} // namespace

Outcome<QByteArray> run(const QString& program, const QStringList& arguments,
                        const QProcessEnvironment& environment, std::chrono::milliseconds deadline)
{
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setProcessEnvironment(environment);
    if (const auto done = finish(process, {}, deadline); !done)
        return done.failure();
    return process.readAllStandardOutput();
}

Outcome<void> feed(const QString& program, const QStringList& arguments, const QByteArray& input,
                   const QProcessEnvironment& environment, std::chrono::milliseconds deadline)
{
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setProcessEnvironment(environment);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return finish(process, input, deadline);
}

} // namespace Desktop
