#pragma once

#include "Editor/Annotation.h"
#include "Support/Result.h"

#include <QByteArray>

#include <cstdint>

/// A picture's annotations as they are kept in a JSON file beside it. The picture itself stays as
/// it was captured.
struct Sidecar {
    std::int64_t version = 1;      ///< Written as 1; any other is read as if it were 1.
    QList<Annotation> annotations; ///< The lowest first.

    friend bool operator==(const Sidecar&, const Sidecar&) = default;

    /// The file for a picture: its whole name and ".tamrik.json".
    static QString path(const QString& imagePath);

    /// The annotations of a picture. None when there is no file, or none that can be read to its
    /// end without an error.
    static QList<Annotation> load(const QString& imagePath);

    /// Replaces the file, or removes it when there are no annotations. The old file is as it was,
    /// and nothing is said, when that can't be done.
    static void save(const QList<Annotation>& annotations, const QString& imagePath);

    /// Compact JSON in UTF-8. Every number reads back as the same. Fails when one is not finite,
    /// since JSON has no others.
    static Result<QByteArray> encode(const Sidecar& sidecar);

    /// Takes keys in any order, ignores unknown ones, and fails on everything else that `encode`
    /// could not have meant.
    static Result<Sidecar> decode(QByteArrayView json);
};
