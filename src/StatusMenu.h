#pragma once

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

#include <functional>

class Preferences;

/// The status item and its menu: every command of the program, the recording toggles, the place of
/// the thumbnails, launch at login, and Quit.
class StatusMenu : public QObject {
    Q_OBJECT

public:
    /// What the items do. All are set.
    struct Commands {
        std::function<void()> captureArea;
        std::function<void()> toggleRecording;
        std::function<void()> annotateLast;
        std::function<void()> openFolder;
        std::function<void()> toggleCamera;
        std::function<void()> toggleMic;
        /// Whether there is a last capture to annotate.
        std::function<bool()> hasLastCapture;
        /// Whether the menu may open at the pointer: not while a selection has keyboard and mouse.
        std::function<bool()> mayPopUp;
        /// The place of the thumbnails was changed and stored.
        std::function<void()> chipPositionChanged;
    };

    /// `preferences` is borrowed and outlives the menu.
    StatusMenu(Preferences& preferences, Commands commands);
    ~StatusMenu() override;

    /// Puts the item into the status area; it appears as soon as the desktop has one.
    void show();

    /// Opens the menu where the pointer is, as soon as it may; does nothing while it is open.
    void popUp();

    void setRecording(bool recording);
    void setCameraShown(bool shown);
    void setMicOn(bool on);

    QMenu& menu() { return m_menu; }
    QMenu& positionMenu() { return m_positionMenu; }
    const QSystemTrayIcon& statusItem() const { return m_statusItem; }

private:
    void build();
    void buildPositionMenu();
    void menuNeedsUpdate();
    void validateItems();
    void positionChanged(const QAction& item);
    void toggleLaunchAtLogin();

    Preferences& m_preferences;
    Commands m_commands;
    QMenu m_menu;
    QMenu m_positionMenu;
    QSystemTrayIcon m_statusItem;
    // The menus own their actions.
    QAction* m_recordItem = nullptr;
    QAction* m_annotateItem = nullptr;
    QAction* m_cameraItem = nullptr;
    QAction* m_micItem = nullptr;
    QAction* m_launchAtLoginItem = nullptr;
};
