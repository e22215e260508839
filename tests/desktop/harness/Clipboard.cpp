#include "desktop/harness/Clipboard.h"

#include "desktop/harness/Commands.h"
#include "desktop/harness/Server.h"
#include "desktop/harness/VirtualDesktop.h"
#include "desktop/harness/WaitUntil.h"

namespace Desktop {
namespace {

QStringList xclip(const QString& direction, const QString& target)
{
    return {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-target"),
            target, direction};
}

} // namespace

Outcome<QStringList> Clipboard::targets() const
{
    const auto names = read(QStringLiteral("TARGETS"));
    if (!names)
        return names.failure();
    return QString::fromUtf8(*names).split(u'\n', Qt::SkipEmptyParts);
}

Outcome<QByteArray> Clipboard::read(const QString& target) const
{
    return run(QStringLiteral("xclip"), xclip(QStringLiteral("-o"), target),
               m_desktop.environment());
}

Outcome<void> Clipboard::write(const QString& target, const QByteArray& bytes) const
{
    // A part of xclip stays to serve the clipboard, until someone else takes it or the desktop
    // ends. It may take it only after the other part has ended.
    const Server& server = m_desktop.server();
    const std::uint32_t before = server.selectionOwner("CLIPBOARD");
    const auto fed = feed(QStringLiteral("xclip"), xclip(QStringLiteral("-i"), target), bytes,
                          m_desktop.environment());
    if (!fed)
        return fed;
    return waitUntil(QStringLiteral("the clipboard's new owner"), [&] {
        const std::uint32_t now = server.selectionOwner("CLIPBOARD");
        return now != 0 && now != before;
    });
}

} // namespace Desktop
