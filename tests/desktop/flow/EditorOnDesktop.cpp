#include "desktop/flow/EditorOnDesktop.h"

#include "desktop/harness/Input.h"
#include "desktop/harness/Windows.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>

using namespace Desktop;

namespace {

// The window's measures, in points.
constexpr double toolbarHeight = 46;
constexpr double toolbarInset = 10;
constexpr double toolWidth = 30;
constexpr double toolSpacing = 2;

/// Quick, yet with enough places on the way for a stroke.
constexpr Motion stroke = {8, std::chrono::milliseconds(8)};

} // namespace

Outcome<EditorOnDesktop> EditorOnDesktop::await(const VirtualDesktop& desktop, const QString& path)
{
    const auto now = Windows(desktop).awaitTitleInUse(QFileInfo(path).fileName());
    if (!now)
        return now.failure();
    return EditorOnDesktop(desktop, path, now->id, now->geometry, QImage(path).size());
}

EditorOnDesktop::EditorOnDesktop(const VirtualDesktop& desktop, QString path, std::uint32_t id,
                                 QRect window, QSize picture)
    : m_desktop(desktop)
    , m_path(std::move(path))
    , m_id(id)
    , m_window(window)
{
    // It stands in the middle, on whole points, and then on whole pixels.
    const double scale = desktop.options().scale;
    const auto margin = [scale](int room, int length, double taken) {
        const int points =
            qRound(room / scale - taken) - static_cast<int>(std::ceil(length / scale));
        return qRound((taken + points / 2) * scale);
    };
    m_picture =
        QRect(window.topLeft() + QPoint(margin(window.width(), picture.width(), 0),
                                        margin(window.height(), picture.height(), toolbarHeight)),
              picture);
}

const QList<EditorOnDesktop::Stroke>& EditorOnDesktop::strokes()
{
    static const QList<Stroke> all = {
        {Tool::Arrow, "arrow", {20, 190}, {100, 150}},
        {Tool::Line, "line", {120, 190}, {190, 150}},
        {Tool::Rect, "rect", {210, 190}, {270, 150}},
        {Tool::Ellipse, "ellipse", {285, 190}, {345, 150}},
        {Tool::Freehand, "freehand", {20, 130}, {100, 100}},
        {Tool::Highlight, "highlight", {120, 130}, {190, 100}},
        {Tool::Redact, "redact", {25, 81}, {124, 18}},
    };
    return all;
}

QString EditorOnDesktop::title() const
{
    for (const Window& window : Windows(m_desktop).all())
        if (window.id == m_id)
            return window.title;
    return {};
}

Outcome<void> EditorOnDesktop::choose(Tool tool) const
{
    const double x =
        toolbarInset + static_cast<int>(tool) * (toolWidth + toolSpacing) + toolWidth / 2;
    const double scale = m_desktop.options().scale;
    return Input(m_desktop).click(m_window.topLeft() +
                                  (QPointF(x, toolbarHeight / 2) * scale).toPoint());
}

QPoint EditorOnDesktop::at(QPointF point) const
{
    const double scale = m_desktop.options().scale;
    return m_picture.topLeft() +
           QPoint(qRound(point.x() * scale), m_picture.height() - qRound(point.y() * scale));
}

Outcome<void> EditorOnDesktop::drag(QPointF from, QPointF to) const
{
    return Input(m_desktop).drag(at(from), at(to), stroke);
}

Outcome<void> EditorOnDesktop::click(QPointF point) const
{
    return Input(m_desktop).click(at(point));
}

QList<QJsonObject> EditorOnDesktop::marks() const
{
    QFile file(sidecar());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<QJsonObject> marks;
    const QJsonObject all = QJsonDocument::fromJson(file.readAll()).object();
    for (const auto& mark : all.value(QLatin1String("annotations")).toArray())
        marks += mark.toObject();
    return marks;
}

Outcome<QList<QJsonObject>> EditorOnDesktop::awaitMarks(int count) const
{
    return waitFor(QStringLiteral("%1 marks").arg(count), [&]() -> Outcome<QList<QJsonObject>> {
        const auto now = marks();
        if (now.size() == count && QFile::exists(sidecar()) == (count > 0))
            return now;
        return Failure{QStringLiteral("there are %1").arg(now.size())};
    });
}

QString EditorOnDesktop::sidecar() const
{
    return m_path + QStringLiteral(".tamrik.json");
}

QPointF pointOf(const QJsonObject& mark, QLatin1String key)
{
    const QJsonArray numbers = mark.value(key).toArray();
    return {numbers.at(0).toDouble(), numbers.at(1).toDouble()};
}
