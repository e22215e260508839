#include "Support/Sibling.h"

#include <QFileInfo>

QUrl sibling(const QUrl& file, const QString& ending)
{
    const QFileInfo info(file.toLocalFile());
    const QString base = info.completeBaseName();
    return QUrl::fromLocalFile(info.path() + u'/' + (base.isEmpty() ? info.fileName() : base) +
                               ending);
}
