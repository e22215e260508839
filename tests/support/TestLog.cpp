#include "support/TestLog.h"

#include "Support/Log.h"

#include <QMutex>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

namespace {

struct Heard {
    QMutex mutex;
    QStringList lines;
    QStringList warnings;
    QList<QRegularExpression> allowed;
    QList<QRegularExpression> allowedAlways;

    void clear()
    {
        lines.clear();
        warnings.clear();
        allowed.clear();
    }
};

Heard& heard()
{
    static Heard instance;
    return instance;
}

void onMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    if (type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(text)); // Qt aborts next
    const QMutexLocker lock(&heard().mutex);
    heard().warnings.append(text);
}

bool isAllowed(const QString& warning)
{
    const auto matches = [&warning](const QRegularExpression& pattern) {
        return pattern.match(warning).hasMatch();
    };
    return std::any_of(heard().allowed.begin(), heard().allowed.end(), matches) ||
           std::any_of(heard().allowedAlways.begin(), heard().allowedAlways.end(), matches);
}

class SilenceListener : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override
    {
        const QMutexLocker lock(&heard().mutex);
        heard().clear();
    }

    void OnTestEnd(const testing::TestInfo&) override
    {
        const QMutexLocker lock(&heard().mutex);
        for (const QString& line : heard().lines)
            ADD_FAILURE() << "unexpected log line: " << qPrintable(line);
        for (const QString& warning : heard().warnings) {
            if (!isAllowed(warning))
                ADD_FAILURE() << "unexpected warning: " << qPrintable(warning);
        }
        heard().clear();
    }
};

} // namespace

QStringList TestLog::takeLines()
{
    const QMutexLocker lock(&heard().mutex);
    return std::exchange(heard().lines, {});
}

void TestLog::allowWarning(const QRegularExpression& pattern)
{
    const QMutexLocker lock(&heard().mutex);
    heard().allowed.append(pattern);
}

void TestLog::allowWarningAlways(const QRegularExpression& pattern)
{
    const QMutexLocker lock(&heard().mutex);
    heard().allowedAlways.append(pattern);
}

void TestLog::install()
{
    qInstallMessageHandler(onMessage);
    Log::setSink([](const QString& line) {
        const QMutexLocker lock(&heard().mutex);
        heard().lines.append(line);
    });
    // Prepended: a listener appended behind the printer would add its failures after the verdict.
    auto& listeners = testing::UnitTest::GetInstance()->listeners();
    auto* printer = listeners.Release(listeners.default_result_printer());
    listeners.Append(new SilenceListener); // gtest owns it
    listeners.Append(printer);
}
