// Playing and choosing a range, with a player that only pretends.

#include "gui/VideoEditorFixture.h"

#include "Fade.h"
#include "NumberLabel.h"

#include <QAccessible>
#include <QMouseEvent>
#include <QPaintEvent>

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using testing::DoubleNear;
using testing::ElementsAre;
using Handle = TrimModel::Handle;

namespace {

class PlayerViewTest : public VideoEditorTest {
protected:
    void SetUp() override { openReady(); }

    double lastSeek() const { return record.seeks.empty() ? -1 : record.seeks.back(); }
    PlayerState state() const { return record.player->state(); }
    void stand(double time)
    {
        PlayerState now = state();
        now.time = time;
        record.player->become(now);
    }
    /// Chooses a range by the handles, and confirms it.
    void trimTo(double start, double end)
    {
        editor->trimClicked();
        Q_EMIT strip().moved(Handle::end, end);
        Q_EMIT strip().moved(Handle::start, start);
        view().trimming().confirm();
    }
};

/// Where a widget is painted from now on.
class Painted : public QObject {
public:
    explicit Painted(QWidget& widget) { widget.installEventFilter(this); }
    const QRegion& region() const { return m_region; }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            m_region += static_cast<QPaintEvent*>(event)->region();
        return false;
    }

private:
    QRegion m_region;
};

} // namespace

TEST_F(VideoEditorTest, APictureThatComesBeforeTheFilmsSizeShows)
{
    open(file("clip.mp4"));
    record.player->onPicture();
    settle();
    const Painted painted(view());
    record.player->become(readyState());
    settle();
    EXPECT_TRUE(painted.region().contains(view().pictureRect().toAlignedRect().center()));
    EXPECT_EQ(painted.region().boundingRect(), view().rect());
}

TEST_F(PlayerViewTest, ThePictureIsFittedIntoBlack)
{
    // 980 x 594 points for 16 to 9; it stands on whole pixels.
    const QRectF picture = view().pictureRect();
    EXPECT_EQ(picture.topLeft(), QPointF(0, 21));
    EXPECT_EQ(picture.width(), 980);
    EXPECT_NEAR(picture.height(), 551.25, 0.5);
    const QImage grab = view().grab().toImage();
    const double ratio = grab.devicePixelRatio();
    const auto colour = [&](int x, int y) {
        return grab.pixelColor(QPoint(qRound(x * ratio), qRound(y * ratio)));
    };
    EXPECT_EQ(colour(490, 10), QColor(Qt::black));
    EXPECT_EQ(colour(490, 100), QColor(Qt::darkCyan));
    editor->window().resize(1200, 640);
    settle();
    EXPECT_EQ(view().pictureRect(), QRectF(72, 0, 1056, 594));
}

TEST_F(PlayerViewTest, KeysPlayAndGoByFrames)
{
    press(Qt::Key_Space);
    EXPECT_EQ(record.plays, 1);
    EXPECT_TRUE(state().playing);
    press(Qt::Key_Space);
    EXPECT_FALSE(state().playing);
    stand(3.14);
    press(Qt::Key_Right);
    EXPECT_THAT(lastSeek(), DoubleNear(3.2, 1e-9));
    press(Qt::Key_Left);
    press(Qt::Key_Left);
    EXPECT_THAT(lastSeek(), DoubleNear(3.0, 1e-9));
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_THAT(lastSeek(), DoubleNear(4.0, 1e-9));
    press(Qt::Key_End);
    EXPECT_THAT(lastSeek(), DoubleNear(9.9, 1e-9));
    press(Qt::Key_Right);
    EXPECT_THAT(lastSeek(), DoubleNear(9.9, 1e-9));
    press(Qt::Key_Home);
    EXPECT_EQ(lastSeek(), 0);
    press(Qt::Key_Left);
    EXPECT_EQ(lastSeek(), 0);
}

TEST_F(PlayerViewTest, AStepEndsPlaying)
{
    press(Qt::Key_Space);
    press(Qt::Key_Right);
    EXPECT_FALSE(state().playing);
}

TEST_F(VideoEditorTest, WhatIsToPlayBeforeItIsOpenPlaysThen)
{
    open(file("clip.mp4"));
    press(Qt::Key_Space);
    EXPECT_EQ(record.plays, 0);
    record.player->become(readyState());
    EXPECT_EQ(record.plays, 1);
    open(file("other.mp4"));
    press(Qt::Key_Space);
    press(Qt::Key_Space);
    record.player->become(readyState());
    EXPECT_EQ(record.plays, 1);
}

TEST_F(PlayerViewTest, AtTheEndPlayingBeginsAgain)
{
    stand(9.9);
    press(Qt::Key_Space);
    EXPECT_THAT(record.seeks, ElementsAre(0));
    EXPECT_TRUE(state().playing);
    PlayerState ended = state();
    ended.time = 10; // where sound is longer than the picture
    ended.playing = false;
    ended.atEnd = true;
    record.player->become(ended);
    QTest::mouseClick(&view().bar().playButton(), Qt::LeftButton);
    EXPECT_THAT(record.seeks, ElementsAre(0, 0));
}

TEST_F(PlayerViewTest, PausedWithinTheLastFrameItGoesOnThere)
{
    stand(9.95); // it began at 9.9
    press(Qt::Key_Space);
    EXPECT_EQ(record.plays, 1);
    EXPECT_THAT(record.seeks, ElementsAre());
}

TEST_F(PlayerViewTest, TheBarShowsWhereTheFilmStands)
{
    PlayerBar& bar = view().bar();
    stand(7.3);
    EXPECT_EQ(bar.elapsed().text(), QStringLiteral("0:07"));
    EXPECT_EQ(bar.total().text(), QStringLiteral("0:10"));
    EXPECT_EQ(bar.position().value(), 7300);
    EXPECT_EQ(bar.playButton().accessibleName(), QStringLiteral("Play (Space)"));
    press(Qt::Key_Space);
    EXPECT_EQ(bar.playButton().accessibleName(), QStringLiteral("Pause (Space)"));
    PlayerState ended = state();
    ended.time = 9.2; // where the last frame begins
    ended.atEnd = true;
    record.player->become(ended);
    EXPECT_EQ(bar.position().value(), 10000);
    EXPECT_EQ(bar.elapsed().text(), QStringLiteral("0:10"));
    EXPECT_EQ(clockText(3723.99), QStringLiteral("1:02:03"));
    EXPECT_EQ(clockText(59.99999), QStringLiteral("1:00"));
    EXPECT_EQ(clockText(-1), QStringLiteral("0:00"));
}

TEST_F(PlayerViewTest, TheSliderSeeksAndPlayingGoesOnAfterwards)
{
    PlayerSlider& slider = view().bar().position();
    press(Qt::Key_Space);
    const auto at = [&](int milliseconds) {
        return QPoint(qRound(slider.place(milliseconds)), slider.height() / 2);
    };
    QTest::mousePress(&slider, Qt::LeftButton, {}, at(2500));
    EXPECT_FALSE(state().playing);
    EXPECT_NEAR(lastSeek(), 2.5, 0.11);
    QTest::mouseMove(&slider, at(8000));
    EXPECT_NEAR(lastSeek(), 8, 0.11);
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at(8000));
    EXPECT_TRUE(state().playing);
}

TEST_F(PlayerViewTest, ASliderThatIsHeldWhenTheBarGoesIsLetGo)
{
    PlayerSlider& slider = view().bar().position();
    press(Qt::Key_Space);
    QTest::mousePress(&slider, Qt::LeftButton, {}, slider.rect().center());
    press(Qt::Key_T, Qt::ControlModifier);
    ASSERT_TRUE(view().trimming().isOn());
    EXPECT_FALSE(state().playing);
    view().trimming().cancel();
    EXPECT_FALSE(slider.isSliderDown());
    stand(2);
    EXPECT_EQ(slider.value(), 2000);
}

TEST_F(VideoEditorTest, BeforeItsFramesAreKnownAFilmGoesByItsFrameRate)
{
    open(file("clip.mp4"));
    PlayerState state = readyState();
    state.frameRate = 10;
    record.player->become(state);
    press(Qt::Key_Right);
    EXPECT_THAT(record.seeks, ElementsAre(0.1));
    press(Qt::Key_End);
    EXPECT_THAT(record.seeks.back(), DoubleNear(9.9, 1e-9));
}

TEST_F(PlayerViewTest, SoundCanBeTurnedDownWhereThereIsSome)
{
    EXPECT_FALSE(view().bar().muteButton().isVisible());
    PlayerState loud = state();
    loud.hasSound = true;
    record.player->become(loud);
    ASSERT_TRUE(view().bar().muteButton().isVisible());
    QTest::mouseClick(&view().bar().muteButton(), Qt::LeftButton);
    EXPECT_TRUE(state().muted);
    EXPECT_EQ(view().bar().volume().value(), 0);
    press(Qt::Key_M);
    EXPECT_FALSE(state().muted);
    press(Qt::Key_Down);
    EXPECT_NEAR(state().volume, 0.95, 1e-9);
    EXPECT_EQ(view().bar().volume().value(), 95);
    view().bar().volume().setValue(30);
    EXPECT_NEAR(state().volume, 0.3, 1e-9);
    // What is off stays off until it is to be louder.
    press(Qt::Key_M);
    press(Qt::Key_Down);
    EXPECT_TRUE(state().muted);
    EXPECT_NEAR(state().volume, 0.3, 1e-9);
    press(Qt::Key_Up);
    EXPECT_FALSE(state().muted);
    EXPECT_NEAR(state().volume, 0.35, 1e-9);
}

TEST_F(PlayerViewTest, ControlsGoWhileItPlaysAndComeBack)
{
    EXPECT_TRUE(view().controlsShow());
    press(Qt::Key_Space);
    clock.advance(2400ms);
    EXPECT_TRUE(view().controlsShow());
    clock.advance(200ms);
    EXPECT_TRUE(runUntil([&] { return !view().controlsShow(); }));
    QTest::mouseMove(&view(), {300, 300});
    EXPECT_TRUE(view().controlsShow());
    clock.advance(3s);
    EXPECT_TRUE(runUntil([&] { return !view().controlsShow(); }));
    press(Qt::Key_Space);
    EXPECT_TRUE(view().controlsShow());
    press(Qt::Key_Space);
    clock.advance(3s);
    EXPECT_TRUE(runUntil([&] { return !view().controlsShow(); }));
    for (QWidget* control :
         std::initializer_list<QWidget*>{&view().bar().elapsed(), &view().bar().position()})
    {
        clock.advance(3s);
        EXPECT_TRUE(runUntil([&] { return !view().controlsShow(); }));
        // At scale 2 it is off the screen, where no pointer gets.
        const QPointF middle = control->rect().center();
        QMouseEvent moved(QEvent::MouseMove, middle, control->mapToGlobal(middle), Qt::NoButton,
                          Qt::NoButton, {});
        QCoreApplication::sendEvent(control, &moved);
        EXPECT_TRUE(view().controlsShow());
    }
}

TEST_F(PlayerViewTest, ControlsOfAFilmThatStandsStillGoWithTheMouse)
{
    const auto move = [this](QEvent::Type type) {
        QEnterEvent entered({300, 300}, {300, 300}, {300, 300});
        QEvent left(QEvent::Leave);
        view().setAttribute(Qt::WA_UnderMouse, type == QEvent::Enter);
        QCoreApplication::sendEvent(&view(), type == QEvent::Enter ? &entered : &left);
    };
    move(QEvent::Enter);
    clock.advance(3s);
    QWidget other;
    auto* const asLong = new Fade(other, 1);
    asLong->animateTo(0);
    EXPECT_TRUE(runUntil([&] { return asLong->opacity() == 0; }));
    EXPECT_TRUE(view().controlsShow());
    move(QEvent::Leave);
    clock.advance(2s);
    EXPECT_TRUE(view().controlsShow());
    clock.advance(1s);
    EXPECT_TRUE(runUntil([&] { return !view().controlsShow(); }));
    press(Qt::Key_Right);
    EXPECT_TRUE(view().controlsShow());
}

TEST_F(PlayerViewTest, AClickOnThePicturePlays)
{
    QTest::mouseClick(&view(), Qt::LeftButton, {}, {300, 200});
    EXPECT_TRUE(state().playing);
    QTest::mouseClick(&view(), Qt::RightButton, {}, {300, 200});
    EXPECT_TRUE(state().playing);
}

TEST_F(PlayerViewTest, TrimmingPutsHandlesAroundTheWholeFilm)
{
    press(Qt::Key_Space);
    QTest::mouseClick(button("Trim"), Qt::LeftButton);
    EXPECT_TRUE(view().trimming().isOn());
    EXPECT_FALSE(state().playing);
    EXPECT_FALSE(view().bar().isVisible());
    EXPECT_TRUE(view().trimBar().isVisible());
    EXPECT_EQ(handle(Handle::start).geometry().right() + 1, qRound(strip().line().x(0)));
    EXPECT_EQ(handle(Handle::end).x(), qRound(strip().line().x(10)));
    EXPECT_EQ(view().trimBar().length().text(), QStringLiteral("0:10.00"));
    EXPECT_EQ(title(), QStringLiteral("clip.mp4"));
    EXPECT_EQ(editor->window().focusWidget(), &handle(Handle::start));
}

TEST_F(PlayerViewTest, TheStripIsReadInTheBackground)
{
    editor->trimClicked();
    ASSERT_EQ(strips.size(), 1U);
    const auto count = strips[0].times.size();
    ASSERT_GE(count, 5U);
    EXPECT_NEAR(strips[0].times[0], 5.0 / static_cast<double>(count), 1e-9);
    EXPECT_GE(strips[0].box.height(), 40);
    EXPECT_FALSE(strip().hasAllFrames());
    for (std::size_t i = 0; i < count; ++i)
        strips[0].got(static_cast<int>(i), QImage(71, 40, QImage::Format_RGB32));
    EXPECT_TRUE(strip().hasAllFrames());
    // Another width, other frames, once it rests.
    editor->window().resize(1300, 640);
    settle();
    EXPECT_EQ(strips.size(), 1U);
    clock.advance(300ms);
    ASSERT_EQ(strips.size(), 2U);
    EXPECT_TRUE(strips[0].cancellation.isCancelled());
    EXPECT_GT(strips[1].times.size(), count);
    // What comes late is not taken, and nobody reads on for nothing.
    view().trimming().cancel();
    EXPECT_TRUE(strips[1].cancellation.isCancelled());
}

TEST_F(PlayerViewTest, AHandleShowsTheFrameUnderIt)
{
    editor->trimClicked();
    drag(Handle::start, 2.33);
    EXPECT_THAT(lastSeek(), DoubleNear(2.3, 1e-9));
    drag(Handle::end, 7.01);
    EXPECT_THAT(lastSeek(), DoubleNear(6.9, 1e-9)); // the last one that is left
    EXPECT_EQ(record.end, 7);
    EXPECT_EQ(view().trimBar().length().text(), QStringLiteral("0:04.70"));
    // Grasping one shows it again.
    QTest::mousePress(&handle(Handle::start), Qt::LeftButton);
    EXPECT_THAT(lastSeek(), DoubleNear(2.3, 1e-9));
    QTest::mouseRelease(&handle(Handle::start), Qt::LeftButton);
}

TEST_F(PlayerViewTest, HandlesDoNotPassEachOther)
{
    editor->trimClicked();
    drag(Handle::end, 5);
    drag(Handle::start, 9);
    EXPECT_THAT(lastSeek(), DoubleNear(4.9, 1e-9));
    QTest::mouseClick(button("Cancel"), Qt::LeftButton);
}

TEST_F(PlayerViewTest, ConfirmingSetsTheRange)
{
    editor->trimClicked();
    drag(Handle::start, 2);
    drag(Handle::end, 7);
    for (auto* candidate : view().trimBar().findChildren<ChromeButton*>()) {
        if (candidate->text() == QStringLiteral("Trim"))
            QTest::mouseClick(candidate, Qt::LeftButton);
    }
    EXPECT_FALSE(view().trimming().isOn());
    EXPECT_TRUE(view().bar().isVisible());
    EXPECT_EQ(editor->exportRange(), (FilmRange{2, 7}));
    EXPECT_EQ(record.end, 7);
    editor->saveTrimmed();
    EXPECT_EQ(trims.back().start, 2);
    EXPECT_EQ(trims.back().end, 7);
    editor->exportGIF();
    EXPECT_EQ(gifs.back().range.start, 2);
    EXPECT_EQ(gifs.back().range.duration, 5);
}

TEST_F(PlayerViewTest, AfterwardsOnlyTheRangePlays)
{
    trimTo(2, 7);
    EXPECT_EQ(view().bar().total().text(), QStringLiteral("0:05"));
    press(Qt::Key_Home);
    EXPECT_EQ(lastSeek(), 2);
    EXPECT_EQ(view().bar().elapsed().text(), QStringLiteral("0:00"));
    press(Qt::Key_Left);
    EXPECT_EQ(lastSeek(), 2);
    press(Qt::Key_End);
    EXPECT_THAT(lastSeek(), DoubleNear(6.9, 1e-9));
    press(Qt::Key_Space);
    EXPECT_EQ(lastSeek(), 2);
    EXPECT_EQ(record.end, 7);
}

TEST_F(PlayerViewTest, CancellingLeavesEverythingAsItWas)
{
    trimTo(2, 7);
    stand(3);
    editor->trimClicked();
    drag(Handle::start, 5);
    press(Qt::Key_Escape);
    EXPECT_FALSE(view().trimming().isOn());
    EXPECT_EQ(editor->exportRange(), (FilmRange{2, 7}));
    EXPECT_EQ(record.end, 7);
    EXPECT_EQ(lastSeek(), 3);
}

TEST_F(PlayerViewTest, TrimmingAgainStartsFromTheRangeOverTheWholeFilm)
{
    trimTo(2, 7);
    editor->trimClicked();
    EXPECT_EQ(handle(Handle::start).geometry().right() + 1, qRound(strip().line().x(2)));
    EXPECT_EQ(handle(Handle::end).x(), qRound(strip().line().x(7)));
    drag(Handle::start, -1);
    drag(Handle::end, 11);
    press(Qt::Key_Return);
    EXPECT_EQ(editor->exportRange(), (FilmRange{0, 10}));
    EXPECT_FALSE(view().trimming().selectedRange());
    EXPECT_EQ(record.end, std::nullopt);
}

TEST_F(PlayerViewTest, AskingTwiceToTrimChangesNothing)
{
    editor->trimClicked();
    drag(Handle::start, 2);
    editor->trimClicked();
    EXPECT_EQ(title(), QStringLiteral("clip.mp4"));
    press(Qt::Key_Return);
    EXPECT_EQ(editor->exportRange(), (FilmRange{2, 10}));
}

TEST_F(PlayerViewTest, HandlesGoByTheKeyboard)
{
    editor->trimClicked();
    press(Qt::Key_Right);
    press(Qt::Key_Right);
    EXPECT_THAT(lastSeek(), DoubleNear(0.2, 1e-9));
    press(Qt::Key_Tab);
    EXPECT_EQ(editor->window().focusWidget(), &handle(Handle::end));
    press(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_THAT(lastSeek(), DoubleNear(8.9, 1e-9));
    press(Qt::Key_Home); // as far as it goes
    EXPECT_THAT(lastSeek(), DoubleNear(0.2, 1e-9));
    press(Qt::Key_End);
    press(Qt::Key_Left);
    press(Qt::Key_Space);
    EXPECT_TRUE(state().playing);
    EXPECT_EQ(record.end, 9.9);
    press(Qt::Key_Return);
    EXPECT_NEAR(editor->exportRange().start, 0.2, 1e-9);
    EXPECT_NEAR(editor->exportRange().end, 9.9, 1e-9);
    EXPECT_EQ(editor->window().focusWidget(), &view());
}

TEST_F(PlayerViewTest, TheRowItselfSeeks)
{
    editor->trimClicked();
    const QPoint middle(qRound(strip().line().x(4.04)), 20);
    QTest::mouseClick(&strip(), Qt::LeftButton, {}, middle);
    EXPECT_THAT(lastSeek(), DoubleNear(4, 1e-9));
    EXPECT_TRUE(view().trimming().isOn());
}

TEST_F(PlayerViewTest, ARangeMovesToFramesThatBecomeKnownLater)
{
    trimTo(2, 7);
    gotTimes = {};
    open(file("other.mp4"));
    record.player->become(readyState());
    editor->trimClicked();
    Q_EMIT strip().moved(Handle::start, 1.9);
    view().trimming().confirm();
    EXPECT_NEAR(editor->exportRange().start, 1.9, 1e-9);
    gotTimes(FilmTimes{{0, 2, 4}, 10, {true, 1}});
    EXPECT_EQ(record.orientation, (Orientation{true, 1}));
    EXPECT_EQ(editor->exportRange(), (FilmRange{2, 10}));
    EXPECT_EQ(record.end, std::nullopt);
}

TEST_F(PlayerViewTest, ARangeToTheEndStaysOneWhenTheFilmTurnsOutLonger)
{
    gotTimes = {};
    open(file("other.mp4"));
    record.player->become(readyState());
    editor->trimClicked();
    Q_EMIT strip().moved(Handle::start, 2);
    view().trimming().confirm();
    gotTimes(FilmTimes{{0, 2, 4, 9.9, 10.4}, 11, {}});
    EXPECT_EQ(editor->exportRange(), (FilmRange{2, 11}));
}

TEST_F(PlayerViewTest, EverythingHasANameForScreenReaders)
{
    editor->trimClicked();
    PlayerState loud = state();
    loud.hasSound = true;
    record.player->become(loud);
    for (QWidget* widget : editor->window().findChildren<QWidget*>()) {
        QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(widget);
        ASSERT_TRUE(spoken);
        EXPECT_FALSE(spoken->text(QAccessible::Name).isEmpty())
            << widget->metaObject()->className();
    }
    QAccessibleInterface* start = QAccessible::queryAccessibleInterface(&handle(Handle::start));
    ASSERT_TRUE(start->valueInterface());
    start->valueInterface()->setCurrentValue(3000);
    EXPECT_THAT(lastSeek(), DoubleNear(3, 1e-9));
}
