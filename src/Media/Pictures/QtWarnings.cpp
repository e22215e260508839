#include "Media/Pictures/QtWarnings.h"

#include <QLoggingCategory>

namespace {

QLoggingCategory::CategoryFilter earlierFilter = nullptr;

void filter(QLoggingCategory* category)
{
    earlierFilter(category);
    const QByteArrayView name(category->categoryName());
    if (name.startsWith("qt.gui.imageio") || name.startsWith("qt.gui.icc"))
        category->setEnabled(QtWarningMsg, false);
}

} // namespace

void QtWarnings::silence()
{
    // Every category asks the filter when it comes into being and when the rules change.
    [[maybe_unused]] static const bool isInstalled = [] {
        earlierFilter = QLoggingCategory::installFilter(nullptr);
        QLoggingCategory::installFilter(filter);
        return true;
    }();
}
