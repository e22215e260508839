#pragma once

#include "desktop/harness/Outcome.h"
#include "desktop/harness/VirtualDesktop.h"

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QPointF>
#include <QtCore/QRect>
#include <QtCore/QSizeF>
#include <QtCore/QString>

/// The open editor of a picture as a user sees it: where its tools and its picture are on the
/// screen, and what it keeps beside the picture.
class EditorOnDesktop {
public:
    /// In the order of the toolbar.
    enum class Tool {
        Select,
        Arrow,
        Line,
        Rect,
        Ellipse,
        Freehand,
        Highlight,
        Text,
        Counter,
        Redact
    };

    /// Waits until the editor of the picture at `path`, which fits its window, is the active
    /// window.
    static Desktop::Outcome<EditorOnDesktop> await(const Desktop::VirtualDesktop& desktop,
                                                   const QString& path);

    /// A mark that is drawn by dragging, in points of the picture.
    struct Stroke {
        Tool tool;
        const char* kind;
        QPointF from;
        QPointF to;
    };
    /// One of each such kind, apart from each other in a picture of 360 x 210 points. There is room
    /// for a label at (206, 100) and for a counter at (330, 116).
    static const QList<Stroke>& strokes();

    std::uint32_t id() const { return m_id; }
    /// The picture's file.
    QString path() const { return m_path; }
    QString title() const;

    Desktop::Outcome<void> choose(Tool tool) const;

    /// Points of the picture, origin at its bottom left, in pixels of the desktop.
    QPoint at(QPointF point) const;
    /// The whole picture, in pixels of the desktop.
    QRect picture() const { return m_picture; }
    Desktop::Outcome<void> drag(QPointF from, QPointF to) const;
    Desktop::Outcome<void> click(QPointF point) const;

    /// The marks in the file beside the picture; none when there is no file.
    QList<QJsonObject> marks() const;
    Desktop::Outcome<QList<QJsonObject>> awaitMarks(int count) const;
    /// The file beside the picture.
    QString sidecar() const;

private:
    EditorOnDesktop(const Desktop::VirtualDesktop& desktop, QString path, std::uint32_t id,
                    QRect window, QSize picture);

    const Desktop::VirtualDesktop& m_desktop;
    QString m_path;
    std::uint32_t m_id;
    QRect m_window;
    QRect m_picture;
};

/// The points that a mark keeps under a name such as "start".
QPointF pointOf(const QJsonObject& mark, QLatin1String key);
