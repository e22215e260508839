#include "Editor/CanvasView.h"

#include "Editor/AnnotationRenderer.h"
#include "Editor/LabelField.h"
#include "Platform/Colors.h"

#include <QMouseEvent>
#include <QPainter>

#include <cmath>
#include <utility>

using Geometry::Point;

namespace {

constexpr double fieldWidth = 320;
constexpr double fieldPadding = 12;

/// A screen pixel that shows less than this of a picture's pixel shows it as a square.
constexpr double squarePixels = 2;

} // namespace

CanvasView::CanvasView(BaseImage image, QList<Annotation> annotations, QWidget* parent)
    : QWidget(parent)
    , m_image(std::move(image))
    , m_model(std::move(annotations))
{
    setObjectName(QStringLiteral("CanvasView"));
    setAccessibleName(QStringLiteral("Canvas"));
    setFocusPolicy(Qt::StrongFocus);
    m_model.onRedraw = [this] { update(); };
    setZoom(1);
    toolChanged();
}

CanvasView::~CanvasView() = default;

void CanvasView::setZoom(double zoom)
{
    m_zoom = zoom;
    resize(static_cast<int>(std::ceil(m_image.size.width * zoom)),
           static_cast<int>(std::ceil(m_image.size.height * zoom)));
    if (m_activeTextField)
        placeTextField();
    update();
}

void CanvasView::toolChanged()
{
    setCursor(m_model.tool() == EditorTool::select ? Qt::ArrowCursor : Qt::CrossCursor);
}

Geometry::Flip CanvasView::flip() const
{
    return Geometry::Flip({0, 0, m_image.size.width, m_image.size.height});
}

Point CanvasView::pointFrom(const QMouseEvent& event) const
{
    return flip().bottomLeftFromTopLeft(
        Geometry::TopLeftPoint{event.position().x() / m_zoom, event.position().y() / m_zoom});
}

// Text

void CanvasView::beginTextEntry(Point p)
{
    m_activeTextField = new LabelField(this);
    m_editingTextOrigin = p;
    placeTextField();
    connect(m_activeTextField, &LabelField::ended, this, [this] {
        commitActiveTextField();
        setFocus();
    });
    m_activeTextField->show();
    m_activeTextField->setFocus();
    Q_EMIT typingChanged(true);
}

void CanvasView::placeTextField()
{
    const double size = CanvasModel::textSize(m_model.strokeWidth());
    m_activeTextField->setLook(Annotation::color(m_model.colorHex()), size * m_zoom);
    const Geometry::TopLeftRect box = flip().topLeftFromBottomLeft(Geometry::Rect{
        m_editingTextOrigin.x, m_editingTextOrigin.y, fieldWidth, size + fieldPadding});
    m_activeTextField->setGeometry(
        QRectF(box.x * m_zoom, box.y * m_zoom, box.width * m_zoom, box.height * m_zoom)
            .toAlignedRect());
}

void CanvasView::commitActiveTextField()
{
    LabelField* const field = std::exchange(m_activeTextField, nullptr);
    if (!field)
        return;
    // It may be one of its own events that ends it, and hiding it takes the focus from it.
    field->disconnect(this);
    const QString typed = field->text();
    field->hide();
    field->deleteLater();
    m_model.commitText(typed, m_editingTextOrigin);
    Q_EMIT typingChanged(false);
}

// Pointer and keys

void CanvasView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore(); // the middle one moves the picture
        return;
    }
    setFocus(Qt::MouseFocusReason);
    commitActiveTextField();
    const Point p = pointFrom(*event);
    switch (m_model.mouseDown(p)) {
    case CanvasModel::Press::handled:
        return;
    case CanvasModel::Press::beginsText:
        beginTextEntry(p);
        return;
    }
}

void CanvasView::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons().testFlag(Qt::LeftButton))
        m_model.mouseDragged(pointFrom(*event));
    else
        event->ignore();
}

void CanvasView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_model.mouseUp();
    else
        event->ignore();
}

void CanvasView::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        m_model.deleteSelection();
        return;
    case Qt::Key_Escape:
        if (m_model.selectedID())
            m_model.deselect();
        else
            window()->close();
        return;
    default: // all other keys
        QWidget::keyPressEvent(event);
    }
}

// Drawing

void CanvasView::paintImage(QPainter& painter, const QRect& exposed)
{
    const double scale = devicePixelRatioF();
    const QSize shown = (QSizeF(size()) * scale).toSize(); // in pixels of the screen
    const double magnification = m_zoom * scale / m_image.pixelsPerPointX();
    // A picture that is shown far smaller than it is would lose whole lines if each pixel of the
    // screen looked at its nearest neighbours alone.
    const bool isReduced = magnification < 1;
    if (isReduced && m_reduced.size() != shown)
        m_reduced = m_image.pixels.scaled(shown, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (!isReduced)
        m_reduced = {};
    const QImage& source = isReduced ? m_reduced : m_image.pixels;
    const double factorX = source.width() / (m_image.size.width * m_zoom);
    const double factorY = source.height() / (m_image.size.height * m_zoom);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, magnification < squarePixels);
    painter.drawImage(QRectF(exposed), source,
                      QRectF(exposed.x() * factorX, exposed.y() * factorY,
                             exposed.width() * factorX, exposed.height() * factorY));
}

void CanvasView::paintSelection(QPainter& painter, const Annotation& selected) const
{
    constexpr double width = 1.5;
    constexpr double radius = 4;
    const Geometry::TopLeftRect box =
        flip().topLeftFromBottomLeft(AnnotationRenderer::bounds(selected));
    QPen pen(Platform::controlAccentColor(), width);
    pen.setCapStyle(Qt::FlatCap);
    pen.setDashPattern({5 / width, 4 / width}); // in widths of the line
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(box.x, box.y, box.width, box.height), radius, radius);
}

void CanvasView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    paintImage(painter, event->rect());
    painter.scale(m_zoom, m_zoom);
    painter.setClipRect(QRectF(0, 0, m_image.size.width, m_image.size.height));
    for (const Annotation& annotation : m_model.annotations())
        AnnotationRenderer::draw(painter, flip(), annotation, m_image);
    if (m_model.draft())
        AnnotationRenderer::draw(painter, flip(), *m_model.draft(), m_image);
    if (const Annotation* selected = m_model.selection())
        paintSelection(painter, *selected);
}
