#pragma once

#include "desktop/harness/Outcome.h"

#include <QtCore/QList>
#include <QtCore/QRect>
#include <QtCore/QString>

namespace Desktop {

class VirtualDesktop;

struct Monitor {
    QString name;
    /// Of the whole desktop, origin at its top left.
    QRect pixels;
    bool isPrimary = false;
    /// Whether it is the one that the X server's only output shows: then it takes the place of the
    /// whole desktop.
    bool hasOutput = false;
};

/// Cuts a desktop into monitors while it runs, as somebody does who plugs screens in and out.
class Monitors {
public:
    explicit Monitors(const VirtualDesktop& desktop)
        : m_desktop(desktop)
    {
    }

    /// Sets a monitor up, of a name that there is not.
    Outcome<void> add(const Monitor& monitor) const;
    Outcome<void> remove(const QString& name) const;
    Outcome<QList<QString>> names() const;

private:
    const VirtualDesktop& m_desktop;
};

} // namespace Desktop
