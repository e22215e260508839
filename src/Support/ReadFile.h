#pragma once

#include "Support/Result.h"

#include <QByteArray>
#include <QString>

#include <limits>

/// All bytes of a regular file, unless there are more than `most`. Never waits for anybody, as
/// opening a pipe would.
Result<QByteArray> readFile(const QString& path, qint64 most = std::numeric_limits<qint64>::max());
