#pragma once

#include <QUrl>

/// A file beside `file`: its name is that one's, with `ending` in place of the extension. A name
/// that has nothing before its extension stays whole.
QUrl sibling(const QUrl& file, const QString& ending);
