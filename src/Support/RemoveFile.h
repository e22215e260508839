#pragma once

#include <QList>
#include <QString>
#include <QUrl>

/// Takes a file away. Its name goes at once, its space beside the caller's work: that of gigabytes
/// takes a disk up to a second. A failure is no harm to anybody. Any thread.
void removeFile(const QString& path);

void removeFiles(const QList<QUrl>& files);
