#pragma once

#include <QObject>

QT_FORWARD_DECLARE_CLASS(QScreen)

/// Tells of screens that come, go, or change their place, size or scale. One change of the user's
/// makes several of these.
class ScreenWatcher : public QObject {
    Q_OBJECT

public:
    explicit ScreenWatcher(QObject* parent = nullptr);

Q_SIGNALS:
    void changed();

private:
    void watch(const QScreen* screen);
};
