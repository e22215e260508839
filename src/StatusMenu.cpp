#include "StatusMenu.h"

#include "ChipPosition.h"
#include "Platform/LoginItem.h"
#include "Platform/Menus.h"
#include "Preferences.h"
#include "StatusIcon.h"
#include "Support/Log.h"

#include <QActionGroup>
#include <QCoreApplication>

namespace {

/// Shows a key beside an item's title. The keys themselves are the global hot keys; one in a tray
/// menu never fires.
void showKey(QAction& item, const QKeySequence& key)
{
    item.setShortcut(key);
    item.setShortcutVisibleInContextMenu(true);
}

constexpr auto optionShift = Qt::AltModifier | Qt::ShiftModifier;

/// Sets a tick without calling what the item does.
void setTick(QAction& item, bool on)
{
    item.setChecked(on); // items act on triggered(), which only the user sends
}

} // namespace

StatusMenu::StatusMenu(Preferences& preferences, Commands commands)
    : m_preferences(preferences)
    , m_commands(std::move(commands))
{
    build();
}

StatusMenu::~StatusMenu()
{
    m_statusItem.hide();
}

void StatusMenu::build()
{
    QAction* item = m_menu.addAction(QStringLiteral("Capture Area"), m_commands.captureArea);
    showKey(*item, QKeySequence(optionShift | Qt::Key_S));

    m_recordItem = m_menu.addAction(QString(), m_commands.toggleRecording);
    showKey(*m_recordItem, QKeySequence(optionShift | Qt::Key_R));

    m_annotateItem =
        m_menu.addAction(QStringLiteral("Annotate Last Capture"), m_commands.annotateLast);
    showKey(*m_annotateItem, QKeySequence(optionShift | Qt::Key_E));

    m_menu.addAction(QStringLiteral("Open Captures Folder"), m_commands.openFolder);
    m_menu.addSeparator();

    m_cameraItem = m_menu.addAction(QStringLiteral("Camera Bubble"));
    m_cameraItem->setCheckable(true);
    connect(m_cameraItem, &QAction::triggered, this, [this] {
        // The click has flipped the tick already; the command says what it really is.
        setTick(*m_cameraItem, !m_cameraItem->isChecked());
        m_commands.toggleCamera();
    });

    m_micItem = m_menu.addAction(QStringLiteral("Record Microphone Audio"));
    m_micItem->setCheckable(true);
    connect(m_micItem, &QAction::triggered, this, m_commands.toggleMic);
    m_menu.addSeparator();

    buildPositionMenu();

    m_launchAtLoginItem = m_menu.addAction(QStringLiteral("Launch at Login"));
    m_launchAtLoginItem->setCheckable(true);
    setTick(*m_launchAtLoginItem, Platform::loginItemEnabled());
    connect(m_launchAtLoginItem, &QAction::triggered, this, [this] { toggleLaunchAtLogin(); });
    m_menu.addSeparator();

    item = m_menu.addAction(QStringLiteral("Quit Tamrik"), [] { QCoreApplication::quit(); });
    showKey(*item, QKeySequence(Qt::ControlModifier | Qt::Key_Q));

    connect(&m_menu, &QMenu::aboutToShow, this, &StatusMenu::validateItems);
    validateItems();
    setMicOn(m_preferences.recordMic());
    setRecording(false);

    m_menu.setAccessibleName(QStringLiteral("Tamrik"));
    m_statusItem.setToolTip(QStringLiteral("Tamrik"));
    m_statusItem.setContextMenu(&m_menu);
    // The right button opens the context menu by itself. A click right after one that opened the
    // menu, which a key has closed meanwhile, comes as a double click.
    connect(&m_statusItem, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
                    popUp();
            });
}

void StatusMenu::buildPositionMenu()
{
    m_positionMenu.setTitle(QStringLiteral("Thumbnail Position"));
    m_positionMenu.setAccessibleName(m_positionMenu.title());
    auto* group = new QActionGroup(&m_positionMenu); // one tick at a time
    for (const ChipPosition position : allChipPositions) {
        QAction* item = m_positionMenu.addAction(menuTitle(position));
        item->setCheckable(true);
        item->setData(rawValue(position));
        group->addAction(item);
        connect(item, &QAction::triggered, this, [this, item] { positionChanged(*item); });
    }
    connect(&m_positionMenu, &QMenu::aboutToShow, this, &StatusMenu::menuNeedsUpdate);
    menuNeedsUpdate();
    m_menu.addMenu(&m_positionMenu);
}

void StatusMenu::show()
{
    m_statusItem.show();
}

void StatusMenu::popUp()
{
    Platform::popUpAtPointer(m_menu, m_commands.mayPopUp);
}

void StatusMenu::setRecording(bool recording)
{
    m_recordItem->setText(recording ? QStringLiteral("Stop Recording")
                                    : QStringLiteral("Start Recording"));
    m_statusItem.setIcon(StatusIcon::icon(recording));
}

void StatusMenu::setCameraShown(bool shown)
{
    setTick(*m_cameraItem, shown);
}

void StatusMenu::setMicOn(bool on)
{
    setTick(*m_micItem, on);
}

void StatusMenu::menuNeedsUpdate()
{
    const QString current = rawValue(m_preferences.chipPosition());
    for (QAction* item : m_positionMenu.actions())
        setTick(*item, item->data().toString() == current);
}

void StatusMenu::validateItems()
{
    m_annotateItem->setEnabled(m_commands.hasLastCapture());
}

void StatusMenu::positionChanged(const QAction& item)
{
    const auto position = chipPositionFromRawValue(item.data().toString());
    if (!position)
        return;
    m_preferences.save(*position);
    m_commands.chipPositionChanged();
}

void StatusMenu::toggleLaunchAtLogin()
{
    // The click has flipped the tick already.
    const bool tickBefore = !m_launchAtLoginItem->isChecked();
    const bool enabled = Platform::loginItemEnabled();
    const PossibleFailure failure =
        enabled ? Platform::disableLoginItem() : Platform::enableLoginItem();
    if (failure) {
        Log::line(QStringLiteral("launch-at-login toggle failed: ") +
                  QString::fromStdString(failure->message));
    }
    setTick(*m_launchAtLoginItem, failure ? tickBefore : !enabled);
}
