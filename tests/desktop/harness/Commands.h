#pragma once

#include "desktop/harness/Outcome.h"
#include "desktop/harness/WaitUntil.h"

#include <QtCore/QByteArray>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QStringList>

namespace Desktop {

/// Runs a command to its end and returns what it wrote to standard output. Fails, with what it
/// wrote to standard error, when it cannot be started, ends with anything but 0, or takes too long;
/// then it is killed.
Outcome<QByteArray> run(const QString& program, const QStringList& arguments,
                        const QProcessEnvironment& environment,
                        std::chrono::milliseconds deadline = patience);

/// Runs a command that takes `input` and, as some do, leaves a process behind: what it writes is
/// not read, so that the process left behind is not waited for.
Outcome<void> feed(const QString& program, const QStringList& arguments, const QByteArray& input,
                   const QProcessEnvironment& environment,
                   std::chrono::milliseconds deadline = patience);

} // namespace Desktop
