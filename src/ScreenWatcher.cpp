#include "ScreenWatcher.h"

#include <QGuiApplication>
#include <QScreen>

ScreenWatcher::ScreenWatcher(QObject* parent)
    : QObject(parent)
{
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this](const QScreen* screen) {
        watch(screen);
        Q_EMIT changed();
    });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &ScreenWatcher::changed);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &ScreenWatcher::changed);
    for (const QScreen* screen : QGuiApplication::screens())
        watch(screen);
}

void ScreenWatcher::watch(const QScreen* screen)
{
    connect(screen, &QScreen::geometryChanged, this, &ScreenWatcher::changed);
    // These two tell of a change of the scale.
    connect(screen, &QScreen::logicalDotsPerInchChanged, this, &ScreenWatcher::changed);
    connect(screen, &QScreen::physicalDotsPerInchChanged, this, &ScreenWatcher::changed);
}
