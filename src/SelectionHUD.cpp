#include "SelectionHUD.h"

#include "ChromeButton.h"
#include "NumberLabel.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPointer>

#include <utility>

using namespace std::chrono_literals;
using Symbols::Symbol;

namespace {

constexpr int spacing = 8;
constexpr QMargins insets = {14, 8, 10, 8};
constexpr int separatorHeight = 20;
constexpr double textSize = 13;
constexpr double symbolSize = 12;

/// How long the camera gets until its bubble is there; the switch stays as it is meanwhile.
constexpr auto cameraTime = 700ms;

ChromeButton* symbolButton(Symbol symbol, const char* meaning)
{
    const QString text = QString::fromLatin1(meaning);
    auto* button =
        new ChromeButton(Symbols::Image{symbol, symbolSize, Symbols::Weight::semibold, text});
    button->setToolTip(text);
    return button;
}

ChromeButton* titleButton(const char* title, Chrome::Accent accent, const char* name)
{
    auto* button = new ChromeButton(QString::fromUtf8(title));
    button->setAccent(accent);
    button->setAccessibleName(QString::fromLatin1(name)); // without the key
    return button;
}

} // namespace

SelectionHUD::SelectionHUD(SelectionMode mode, SelectionHooks hooks, Clock clock, Actions actions,
                           QWidget* parent)
    : ChromeBarView(parent)
    , m_hooks(std::move(hooks))
    , m_clock(std::move(clock))
    , m_actions(std::move(actions))
    , m_dimsLabel(new NumberLabel(QStringLiteral("0 × 0"), textSize))
{
    setObjectName(QStringLiteral("SelectionHUD"));
    setAccessibleName(QStringLiteral("Selection bar"));
    setCursor(Qt::ArrowCursor);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(insets);
    row->setSpacing(spacing);
    row->addWidget(m_dimsLabel);
    row->addWidget(new ChromeSeparator(separatorHeight));
    switch (mode) {
    case SelectionMode::screenshot:
        addForScreenshot();
        break;
    case SelectionMode::record:
        addForRecording();
        break;
    }
    auto* cancel = symbolButton(Symbol::xmark, "Cancel (Esc)");
    connect(cancel, &ChromeButton::clicked, this, [this] { m_actions.onCancel(); });
    row->addWidget(cancel);
    fit();
    refreshToggleTints();
}

void SelectionHUD::addForScreenshot()
{
    auto* confirm = titleButton("Capture  ↩", Chrome::Accent::blue, "Capture");
    connect(confirm, &ChromeButton::clicked, this, [this] { m_actions.onConfirm(false); });
    layout()->addWidget(confirm);
}

void SelectionHUD::addForRecording()
{
    m_micButton = symbolButton(Symbol::micFill, "Record microphone audio");
    connect(m_micButton, &ChromeButton::clicked, this, [this] {
        m_hooks.toggleMic();
        refreshToggleTints();
    });
    m_cameraButton = symbolButton(Symbol::videoFill, "Camera bubble on/off");
    connect(m_cameraButton, &ChromeButton::clicked, this, &SelectionHUD::cameraTapped);
    auto* readjust = symbolButton(Symbol::crop, "Redo selection");
    connect(readjust, &ChromeButton::clicked, this, [this] { m_actions.onReadjust(); });
    auto* gif = titleButton("GIF  ⌥↩", Chrome::Accent::none, "Record as GIF");
    gif->setToolTip(QStringLiteral("Record, then auto-convert to GIF"));
    connect(gif, &ChromeButton::clicked, this, [this] { m_actions.onConfirm(true); });
    auto* record = titleButton("Record  ↩", Chrome::Accent::red, "Record");
    connect(record, &ChromeButton::clicked, this, [this] { m_actions.onConfirm(false); });

    layout()->addWidget(m_micButton);
    layout()->addWidget(m_cameraButton);
    layout()->addWidget(readjust);
    layout()->addWidget(new ChromeSeparator(separatorHeight));
    layout()->addWidget(gif);
    layout()->addWidget(record);
}

void SelectionHUD::update(int width, int height)
{
    const QString text = QStringLiteral("%1 × %2").arg(width).arg(height);
    if (text == m_dimsLabel->text())
        return;
    m_dimsLabel->setText(text);
    fit();
}

void SelectionHUD::fit()
{
    layout()->activate();
    resize(sizeHint());
}

void SelectionHUD::refreshToggleTints()
{
    if (m_micButton)
        m_micButton->setToggledOn(m_hooks.isMicOn());
    if (m_cameraButton)
        m_cameraButton->setToggledOn(m_hooks.isCameraOn());
}

void SelectionHUD::cameraTapped()
{
    m_hooks.toggleCamera();
    ++m_awaitedRefreshes;
    m_clock.after(cameraTime, [self = QPointer(this)] {
        if (!self)
            return;
        --self->m_awaitedRefreshes;
        self->refreshToggleTints();
    });
}

void SelectionHUD::cameraAnswered()
{
    if (m_awaitedRefreshes == 0) // or else it shows soon
        refreshToggleTints();
}

void SelectionHUD::mousePressEvent(QMouseEvent* event)
{
    event->accept(); // between two buttons it is no press on the selection below
}
