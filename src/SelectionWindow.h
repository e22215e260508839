#pragma once

#include "Platform/Screens.h"

#include <QPixmap>
#include <QWidget>

#include <memory>
#include <optional>

class SelectionSession;
class SelectionView;

/// The overlay of one screen: a borderless window that covers it and holds one selection view.
class SelectionWindow : public QWidget {
    Q_OBJECT

public:
    /// `backdrop` is the picture to paint below the overlay where the window cannot be translucent.
    SelectionWindow(const Platform::Screen& screen, std::weak_ptr<SelectionSession> session,
                    std::optional<QPixmap> backdrop);

    SelectionView& view() const { return *m_view; }

    /// Whether this is the window for `screen`: its own one, where it stood and as it was.
    bool covers(const Platform::Screen& screen) const;

    /// Tells where the screen's bottom left is in global points; another primary screen moves it.
    void setScreenOrigin(Geometry::Point origin);

    /// Takes the window and its view out of their session.
    void detach();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    std::weak_ptr<SelectionSession> m_session;
    Platform::Screen m_screen;
    QRect m_place;         // of the screen on the desktop, Qt's
    SelectionView* m_view; // our child
};
