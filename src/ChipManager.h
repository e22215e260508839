#pragma once

#include "ChipContent.h"
#include "ChipPanel.h"
#include "Platform/Screens.h"
#include "ScreenWatcher.h"
#include "Support/Clock.h"

#include <QObject>
#include <QPointer>
#include <QScreen>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class Preferences;

/// The stack of chips: on which screen and where it stands, and which chips are in it.
class ChipManager : public QObject {
    Q_OBJECT

public:
    /// How many chips may stay open; looked at when one is added.
    static constexpr std::size_t maxChips = 5;

    /// `preferences` is borrowed and outlives the manager.
    ChipManager(Preferences& preferences, Clock clock, LoadChipContent load);
    /// Closes all chips, without a word to anybody.
    ~ChipManager() override;

    /// Asked for when the user wants to edit a chip's file.
    std::function<void(const QUrl& file)> onEdit;

    /// Shows a chip for a finished capture, as soon as it is known what to show, on the screen that
    /// the pointer is on then; none when the file cannot be shown. Chips come in the order of the
    /// calls.
    void add(const QUrl& file);

    /// Moves every chip to where it belongs now.
    void layout(bool animated);

    /// Moves every chip by so many points, at once.
    void moveStack(double dx, double dy);
    /// The user has let go of the stack: where it is now is where it stays.
    void stackMoved();

    /// The open chips, oldest first; those that fade away too.
    const std::vector<std::unique_ptr<ChipPanel>>& panels() const { return m_panels; }

private:
    /// A capture that has no chip yet.
    struct Arrival {
        QUrl file;
        bool isLoaded = false;
        std::optional<ChipContent> content;
    };

    void loaded(Arrival& arrival, const std::optional<ChipContent>& content);
    void show(const QUrl& file, const ChipContent& content);
    void closed(const ChipPanel* panel);
    void screensChanged();
    std::optional<Platform::Screen> stackScreen() const;

    Preferences& m_preferences;
    Clock m_clock;
    LoadChipContent m_load;
    /// In the order in which they were added.
    std::deque<std::shared_ptr<Arrival>> m_arrivals;
    std::vector<std::unique_ptr<ChipPanel>> m_panels;
    /// Where the newest chip was added; null when that screen is gone.
    QPointer<QScreen> m_screen;
    ScreenWatcher m_screenWatcher;
    int m_screenChanges = 0;
};
