#pragma once

#include <QLineEdit>

/// The field in which a label is typed, right where it will stand.
class LabelField : public QLineEdit {
    Q_OBJECT

public:
    explicit LabelField(QWidget* parent);

    /// The text, with what an input method was still at.
    QString finished();

    /// The text's colour and its size in points of the screen.
    void setLook(const QColor& color, double size);

Q_SIGNALS:
    /// The user is done: by Return, Escape, or by going elsewhere in the window. Going to another
    /// window or to a menu is not the end of it.
    void ended();

protected:
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    QString m_composed; ///< Shown in the field, and no part of its text yet.
};
