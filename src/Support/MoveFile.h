#pragma once

#include "Support/Result.h"

#include <QString>

#include <functional>

/// Moves a file, also onto another file system, and replaces what has the new name; nothing has it
/// until all of the file is there, on the disk itself. A failure leaves the old one where it was.
/// Any thread; may take as long as copying does, and gives up when `isCancelled`.
PossibleFailure moveFile(const QString& from, const QString& to,
                         const std::function<bool()>& isCancelled);
