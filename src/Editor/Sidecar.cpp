#include "Editor/Sidecar.h"

#include "Support/ReadFile.h"
#include "Support/ReplaceFile.h"

#include <QFile>

namespace {

/// In bytes: a million and a half points of strokes.
constexpr qint64 largestFile = qint64{64} << 20;

} // namespace

QString Sidecar::path(const QString& imagePath)
{
    return imagePath + QStringLiteral(".tamrik.json");
}

QList<Annotation> Sidecar::load(const QString& imagePath)
{
    const Result<QByteArray> json = readFile(path(imagePath), largestFile);
    const Result<Sidecar> sidecar = json ? decode(*json) : json.failure();
    return sidecar ? sidecar->annotations : QList<Annotation>();
}

void Sidecar::save(const QList<Annotation>& annotations, const QString& imagePath)
{
    const QString file = path(imagePath);
    if (annotations.isEmpty()) {
        QFile::remove(file); // mostly it does not exist
        return;
    }
    // There is nobody to be told of a failure: the annotations are still on the screen, and the
    // next change tries again.
    if (const Result<QByteArray> json = encode({1, annotations}))
        (void)replaceFile(file, *json, QFile::ReadOwner | QFile::WriteOwner); // as captures are
}
