#include "ChipView.h"

#include "CaptureKind.h"
#include "ChipManager.h"
#include "ChipPanel.h"
#include "Chrome.h"
#include "ChromeButton.h"
#include "ChromeViews.h"
#include "Fade.h"
#include "PassThroughOverlay.h"
#include "Platform/Pasteboard.h"
#include "Platform/Screens.h"
#include "Support/CaptureFiles.h"

#include <QApplication>
#include <QDrag>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

using namespace std::chrono_literals;
using Symbols::Symbol;

namespace {

constexpr double symbolSize = 12;
constexpr double badgeTextSize = 10;
constexpr int badgeHeight = 18;
constexpr auto badgeTime = 1600ms;
constexpr auto badgeFadeTime = 400ms;
/// How far the pointer may move before a click becomes a drag, in points.
constexpr double clickReach = 4;

/// The line around a chip, inside its box.
void paintBorder(QPainter& painter, const QRectF& box)
{
    QColor white(Qt::white);
    white.setAlphaF(0.35F);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(white, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), ChipView::cornerRadius - 0.5,
                            ChipView::cornerRadius - 0.5);
}

/// That line above everything else on a chip.
class ChipBorder : public QWidget {
public:
    explicit ChipBorder(ChipView* view)
        : QWidget(view)
        , m_view(*view)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        paintBorder(painter, m_view.body());
    }

private:
    const ChipView& m_view; // its parent
};

/// A pill with a text in its middle, as much wider than the text as `padding` says on either side.
ChromePillView* textPill(const QString& text, int padding, QWidget* parent)
{
    auto* pill = new ChromePillView(parent);
    auto* label = new QLabel(text, pill);
    label->setFont(Chrome::font(badgeTextSize));
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, Chrome::textPrimary());
    label->setPalette(palette);
    label->adjustSize();
    label->move(padding, (badgeHeight - label->height()) / 2);
    pill->resize(label->width() + 2 * padding, badgeHeight);
    // A press on it is one on the chip.
    pill->setAttribute(Qt::WA_TransparentForMouseEvents);
    return pill;
}

} // namespace

ChipView::ChipView(QUrl file, const ChipContent& content, Geometry::Size size, OnEdit onEdit,
                   Clock clock, QWidget* parent)
    : QWidget(parent)
    , m_file(std::move(file))
    , m_thumbnail(content.thumbnail)
    , m_size(size)
    , m_onEdit(std::move(onEdit))
    , m_clock(std::move(clock))
{
    setObjectName(QStringLiteral("ChipView"));
    setAccessibleName(QFileInfo(m_file.toLocalFile()).fileName());
    resize(static_cast<int>(std::ceil(size.width)), static_cast<int>(std::ceil(size.height)));
    setupOverlay();
    setupCopiedBadge();
    if (content.badge)
        setupInfoBadge(*content.badge);
    m_border = new ChipBorder(this);
    m_border->setGeometry(rect());
    if (captureKind(m_file) == CaptureKind::picture)
        showCopiedBadge();
}

void ChipView::setManager(ChipManager* manager)
{
    m_manager = manager;
}

double ChipView::overlayOpacity() const
{
    return m_overlayFade->opacity();
}

double ChipView::copiedBadgeOpacity() const
{
    return m_copiedFade->opacity();
}

// What is on it

void ChipView::setupOverlay()
{
    m_overlay = new PassThroughOverlay([this] { return body(); }, cornerRadius, this);
    m_overlay->setAccessibleName(QStringLiteral("Actions"));
    m_overlay->setGeometry(rect());
    m_overlayFade = new Fade(*m_overlay, 0);

    constexpr int dismissSide = 22;
    constexpr int dismissInset = 6;
    constexpr int side = 30;
    constexpr int gap = 10;
    const double left = (m_size.width - 2 * side - gap) / 2;
    const double top = (m_size.height - side) / 2;
    const QPoint copyOrigin(static_cast<int>(std::lround(left)),
                            static_cast<int>(std::lround(top)));

    overlayButton(Symbol::xmark, QStringLiteral("Dismiss"), &ChipView::closeClicked)
        ->setGeometry(dismissInset, dismissInset, dismissSide, dismissSide);
    overlayButton(Symbol::docOnDoc, QStringLiteral("Copy to clipboard"), &ChipView::copyClicked)
        ->setGeometry(QRect(copyOrigin, QSize(side, side)));
    const QString edit = captureKind(m_file) == CaptureKind::picture
                             ? QStringLiteral("Annotate")
                             : QStringLiteral("Open editor");
    overlayButton(Symbol::pencil, edit, &ChipView::editClicked)
        ->setGeometry(QRect(copyOrigin + QPoint(side + gap, 0), QSize(side, side)));
}

ChromeButton* ChipView::overlayButton(Symbol symbol, const QString& tip, void (ChipView::*action)())
{
    auto* button = new ChromeButton(
        Symbols::Image{symbol, symbolSize, Symbols::Weight::semibold, tip}, m_overlay);
    button->setToolTip(tip);
    connect(button, &ChromeButton::clicked, this, action);
    return button;
}

void ChipView::setupCopiedBadge()
{
    constexpr int padding = 8;
    constexpr int bottomInset = 6;
    m_copiedBadge = textPill(QStringLiteral("Copied ✓"), padding, this);
    m_copiedBadge->move((width() - m_copiedBadge->width()) / 2,
                        height() - bottomInset - badgeHeight);
    m_copiedFade = new Fade(*m_copiedBadge, 0);
}

void ChipView::setupInfoBadge(const QString& text)
{
    constexpr int padding = 6;
    constexpr int inset = 6;
    QWidget* badge = textPill(text, padding, this);
    badge->move(width() - badge->width() - inset, inset);
}

void ChipView::showCopiedBadge()
{
    m_copiedFade->set(1);
    m_clock.after(badgeTime, [self = QPointer(this), showing = ++m_badgeShowings] {
        if (self && showing == self->m_badgeShowings)
            self->m_copiedFade->animateTo(0, badgeFadeTime);
    });
}

void ChipView::closeClicked()
{
    if (auto* panel = qobject_cast<ChipPanel*>(window()))
        panel->fadeClose();
}

void ChipView::copyClicked()
{
    Platform::PasteboardItem item = {.png = std::nullopt, .fileURL = m_file};
    // The bytes as they are, whichever of the picture formats they are.
    if (captureKind(m_file) == CaptureKind::picture)
        item.png = CaptureFiles::contents(m_file);
    Platform::writePasteboard(item);
    showCopiedBadge();
}

void ChipView::editClicked()
{
    if (m_onEdit)
        m_onEdit(m_file);
}

// The picture

QRectF ChipView::body() const
{
    const double scale = devicePixelRatioF();
    const auto whole = [scale](double points) { return std::round(points * scale) / scale; };
    const QSizeF size(whole(m_size.width), whole(m_size.height));
    return {QPointF(0, height() - size.height()), size};
}

void ChipView::paintPicture(QPainter& painter)
{
    const double scale = devicePixelRatioF();
    const QRectF box = body();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().window());
    painter.drawRoundedRect(box, cornerRadius, cornerRadius);

    // Filled with the picture as a pattern: clipping to round corners would leave steps.
    const QSize pixels = (box.size() * scale).toSize();
    if (m_scaled.size() != pixels)
        m_scaled = m_thumbnail.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QBrush picture(m_scaled);
    picture.setTransform(QTransform::fromTranslate(box.x(), box.y()).scale(1 / scale, 1 / scale));
    painter.setBrush(picture);
    painter.drawRoundedRect(box, cornerRadius, cornerRadius);
}

void ChipView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paintPicture(painter);
}

void ChipView::resizeEvent(QResizeEvent*)
{
    m_overlay->setGeometry(rect());
    m_border->setGeometry(rect());
}

// The mouse

void ChipView::enterEvent(QEnterEvent*)
{
    m_overlayFade->animateTo(1);
}

void ChipView::leaveEvent(QEvent*)
{
    m_overlayFade->animateTo(0);
}

void ChipView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_mouseDownLocation = event->position();
    m_didDrag = false;
    m_isMovingStack = false;
    m_lastDragScreenPoint = Platform::mouseLocation();
}

void ChipView::mouseMoveEvent(QMouseEvent* event)
{
    if (!event->buttons().testFlag(Qt::LeftButton) || !m_mouseDownLocation)
        return;
    if (m_isMovingStack || event->modifiers().testFlag(Qt::ControlModifier)) {
        moveStack();
        return;
    }
    const QPointF way = event->position() - *m_mouseDownLocation;
    if (!m_didDrag && std::hypot(way.x(), way.y()) > clickReach)
        dragFile(*m_mouseDownLocation);
}

void ChipView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !m_mouseDownLocation)
        return;
    m_mouseDownLocation.reset();
    if (m_isMovingStack) {
        m_isMovingStack = false;
        if (m_manager)
            m_manager->stackMoved();
    } else if (!m_didDrag) {
        editClicked();
    }
}

void ChipView::moveStack()
{
    m_isMovingStack = true;
    const Geometry::Point now = Platform::mouseLocation();
    if (m_manager) {
        m_manager->moveStack(now.x - m_lastDragScreenPoint.x, now.y - m_lastDragScreenPoint.y);
    }
    m_lastDragScreenPoint = now;
}

void ChipView::dragFile(QPointF press)
{
    m_didDrag = true;
    auto mime = std::make_unique<QMimeData>();
    mime->setUrls({m_file});
    // Not from this view: another capture may push the chip out while the user still drags.
    auto* drag = new QDrag(qApp); // deletes itself
    drag->setMimeData(mime.release());
    drag->setPixmap(dragPicture());
    drag->setHotSpot(press.toPoint());
    Platform::prepareDrag();
    // Nothing comes after: by then this view may be gone. The chip stays whatever the answer is.
    drag->exec(Qt::CopyAction, Qt::CopyAction);
}

QPixmap ChipView::dragPicture()
{
    const double scale = devicePixelRatioF();
    QPixmap result((QSizeF(size()) * scale).toSize());
    result.setDevicePixelRatio(scale);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    paintPicture(painter);
    paintBorder(painter, body());
    return result;
}
