#include "CaptureKind.h"

#include <QFileInfo>
#include <QStringList>

CaptureKind captureKind(const QUrl& file)
{
    static const QStringList pictures = {QStringLiteral("png"), QStringLiteral("jpg"),
                                         QStringLiteral("jpeg"), QStringLiteral("tiff")};
    static const QStringList videos = {QStringLiteral("mov"), QStringLiteral("mp4")};
    const QString extension = QFileInfo(file.toLocalFile()).suffix().toLower();
    if (pictures.contains(extension))
        return CaptureKind::picture;
    if (videos.contains(extension))
        return CaptureKind::video;
    if (extension == QLatin1String("gif"))
        return CaptureKind::gif;
    return CaptureKind::other;
}
