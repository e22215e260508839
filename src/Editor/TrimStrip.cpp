#include "Editor/TrimStrip.h"

#include "Chrome.h"
#include "Editor/TrimHandle.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

constexpr int heightOfAll = 46;
constexpr int leastWidth = 200;
constexpr int edge = 3; // of the yellow frame
constexpr double radius = 4;
constexpr double cursorWidth = 2;

} // namespace

TrimStrip::TrimStrip(QWidget* parent)
    : QWidget(parent)
    , m_start(makeHandle(TrimModel::Handle::start))
    , m_end(makeHandle(TrimModel::Handle::end))
{
    setObjectName(QStringLiteral("TrimStrip"));
    setAccessibleName(QStringLiteral("Frames"));
    setMinimumWidth(leastWidth);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

TrimHandle* TrimStrip::makeHandle(TrimModel::Handle side)
{
    auto* handle = new TrimHandle(side, this);
    connect(handle, &TrimHandle::dragBegan, this, [this, side] { Q_EMIT dragBegan(side); });
    connect(handle, &TrimHandle::dragged, this,
            [this, side](double x) { Q_EMIT moved(side, line().seconds(x)); });
    connect(handle, &TrimHandle::wanted, this,
            [this, side](double time) { Q_EMIT moved(side, time); });
    connect(handle, &TrimHandle::stepped, this,
            [this, side](int frames) { Q_EMIT stepped(side, frames); });
    return handle;
}

QSize TrimStrip::sizeHint() const
{
    return {leastWidth, heightOfAll};
}

TrimHandle& TrimStrip::handle(TrimModel::Handle side)
{
    return side == TrimModel::Handle::start ? *m_start : *m_end;
}

QRectF TrimStrip::frameArea() const
{
    return QRectF(rect()).adjusted(TrimHandle::breadth, edge, -TrimHandle::breadth, -edge);
}

FilmLine TrimStrip::line() const
{
    const QRectF area = frameArea();
    return {m_model.frames().duration(), area.left(), area.width()};
}

int TrimStrip::frameCount(double aspect) const
{
    const QRectF area = frameArea();
    const double width = std::max(area.height() * aspect, 8.0);
    return std::max(static_cast<int>(std::lround(area.width() / width)), 1);
}

QSize TrimStrip::framePixels(double aspect) const
{
    const double height = frameArea().height() * devicePixelRatioF();
    return {static_cast<int>(std::ceil(height * aspect)), static_cast<int>(std::ceil(height))};
}

double TrimStrip::frameTime(int index, int count) const
{
    return m_model.frames().duration() * (index + 0.5) / count;
}

void TrimStrip::expectFrames(int count)
{
    if (static_cast<int>(m_images.size()) != count) {
        std::vector<QImage> images(static_cast<std::size_t>(count));
        // Until better ones come.
        for (std::size_t i = 0; i < images.size() && !m_images.empty(); ++i)
            images[i] = m_images[i * m_images.size() / images.size()];
        m_images = std::move(images);
    }
    update();
}

void TrimStrip::setFrame(int index, const QImage& image)
{
    if (index < 0 || index >= static_cast<int>(m_images.size()))
        return;
    m_images[static_cast<std::size_t>(index)] = image;
    update();
}

bool TrimStrip::hasAllFrames() const
{
    return !m_images.empty() && std::none_of(m_images.begin(), m_images.end(),
                                             [](const QImage& image) { return image.isNull(); });
}

void TrimStrip::showModel(const TrimModel& model)
{
    m_model = model;
    placeHandles();
    update();
}

void TrimStrip::showTime(double time)
{
    m_time = time;
    update();
}

void TrimStrip::placeHandles()
{
    const FilmRange range = m_model.range();
    const double duration = m_model.frames().duration();
    m_start->showTime(range.start, duration);
    m_end->showTime(range.end, duration);
    const int left = static_cast<int>(std::lround(line().x(range.start)));
    const int right = std::max(static_cast<int>(std::lround(line().x(range.end))), left + 1);
    m_start->setGeometry(left - TrimHandle::breadth, 0, TrimHandle::breadth, height());
    m_end->setGeometry(right, 0, TrimHandle::breadth, height());
}

void TrimStrip::resizeEvent(QResizeEvent*)
{
    placeHandles();
    Q_EMIT resized();
}

void TrimStrip::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        seekTo(event->position().x());
}

void TrimStrip::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons().testFlag(Qt::LeftButton))
        seekTo(event->position().x());
}

void TrimStrip::seekTo(double x)
{
    Q_EMIT sought(line().seconds(x));
}

void TrimStrip::paintFrames(QPainter& painter) const
{
    const QRectF area = frameArea();
    const double step = area.width() / std::max<double>(static_cast<double>(m_images.size()), 1);
    for (std::size_t i = 0; i < m_images.size(); ++i) {
        const QImage& image = m_images[i];
        if (image.isNull())
            continue;
        const QRectF cell(area.left() + step * static_cast<double>(i), area.top(), step,
                          area.height());
        // The middle of the frame fills the cell.
        const double scale = std::max(cell.width() / image.width(), cell.height() / image.height());
        QRectF source(0, 0, cell.width() / scale, cell.height() / scale);
        source.moveCenter(QRectF(image.rect()).center());
        painter.drawImage(cell, image, source);
    }
}

void TrimStrip::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setPen(Qt::NoPen);
    QPainterPath all;
    all.addRoundedRect(QRectF(rect()).adjusted(0, edge, 0, -edge), radius, radius);
    painter.fillPath(all, Chrome::color("#16181B"));
    paintFrames(painter);

    // What is left out is dark.
    const QRectF area = frameArea();
    const double from = m_start->geometry().right() + 1;
    const double to = m_end->geometry().left();
    const QColor shade = Chrome::color("#0B0C0E", 0.66);
    painter.fillRect(QRectF(area.left(), area.top(), from - area.left(), area.height()), shade);
    painter.fillRect(QRectF(to, area.top(), area.right() - to, area.height()), shade);

    const QColor yellow = Chrome::color("#FFCC00");
    painter.fillRect(QRectF(from, 0, to - from, edge), yellow);
    painter.fillRect(QRectF(from, height() - edge, to - from, edge), yellow);

    const double ratio = devicePixelRatioF(); // it stands on whole pixels
    const double x = std::clamp(std::round(line().x(m_time) * ratio) / ratio, from,
                                std::max(from, to - cursorWidth));
    painter.fillRect(QRectF(x - 1, edge, cursorWidth + 2, height() - 2 * edge),
                     Chrome::color("#000000", 0.45));
    painter.fillRect(QRectF(x, edge, cursorWidth, height() - 2 * edge), Qt::white);
}
