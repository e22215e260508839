#include "desktop/harness/Helpers.h"

#include "desktop/harness/VirtualDesktop.h"

#include <QtCore/QFileInfo>

namespace Desktop {
namespace {

Outcome<Helper> open(const VirtualDesktop& desktop, const QString& program,
                     const QStringList& arguments, const QString& title)
{
    auto app = App::start(desktop, program, arguments);
    if (!app)
        return app.failure();
    const auto window = Windows(desktop).awaitTitle(title);
    if (!window)
        return Failure{window.error() + QStringLiteral("; it said: ") + (*app)->errorOutput()};
    return Helper{std::move(*app), *window};
}

} // namespace

Outcome<Helper> openTerminal(const VirtualDesktop& desktop, const QString& title,
                             const QString& file)
{
    return open(desktop, QStringLiteral("xterm"),
                {QStringLiteral("-T"), title, QStringLiteral("-fa"),
                 QStringLiteral("DejaVu Sans Mono"), QStringLiteral("-fs"), QStringLiteral("10"),
                 QStringLiteral("-e"), QStringLiteral("sh"), QStringLiteral("-c"),
                 // Without echo: tee shows each line itself.
                 QStringLiteral("stty -echo && exec tee \"$0\""), file},
                title);
}

Outcome<Helper> openFileManager(const VirtualDesktop& desktop, const QString& folder)
{
    return open(desktop, QStringLiteral("pcmanfm"),
                {QStringLiteral("--no-desktop"), QStringLiteral("--new-win"), folder},
                QFileInfo(folder).fileName());
}

QPoint folderView(const Helper& fileManager)
{
    const QRect window = fileManager.window.geometry;
    return {window.right() - window.width() / 8, window.top() + window.height() * 2 / 5};
}

Outcome<Helper> openImageEditor(const VirtualDesktop& desktop)
{
    auto app = App::start(desktop, QStringLiteral("mtpaint"));
    if (!app)
        return app.failure();
    const auto window = Windows(desktop).await(QStringLiteral("mtPaint"), [](const Window& w) {
        return w.isViewable && w.title.endsWith(QLatin1String("Untitled"));
    });
    if (!window)
        return window.failure();
    return Helper{std::move(*app), *window};
}

} // namespace Desktop
