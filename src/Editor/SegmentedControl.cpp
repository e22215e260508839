#include "Editor/SegmentedControl.h"

#include "Chrome.h"

#include <QAbstractButton>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int segmentWidth = 30;
constexpr int controlHeight = 24;
constexpr double radius = 6;
constexpr double titleSize = 12;

/// One title; the control paints what is behind it.
class Segment : public QAbstractButton {
public:
    Segment(const QString& title, const QString& name, QWidget* parent)
        : QAbstractButton(parent)
    {
        setText(title);
        setAccessibleName(name);
        setCheckable(true);
        setAutoExclusive(true);
        setFocusPolicy(Qt::NoFocus);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setFont(Chrome::font(titleSize));
        painter.setPen(isChecked() ? QColor(Qt::white) : Chrome::iconNormal());
        painter.drawText(rect(), Qt::AlignCenter, text());
    }
};

} // namespace

SegmentedControl::SegmentedControl(const QStringList& titles, const QStringList& names,
                                   QWidget* parent)
    : QWidget(parent)
    , m_count(static_cast<int>(titles.size()))
{
    setFixedSize(m_count * segmentWidth, controlHeight);
    for (int i = 0; i < m_count; ++i) {
        auto* segment = new Segment(titles[i], names[i], this);
        segment->setGeometry(i * segmentWidth, 0, segmentWidth, controlHeight);
        segment->setChecked(i == m_selected);
        connect(segment, &QAbstractButton::clicked, this, [this, i] {
            setSelectedSegment(i);
            Q_EMIT chosen(i);
        });
    }
}

void SegmentedControl::setSelectedSegment(int segment)
{
    m_selected = segment;
    const auto segments = findChildren<QAbstractButton*>();
    segments[segment]->setChecked(true);
    update();
}

void SegmentedControl::paintEvent(QPaintEvent*)
{
    const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath shape;
    shape.addRoundedRect(box, radius, radius);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Chrome::buttonBorder(Chrome::Accent::none), 1));
    painter.setBrush(Chrome::buttonGradient(Chrome::Accent::none, true));
    painter.drawPath(shape);

    QPainterPath chosen;
    chosen.addRoundedRect(
        QRectF(m_selected * segmentWidth, 0, segmentWidth, height()).adjusted(1.5, 1.5, -1.5, -1.5),
        radius - 1, radius - 1);
    painter.setPen(QPen(Chrome::buttonBorder(Chrome::Accent::blue), 1));
    painter.setBrush(Chrome::buttonGradient(Chrome::Accent::blue, false));
    painter.drawPath(chosen);
}
