#pragma once

#include "Support/Clock.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

/// Where captures go and what they are called.
///
/// A name holds the local time to the second and no counter: a second capture within the same
/// second replaces the first.
namespace CaptureFiles {

/// Pictures/Tamrik under the user's home directory. It need not exist.
QString folder();

/// Creates the captures folder and what is missing above it. A failure shows when the capture tool
/// cannot write, so it is not reported here.
void createFolder();

/// The file for a screenshot taken now.
QUrl newScreenshot(const Clock& clock);

/// The file for a recording that starts now.
QUrl newRecording(const Clock& clock);

/// Where a recording lies until it is finished: $TMPDIR, or else what outlives a restart of the
/// machine.
QString temporaryFolder();

bool exists(const QUrl& file);

/// The bytes of a file; absent when it cannot be read.
std::optional<QByteArray> contents(const QUrl& file);

} // namespace CaptureFiles
