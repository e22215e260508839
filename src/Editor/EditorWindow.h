#pragma once

#include <QWidget>

#include <functional>

/// An editor's window, which tells of its end and of the key that copies.
class EditorWindow : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

    std::function<void()> willClose;

Q_SIGNALS:
    /// Return, where nothing in the window takes it.
    void returnPressed();

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void makeRoom();
};
