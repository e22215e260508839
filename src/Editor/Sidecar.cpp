#include "Editor/Sidecar.h"

#include "Support/MappedFile.h"
#include "Support/ReadFile.h"
#include "Support/ReplaceFile.h"

#include <QFile>

#include <utility>

namespace {

/// In bytes: 25 million points of strokes, more than can be drawn in a day.
constexpr qint64 largestFile = qint64{1} << 30;
/// Longer ones, which are hardly ever ours, are read no further than they make sense.
constexpr qint64 longFile = qint64{8} << 20;

QList<Annotation> annotationsIn(QByteArrayView json)
{
    Result<Sidecar> sidecar = Sidecar::decode(json);
    return sidecar ? std::move(sidecar->annotations) : QList<Annotation>();
}

} // namespace

QString Sidecar::path(const QString& imagePath)
{
    return imagePath + QStringLiteral(".tamrik.json");
}

QList<Annotation> Sidecar::load(const QString& imagePath)
{
    const QString file = path(imagePath);
    if (const Result<QByteArray> json = readFile(file, longFile))
        return annotationsIn(*json);
    // Files of ours are replaced, never cut off.
    const Result<MappedFile> json = MappedFile::open(file, largestFile);
    return json ? annotationsIn(json->content()) : QList<Annotation>();
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
