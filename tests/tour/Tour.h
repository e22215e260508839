#pragma once

#include "desktop/harness/Outcome.h"
#include "desktop/harness/VirtualDesktop.h"

#include <QList>
#include <QString>

#include <functional>

/// Plays what users do on a virtual desktop, a step at a time: prints one line a step, keeps a
/// picture of the screen after each, and makes a contact sheet of them all.
class Tour {
public:
    using Action = std::function<Desktop::Outcome<void>()>;

    /// Pictures and the sheet go into `folder`, which exists. `desktop` is borrowed.
    Tour(const Desktop::VirtualDesktop& desktop, QString folder);

    /// Begins a part of the tour, with a heading of its own.
    void leg(const QString& title);

    /// Plays one step: does `action`, which also checks what came of it. After a failure the
    /// remaining steps are not played, and count as failed.
    void step(const QString& title, const Action& action);

    /// Adds a file that a step made to the sheet, a capture say.
    void show(const QString& path);

    bool passed() const { return m_failures == 0; }

    /// Writes index.html; false when it cannot be written.
    bool writeContactSheet() const;

private:
    struct Entry {
        QString leg;
        QString title;
        QString failure;
        QString picture; // a file name in the folder; empty when there is none
        QStringList files;
    };

    const Desktop::VirtualDesktop& m_desktop;
    QString m_folder;
    QString m_leg;
    QList<Entry> m_entries;
    int m_failures = 0;
};
