#pragma once

#include "Support/Clock.h"
#include "Support/Geometry.h"

#include <QWidget>

#include <chrono>
#include <functional>

/// The window of an editor of one file: it bears the file's name, but for moments in which it tells
/// something, and tells of its end and of the key that copies.
class EditorWindow : public QWidget {
    Q_OBJECT

public:
    EditorWindow(const QString& path, Clock clock);

    std::function<void()> willClose;

    /// What panels leave of the screen that the window opens on; of a usual one when there is none.
    static Geometry::Rect visibleFrame();

    /// Puts it in the middle of the screen, its content so large and never smaller than `smallest`
    /// less a title bar, or as large as there is room for. Call before it is shown.
    void place(Geometry::Size content, Geometry::Size smallest);

    /// Has the title say `message`, and the file's name after `time`, whatever was said meanwhile.
    void flashTitle(const QString& message, std::chrono::milliseconds time);

Q_SIGNALS:
    /// Return, where nothing in the window takes it.
    void returnPressed();

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void setTitle(QString text);
    void makeRoom();

    QString m_fileName;
    Clock m_clock;
};
