#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

/// Real input: runs xdotool, which sends events through the XTEST extension as a keyboard and a
/// mouse would.
inline void xdotool(const QString& words)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), words.split(QLatin1Char(' ')));
    ASSERT_TRUE(process.waitForFinished()) << qPrintable(words);
    ASSERT_EQ(process.exitCode(), 0)
        << qPrintable(words) << process.readAllStandardError().constData();
}

/// Runs a program and gives back what it printed.
inline QByteArray output(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitCode() != 0) {
        ADD_FAILURE() << qPrintable(program) << ": " << process.readAllStandardError().constData();
        return {};
    }
    return process.readAllStandardOutput();
}
