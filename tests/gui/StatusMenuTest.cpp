#include "StatusMenu.h"

#include "Preferences.h"
#include "fakes/FakePlatform.h"
#include "support/Printers.h"
#include "support/TestLog.h"

#include <QAction>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

class StatusMenuTest : public testing::Test {
protected:
    void SetUp() override { FakePlatform::reset(); }

    void build()
    {
        const auto note = [this](const char* what) {
            return [this, what] { called += QString::fromLatin1(what); };
        };
        menu = std::make_unique<StatusMenu>(preferences,
                                            StatusMenu::Commands{
                                                .captureArea = note("captureArea"),
                                                .toggleRecording = note("toggleRecording"),
                                                .annotateLast = note("annotateLast"),
                                                .openFolder = note("openFolder"),
                                                .toggleCamera = note("toggleCamera"),
                                                .toggleMic = note("toggleMic"),
                                                .hasLastCapture = [this] { return hasLastCapture; },
                                                .mayPopUp = [] { return true; },
                                                .chipPositionChanged = note("chipPositionChanged"),
                                            });
    }

    QAction* item(const char* title) const
    {
        for (QAction* action : menu->menu().actions()) {
            if (action->text() == QString::fromUtf8(title))
                return action;
        }
        return nullptr;
    }

    /// The titles of the ticked positions after the submenu was opened.
    QStringList tickedPositions()
    {
        Q_EMIT menu->positionMenu().aboutToShow();
        QStringList ticked;
        for (const QAction* action : menu->positionMenu().actions()) {
            if (action->isChecked())
                ticked += action->text();
        }
        return ticked;
    }

    QTemporaryDir folder;
    Preferences preferences{std::make_unique<QSettings>(
        folder.filePath(QStringLiteral("store.ini")), QSettings::IniFormat)};
    bool hasLastCapture = false;
    QStringList called;
    std::unique_ptr<StatusMenu> menu;
};

} // namespace

TEST_F(StatusMenuTest, OffersEveryCommandInOrder)
{
    build();
    QStringList titles;
    for (const QAction* action : menu->menu().actions())
        titles += action->isSeparator() ? QStringLiteral("-") : action->text();
    EXPECT_EQ(
        titles.join(QLatin1Char('|')),
        QStringLiteral("Capture Area|Start Recording|Annotate Last Capture|Open Captures Folder|"
                       "-|Camera Bubble|Record Microphone Audio|-|Thumbnail Position|"
                       "Launch at Login|-|Quit Tamrik"));
}

TEST_F(StatusMenuTest, ShowsTheKeysBesideTheirItems)
{
    build();
    const auto option = Qt::AltModifier | Qt::ShiftModifier;
    EXPECT_EQ(item("Capture Area")->shortcut(), QKeySequence(option | Qt::Key_S));
    EXPECT_EQ(item("Start Recording")->shortcut(), QKeySequence(option | Qt::Key_R));
    EXPECT_EQ(item("Annotate Last Capture")->shortcut(), QKeySequence(option | Qt::Key_E));
    EXPECT_EQ(item("Quit Tamrik")->shortcut(), QKeySequence(Qt::ControlModifier | Qt::Key_Q));
    EXPECT_TRUE(item("Open Captures Folder")->shortcut().isEmpty());
}

TEST_F(StatusMenuTest, ItemsCallTheirCommands)
{
    hasLastCapture = true;
    build();
    for (const char* title : {"Capture Area", "Start Recording", "Annotate Last Capture",
                              "Open Captures Folder", "Camera Bubble", "Record Microphone Audio"})
        item(title)->trigger();
    EXPECT_EQ(called.join(QLatin1Char(' ')),
              QStringLiteral(
                  "captureArea toggleRecording annotateLast openFolder toggleCamera toggleMic"));
}

TEST_F(StatusMenuTest, TheCameraTickFollowsTheBubbleNotTheClick)
{
    build();
    item("Camera Bubble")->trigger();
    EXPECT_FALSE(item("Camera Bubble")->isChecked());
    menu->setCameraShown(true);
    EXPECT_TRUE(item("Camera Bubble")->isChecked());
    item("Camera Bubble")->trigger();
    EXPECT_TRUE(item("Camera Bubble")->isChecked());
}

TEST_F(StatusMenuTest, TheMicrophoneTickStartsFromThePreference)
{
    preferences.setRecordMic(true);
    build();
    EXPECT_TRUE(item("Record Microphone Audio")->isChecked());
}

TEST_F(StatusMenuTest, AnnotateIsEnabledWhileThereIsALastCapture)
{
    build();
    EXPECT_FALSE(item("Annotate Last Capture")->isEnabled());
    hasLastCapture = true;
    Q_EMIT menu->menu().aboutToShow();
    EXPECT_TRUE(item("Annotate Last Capture")->isEnabled());
    EXPECT_TRUE(item("Capture Area")->isEnabled());
}

TEST_F(StatusMenuTest, RecordingRelabelsTheItemAndChangesTheIcon)
{
    build();
    const auto icon = [this] { return menu->statusItem().icon().pixmap(22).toImage(); };
    const QImage idle = icon();
    menu->setRecording(true);
    EXPECT_TRUE(item("Stop Recording"));
    EXPECT_NE(icon(), idle);
    menu->setRecording(false);
    EXPECT_TRUE(item("Start Recording"));
    EXPECT_EQ(icon(), idle);
    EXPECT_EQ(menu->statusItem().toolTip(), QStringLiteral("Tamrik"));
}

TEST_F(StatusMenuTest, TicksTheStoredPosition)
{
    build();
    EXPECT_EQ(tickedPositions(), QStringList{QStringLiteral("Bottom Left")});
    preferences.save(ChipPosition::topCenter);
    EXPECT_EQ(tickedPositions(), QStringList{QStringLiteral("Top Center")});
}

TEST_F(StatusMenuTest, AnUnknownStoredPositionTicksBottomLeft)
{
    {
        QSettings store(folder.filePath(QStringLiteral("store.ini")), QSettings::IniFormat);
        store.setValue(QStringLiteral("chipPosition"), QStringLiteral("middle"));
    }
    build();
    EXPECT_EQ(tickedPositions(), QStringList{QStringLiteral("Bottom Left")});
}

TEST_F(StatusMenuTest, ChoosingAPositionStoresItAndMovesTheStack)
{
    build();
    for (const ChipPosition position : allChipPositions) {
        called.clear();
        const auto actions = menu->positionMenu().actions();
        for (QAction* action : actions) {
            if (action->text() == menuTitle(position))
                action->trigger();
        }
        EXPECT_EQ(preferences.chipPosition(), position);
        EXPECT_EQ(called, QStringList{QStringLiteral("chipPositionChanged")});
        EXPECT_EQ(tickedPositions(), QStringList{menuTitle(position)});
    }
    EXPECT_EQ(preferences.chipPosition(), ChipPosition::custom);
    EXPECT_EQ(preferences.chipCustomOrigin(), (Geometry::Point{24, 24}));
}

TEST_F(StatusMenuTest, LaunchAtLoginFollowsTheLoginItem)
{
    FakePlatform::current().loginItem = true;
    build();
    QAction* launch = item("Launch at Login");
    EXPECT_TRUE(launch->isChecked());
    launch->trigger();
    EXPECT_FALSE(FakePlatform::current().loginItem);
    EXPECT_FALSE(launch->isChecked());
    launch->trigger();
    EXPECT_TRUE(FakePlatform::current().loginItem);
    EXPECT_TRUE(launch->isChecked());
}

TEST_F(StatusMenuTest, AFailedToggleIsLoggedAndChangesNothing)
{
    build();
    FakePlatform::current().loginItemError = QStringLiteral("read-only file system");
    QAction* launch = item("Launch at Login");
    // Also when the tick no longer says what the service says.
    for (const bool enabled : {false, true}) {
        for (const bool ticked : {false, true}) {
            FakePlatform::current().loginItem = enabled;
            launch->setChecked(ticked);
            launch->trigger();
            EXPECT_EQ(launch->isChecked(), ticked);
            EXPECT_EQ(TestLog::takeLines(),
                      QStringList{
                          QStringLiteral("launch-at-login toggle failed: read-only file system")});
        }
    }
}

TEST_F(StatusMenuTest, QuitEndsTheProgram)
{
    build();
    QSignalSpy aboutToQuit(qApp, &QCoreApplication::aboutToQuit);
    QTimer::singleShot(0, item("Quit Tamrik"), &QAction::trigger);
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_EQ(aboutToQuit.count(), 1);
}
