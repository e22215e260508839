#pragma once

#include "Support/Result.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <optional>

/// Writes a file that is either wholly the new one or, when this fails, as it was; also when the
/// disk is full or the program ends meanwhile. Refuses to replace what is no regular file.
///
/// A new file gets `permissions`, or those that the user's files have; without them a replaced one
/// keeps its own. Any thread.
PossibleFailure replaceFile(const QString& path, const QByteArray& content,
                            std::optional<QFile::Permissions> permissions = {});
