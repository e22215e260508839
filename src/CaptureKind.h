#pragma once

#include <QUrl>

/// What a capture file is, by its extension whatever its case.
enum class CaptureKind {
    picture, ///< png, jpg, jpeg, tiff
    video,   ///< mov, mp4
    gif,
    other,
};

CaptureKind captureKind(const QUrl& file);
