#include "Editor/PlayerBar.h"

#include "ChromeButton.h"
#include "Editor/PlayerSlider.h"
#include "Media/Player.h"
#include "NumberLabel.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QSignalBlocker>

#include <algorithm>
#include <cmath>

using Symbols::Symbol;

namespace {

constexpr double symbolSize = 12;
constexpr double textSize = 12;
constexpr int spacing = 10;
constexpr QMargins insets = {10, 8, 14, 8};
constexpr int volumeWidth = 72;
constexpr int percent = 100;

int milliseconds(double seconds)
{
    constexpr double most = 2e9;
    return static_cast<int>(std::clamp(seconds * 1000, 0.0, most));
}

void setImage(ChromeButton& button, Symbol symbol, const char* meaning)
{
    if (button.image() && button.image()->symbol == symbol)
        return;
    const QString text = QString::fromUtf8(meaning);
    button.setImage({symbol, symbolSize, Symbols::Weight::semibold, text});
    button.setToolTip(text);
}

} // namespace

QString clockText(double seconds)
{
    const auto whole = static_cast<long long>(std::max(seconds, 0.0) + 1e-4);
    const long long minutes = whole / 60;
    const auto two = [](long long number) {
        return QString::number(number).rightJustified(2, QLatin1Char('0'));
    };
    if (minutes < 60)
        return QStringLiteral("%1:%2").arg(QString::number(minutes), two(whole % 60));
    return QStringLiteral("%1:%2:%3")
        .arg(QString::number(minutes / 60), two(minutes % 60), two(whole % 60));
}

ChromeButton* makePlayButton()
{
    auto* button = new ChromeButton(QString());
    showPlaying(*button, false);
    return button;
}

void showPlaying(ChromeButton& button, bool isPlaying)
{
    if (isPlaying)
        setImage(button, Symbol::pauseFill, "Pause (Space)");
    else
        setImage(button, Symbol::playFill, "Play (Space)");
}

PlayerBar::PlayerBar(QWidget* parent)
    : ChromeBarView(parent)
    , m_play(makePlayButton())
    , m_elapsed(new NumberLabel(QStringLiteral("0:00"), textSize))
    , m_position(new PlayerSlider)
    , m_total(new NumberLabel(QStringLiteral("0:00"), textSize))
    , m_mute(new ChromeButton(QString()))
    , m_volume(new PlayerSlider)
{
    setObjectName(QStringLiteral("PlayerBar"));
    setAccessibleName(QStringLiteral("Player"));
    m_elapsed->setToolTip(QStringLiteral("Elapsed"));
    m_total->setToolTip(QStringLiteral("Length"));
    m_position->setAccessibleName(QStringLiteral("Position"));
    m_volume->setAccessibleName(QStringLiteral("Volume"));
    m_volume->setToolTip(m_volume->accessibleName());
    m_volume->setFixedWidth(volumeWidth);
    m_volume->setRange(0, percent);
    m_volume->setValue(percent);
    setImage(*m_mute, Symbol::speakerWaveFill, "Mute (M)");

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(insets);
    row->setSpacing(spacing);
    for (QWidget* item :
         std::initializer_list<QWidget*>{m_play, m_elapsed, m_position, m_total, m_mute, m_volume})
        row->addWidget(item);

    connect(m_play, &ChromeButton::clicked, this, &PlayerBar::playClicked);
    connect(m_mute, &ChromeButton::clicked, this, &PlayerBar::muteClicked);
    connect(m_position, &PlayerSlider::sliderPressed, this, &PlayerBar::seekBegan);
    connect(m_position, &PlayerSlider::sliderReleased, this, &PlayerBar::seekEnded);
    connect(m_position, &PlayerSlider::valueChanged, this,
            [this](int value) { Q_EMIT sought(m_range.start + value / 1000.0); });
    connect(m_volume, &PlayerSlider::valueChanged, this,
            [this](int value) { Q_EMIT volumeChosen(value / double{percent}); });
}

void PlayerBar::show(const PlayerState& state, FilmRange range)
{
    m_range = range;
    const bool isReady = state.phase == PlayerState::Phase::ready;
    const double length = range.end - range.start;
    // The last frame may stand for long.
    const double time = state.atEnd && !state.seeking ? range.end : state.time;
    const double elapsed = std::clamp(time - range.start, 0.0, std::max(length, 0.0));
    for (QWidget* control : std::initializer_list<QWidget*>{m_play, m_position})
        control->setEnabled(isReady);
    showPlaying(*m_play, state.playing);
    m_total->setText(clockText(length));
    m_elapsed->setText(clockText(elapsed));
    // As wide as its last text, so that nothing moves.
    m_elapsed->setMinimumWidth(m_total->sizeHint().width());
    if (!m_position->isSliderDown()) {
        const QSignalBlocker quiet(m_position);
        m_position->setRange(0, milliseconds(length));
        m_position->setValue(milliseconds(elapsed));
    }
    m_mute->setVisible(state.hasSound);
    m_volume->setVisible(state.hasSound);
    if (state.muted)
        setImage(*m_mute, Symbol::speakerSlashFill, "Unmute (M)");
    else
        setImage(*m_mute, Symbol::speakerWaveFill, "Mute (M)");
    if (!m_volume->isSliderDown()) {
        const QSignalBlocker quiet(m_volume);
        m_volume->setValue(state.muted ? 0 : static_cast<int>(std::lround(state.volume * percent)));
    }
}

void PlayerBar::mousePressEvent(QMouseEvent* event)
{
    event->accept();
}
