#pragma once

#include <QRegularExpression>
#include <QStringList>

/// What the program and Qt said during a test. A test that leaves a line or a warning behind that
/// it did not take or allow fails.
namespace TestLog {

/// The log lines since the test began, or since the last call.
QStringList takeLines();

/// Allows Qt's warnings that match, for the rest of this test.
void allowWarning(const QRegularExpression& pattern);

/// Allows Qt's warnings that match in every test: what this process's Qt platform cannot do.
void allowWarningAlways(const QRegularExpression& pattern);

/// Installs the log sink, the message handler and the check at each test's end. Call once, after
/// InitGoogleTest.
void install();

} // namespace TestLog
