#include "desktop/flow/FlowTest.h"

#include <QFile>

using namespace Desktop;

void FlowTest::begin(const Options& options)
{
    auto started = VirtualDesktop::start(options);
    ASSERT_TRUE(succeeded(started));
    desktop = std::move(*started);
    auto opened =
        openTerminal(*desktop, QStringLiteral("Notes"), desktop->home() + QStringLiteral("/typed"));
    ASSERT_TRUE(succeeded(opened));
    terminal = std::move(*opened);
    ASSERT_TRUE(succeeded(input().click(terminal->window.geometry.center())));
    if (options.windowManager == WindowManager::None) {
        ASSERT_TRUE(succeeded(windows().focus(terminal->window.id)));
    } else {
        ASSERT_TRUE(succeeded(windows().awaitActive(terminal->window.id)));
        ASSERT_TRUE(succeeded(windows().awaitFocused(terminal->window.id)));
    }
    auto launched = Tamrik::startAndAwaitKeys(*desktop, QStringLiteral(TAMRIK_PROGRAM));
    ASSERT_TRUE(succeeded(launched));
    tamrik = std::move(*launched);
}

void FlowTest::TearDown()
{
    if (tamrik) {
        EXPECT_TRUE(tamrik->app().isRunning());
        EXPECT_EQ(tamrik->app().errorOutput(), QString());
    }
}

Outcome<void> FlowTest::dragOut(QRect pixels) const
{
    return input().drag(pixels.topLeft(),
                        pixels.topLeft() + QPoint(pixels.width(), pixels.height()));
}

QByteArray FlowTest::contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray FlowTest::typed() const
{
    return contents(desktop->home() + QStringLiteral("/typed"));
}

Outcome<void> FlowTest::awaitTyped(const QByteArray& lines) const
{
    return waitFor(QStringLiteral("the typed lines"), [&]() -> Outcome<void> {
        const QByteArray now = typed();
        return now == lines ? Outcome<void>() : Failure{QString::fromUtf8(now)};
    });
}
