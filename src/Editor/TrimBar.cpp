#include "Editor/TrimBar.h"

#include "ChromeButton.h"
#include "Editor/PlayerBar.h"
#include "Editor/TrimStrip.h"
#include "Media/Player.h"
#include "NumberLabel.h"

#include <QHBoxLayout>
#include <QMouseEvent>

#include <cmath>

namespace {

constexpr double textSize = 12;
constexpr int spacing = 10;
constexpr QMargins insets = {10, 9, 10, 9};

/// "0:07.25"
QString lengthText(double seconds)
{
    const auto hundredths = std::llround(seconds * 100);
    const auto whole = hundredths / 100;
    return clockText(static_cast<double>(whole)) + u'.' +
           QString::number(hundredths % 100).rightJustified(2, QLatin1Char('0'));
}

} // namespace

TrimBar::TrimBar(QWidget* parent)
    : ChromeBarView(parent)
    , m_play(makePlayButton())
    , m_strip(new TrimStrip)
    , m_length(new NumberLabel(QStringLiteral("0:00.00"), textSize))
    , m_cancel(new ChromeButton(QStringLiteral("Cancel")))
    , m_trim(new ChromeButton(QStringLiteral("Trim")))
{
    setObjectName(QStringLiteral("TrimBar"));
    setAccessibleName(QStringLiteral("Trim"));
    m_length->setToolTip(QStringLiteral("Length of the selection"));
    m_cancel->setToolTip(QStringLiteral("Leave the range as it was (Esc)"));
    m_trim->setToolTip(QStringLiteral("Keep what is between the yellow handles (Return)"));
    m_trim->setAccent(Chrome::Accent::blue);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(insets);
    row->setSpacing(spacing);
    for (QWidget* item :
         std::initializer_list<QWidget*>{m_play, m_strip, m_length, m_cancel, m_trim})
        row->addWidget(item);
    connect(m_play, &ChromeButton::clicked, this, &TrimBar::playClicked);
    connect(m_trim, &ChromeButton::clicked, this, &TrimBar::trimClicked);
    connect(m_cancel, &ChromeButton::clicked, this, &TrimBar::cancelClicked);
}

void TrimBar::showState(const PlayerState& state)
{
    showPlaying(*m_play, state.playing);
    m_strip->showTime(state.time);
}

void TrimBar::showModel(const TrimModel& model)
{
    const FilmRange range = model.range();
    m_length->setText(lengthText(range.end - range.start));
    m_strip->showModel(model);
}

void TrimBar::mousePressEvent(QMouseEvent* event)
{
    event->accept();
}
