#include "Support/ReplaceFile.h"

#include <QFileInfo>
#include <QSaveFile>

PossibleFailure replaceFile(const QString& path, const QByteArray& content,
                            std::optional<QFile::Permissions> permissions)
{
    // Whatever else has its place, such as a pipe, would make us wait.
    if (const QFileInfo old(path); old.exists() && !old.isFile())
        return Failure{"cannot replace " + path.toStdString() + ": it is not a regular file"};
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        if (permissions)
            file.setPermissions(*permissions);
        // A disk that fills up takes a part, which QSaveFile would not call an error.
        if (file.write(content) == content.size() && file.commit())
            return {};
    }
    return Failure{"cannot write " + path.toStdString() + ": " + file.errorString().toStdString()};
}
