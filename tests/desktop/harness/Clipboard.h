#pragma once

#include "desktop/harness/Outcome.h"

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

namespace Desktop {

class VirtualDesktop;

/// The desktop's clipboard, as another program sees it.
class Clipboard {
public:
    explicit Clipboard(const VirtualDesktop& desktop)
        : m_desktop(desktop)
    {
    }

    /// The names of what the clipboard offers, such as "image/png". Fails when nobody owns it.
    Outcome<QStringList> targets() const;
    /// The bytes of one target. Fails when it is not offered.
    Outcome<QByteArray> read(const QString& target) const;
    /// Puts bytes there under one target, as another program would.
    Outcome<void> write(const QString& target, const QByteArray& bytes) const;

private:
    const VirtualDesktop& m_desktop;
};

} // namespace Desktop
