#pragma once

#include "ChipContent.h"
#include "Support/Clock.h"
#include "Support/Geometry.h"
#include "Symbols.h"

#include <QImage>
#include <QPointer>
#include <QUrl>
#include <QWidget>

#include <functional>
#include <optional>

class ChipManager;
class ChromeButton;
class ChromePillView;
class Fade;
class PassThroughOverlay;

/// What a chip shows and does: the thumbnail, three buttons while the pointer is on it, and badges.
/// A click asks for the editor, a drag hands the file to another program, a drag with Command held
/// moves the whole stack.
class ChipView : public QWidget {
    Q_OBJECT

public:
    using OnEdit = std::function<void(const QUrl& file)>;

    /// In points.
    static constexpr double cornerRadius = 10;

    /// `size` is the chip's in points. The view is as many whole points, rounded up.
    ChipView(QUrl file, const ChipContent& content, Geometry::Size size, OnEdit onEdit, Clock clock,
             QWidget* parent = nullptr);

    /// What of the view is the chip, at its foot: its edges lie on whole pixels.
    QRectF body() const;

    const QUrl& fileURL() const { return m_file; }

    /// Who moves the stack; borrowed, may be gone.
    void setManager(ChipManager* manager);

    /// Says for a moment that the file was copied.
    void showCopiedBadge();

    /// How much is to be seen of them, from 0 to 1.
    double overlayOpacity() const;
    double copiedBadgeOpacity() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void setupOverlay();
    ChromeButton* overlayButton(Symbols::Symbol symbol, const QString& tip,
                                void (ChipView::*action)());
    void setupCopiedBadge();
    void setupInfoBadge(const QString& text);

    void closeClicked();
    void copyClicked();
    void editClicked();

    void dragFile(QPointF press);
    void moveStack();
    QPixmap dragPicture();
    /// The chip without its buttons and badges.
    void paintPicture(QPainter& painter);

    QPointer<ChipManager> m_manager;
    QUrl m_file;
    QImage m_thumbnail;
    /// The same in the pixels of the body as it was painted last.
    QImage m_scaled;
    Geometry::Size m_size;
    OnEdit m_onEdit;
    Clock m_clock;

    // The press that is under way.
    std::optional<QPointF> m_mouseDownLocation;
    bool m_didDrag = false;
    bool m_isMovingStack = false;
    Geometry::Point m_lastDragScreenPoint;

    // Child widgets, and their fades.
    PassThroughOverlay* m_overlay = nullptr;
    Fade* m_overlayFade = nullptr;
    ChromePillView* m_copiedBadge = nullptr;
    Fade* m_copiedFade = nullptr;
    QWidget* m_border = nullptr;
    /// Counts the showings of the badge; only the last one's end hides it.
    int m_badgeShowings = 0;
};
