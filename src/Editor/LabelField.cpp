#include "Editor/LabelField.h"

#include <QFocusEvent>
#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QPainter>

#include <cmath>
#include <utility>

LabelField::LabelField(QWidget* parent)
    : QLineEdit(parent)
{
    setObjectName(QStringLiteral("LabelField"));
    setAccessibleName(QStringLiteral("Label text"));
    setPlaceholderText(QStringLiteral("Text…"));
    setFrame(false);
    // The text stands where the label will: in the corner. What is taken back here is the distance
    // that every line edit keeps from its text.
    constexpr int ownMarginAtSides = 2;
    constexpr int ownMarginBelow = 1;
    setAlignment(Qt::AlignLeft | Qt::AlignBottom);
    setTextMargins(-ownMarginAtSides, 0, -ownMarginAtSides, -ownMarginBelow);
    setAutoFillBackground(false);
}

void LabelField::setLook(const QColor& color, double size)
{
    QFont font;
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(size))));
    font.setBold(true);
    setFont(font);
    QPalette look = palette();
    look.setColor(QPalette::Base, Qt::transparent); // painted below
    look.setColor(QPalette::Text, color);
    QColor faint = color;
    faint.setAlphaF(0.55F);
    look.setColor(QPalette::PlaceholderText, faint);
    setPalette(look);
}

void LabelField::inputMethodEvent(QInputMethodEvent* event)
{
    m_composed = event->preeditString();
    QLineEdit::inputMethodEvent(event);
}

QString LabelField::finished()
{
    QGuiApplication::inputMethod()->commit();
    // Not every input method answers at once.
    if (!m_composed.isEmpty())
        insert(std::exchange(m_composed, {}));
    return text();
}

bool LabelField::focusNextPrevChild(bool)
{
    Q_EMIT ended(); // there is no next field
    return true;
}

void LabelField::paintEvent(QPaintEvent* event)
{
    QColor dark(Qt::black);
    dark.setAlphaF(0.25F);
    QPainter(this).fillRect(rect(), dark);
    QLineEdit::paintEvent(event);
}

void LabelField::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    switch (event->reason()) {
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
    case Qt::MenuBarFocusReason:
        return;
    case Qt::MouseFocusReason:
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::ShortcutFocusReason:
    case Qt::OtherFocusReason:
    case Qt::NoFocusReason:
        Q_EMIT ended();
        return;
    }
}

void LabelField::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape: // what was typed is not lost: it can be undone
        event->accept();
        Q_EMIT ended();
        return;
    default: // all other keys
        QLineEdit::keyPressEvent(event);
    }
}
