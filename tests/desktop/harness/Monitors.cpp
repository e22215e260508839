#include "desktop/harness/Monitors.h"

#include "desktop/harness/Commands.h"
#include "desktop/harness/VirtualDesktop.h"

namespace Desktop {
namespace {

/// As xrandr takes it: pixels and, at 96 dpi, millimetres.
QString placed(const QRect& pixels)
{
    const auto millimetres = [](int length) { return length * 254 / 960; };
    return QStringLiteral("%1/%2x%3/%4+%5+%6")
        .arg(pixels.width())
        .arg(millimetres(pixels.width()))
        .arg(pixels.height())
        .arg(millimetres(pixels.height()))
        .arg(pixels.x())
        .arg(pixels.y());
}

Outcome<void> xrandr(const VirtualDesktop& desktop, const QStringList& arguments)
{
    const auto output = run(QStringLiteral("xrandr"), arguments, desktop.environment());
    if (!output)
        return output.failure();
    return {};
}

} // namespace

Outcome<void> Monitors::add(const Monitor& monitor) const
{
    const QString name = monitor.isPrimary ? u'*' + monitor.name : monitor.name;
    return xrandr(m_desktop,
                  {QStringLiteral("--setmonitor"), name, placed(monitor.pixels),
                   monitor.hasOutput ? QStringLiteral("screen") : QStringLiteral("none")});
}

Outcome<void> Monitors::remove(const QString& name) const
{
    return xrandr(m_desktop, {QStringLiteral("--delmonitor"), name});
}

Outcome<QList<QString>> Monitors::names() const
{
    const auto output =
        run(QStringLiteral("xrandr"), {QStringLiteral("--listmonitors")}, m_desktop.environment());
    if (!output)
        return output.failure();
    QList<QString> names;
    // Under a heading, a line a monitor: " 0: +*first 1000/264x750/198+0+0  screen".
    const QList<QByteArray> lines = output->split('\n').mid(1);
    for (const QByteArray& line : lines) {
        QByteArray name = line.simplified().split(' ').value(1);
        while (name.startsWith('+') || name.startsWith('*'))
            name.remove(0, 1);
        if (!name.isEmpty())
            names += QString::fromUtf8(name);
    }
    return names;
}

} // namespace Desktop
