#include "SelectionHUD.h"

#include "ChromeButton.h"
#include "NumberLabel.h"
#include "gui/SelectionSessionFixture.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using Geometry::Rect;

namespace {

class SelectionHUDTest : public testing::Test {
protected:
    SelectionHUD& make(SelectionMode mode)
    {
        host.resize(800, 200);
        host.show();
        hud = std::make_unique<SelectionHUD>(
            mode,
            SelectionHooks{.isMicOn = [this] { return mic; },
                           .toggleMic = [this] { mic = !mic; },
                           .isCameraOn = [this] { return camera; },
                           .toggleCamera = [this] { notes += QStringLiteral("camera"); }},
            clock.clock(),
            SelectionHUD::Actions{
                .onConfirm = [this](bool gif) { notes += QLatin1String(gif ? "gif" : "confirm"); },
                .onCancel = [this] { notes += QStringLiteral("cancel"); },
                .onReadjust = [this] { notes += QStringLiteral("readjust"); }},
            &host);
        hud->show();
        return *hud;
    }

    QList<ChromeButton*> buttons() const { return hud->findChildren<ChromeButton*>(); }
    NumberLabel& dims() const { return *hud->findChild<NumberLabel*>(); }

    QStringList names() const
    {
        QStringList result;
        for (const ChromeButton* button : buttons())
            result += button->accessibleName();
        return result;
    }

    FakeClock clock;
    bool mic = false;
    bool camera = false;
    QStringList notes;
    QWidget host;
    std::unique_ptr<SelectionHUD> hud;
};

/// Counts how often a bar is laid out.
class Layouts : public QObject {
public:
    explicit Layouts(QWidget& bar) { bar.installEventFilter(this); }

    int count = 0;

    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Resize;
        return false;
    }
};

class SelectionHUDOnScreen : public SelectionSessionFixture {
protected:
    SelectionHUD* hud(std::size_t i = 0) { return view(i).hud(); }

    /// The bar's place in the view, y up.
    Rect place(std::size_t i = 0)
    {
        const QRect r = hud(i)->geometry();
        return {double(r.x()), double(view(i).height() - r.y() - r.height()), double(r.width()),
                double(r.height())};
    }

    void click(const char* name, std::size_t i = 0)
    {
        for (ChromeButton* button : hud(i)->findChildren<ChromeButton*>()) {
            if (button->accessibleName() == QString::fromUtf8(name)) {
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        ADD_FAILURE() << "there is no " << name;
    }
};

} // namespace

TEST_F(SelectionHUDTest, ARecordingHasSwitchesAndTwoWaysToStart)
{
    make(SelectionMode::record);
    EXPECT_EQ(dims().text(), QStringLiteral("0 × 0"));
    EXPECT_EQ(names().join(u'|'), QStringLiteral("Record microphone audio|Camera bubble on/off|"
                                                 "Redo selection|Record as GIF|Record|"
                                                 "Cancel (Esc)"));
    const auto all = buttons();
    EXPECT_EQ(all[0]->toolTip(), QStringLiteral("Record microphone audio"));
    EXPECT_EQ(all[1]->toolTip(), QStringLiteral("Camera bubble on/off"));
    EXPECT_EQ(all[2]->toolTip(), QStringLiteral("Redo selection"));
    EXPECT_EQ(all[3]->text(), QStringLiteral("GIF  ⌥↩"));
    EXPECT_EQ(all[3]->toolTip(), QStringLiteral("Record, then auto-convert to GIF"));
    EXPECT_EQ(all[3]->accent(), Chrome::Accent::none);
    EXPECT_EQ(all[4]->text(), QStringLiteral("Record  ↩"));
    EXPECT_EQ(all[4]->toolTip(), QString());
    EXPECT_EQ(all[4]->accent(), Chrome::Accent::red);
    EXPECT_EQ(all[5]->toolTip(), QStringLiteral("Cancel (Esc)"));
    using Symbols::Symbol;
    const std::array symbols = {Symbol::micFill, Symbol::videoFill, Symbol::crop, Symbol::xmark};
    const std::array withSymbols = {all[0], all[1], all[2], all[5]};
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        ASSERT_TRUE(withSymbols[i]->image());
        EXPECT_EQ(withSymbols[i]->image()->symbol, symbols[i]);
        EXPECT_EQ(withSymbols[i]->image()->pointSize, 12);
        EXPECT_EQ(withSymbols[i]->image()->weight, Symbols::Weight::semibold);
    }
}

TEST_F(SelectionHUDTest, AScreenshotHasOneWayToTakeItAndCancel)
{
    make(SelectionMode::screenshot);
    EXPECT_EQ(names().join(u'|'), QStringLiteral("Capture|Cancel (Esc)"));
    EXPECT_EQ(buttons()[0]->text(), QStringLiteral("Capture  ↩"));
    EXPECT_EQ(buttons()[0]->accent(), Chrome::Accent::blue);
    EXPECT_EQ(hud->findChildren<ChromeSeparator*>().size(), 1);
}

TEST_F(SelectionHUDTest, ItsPartsStandInARowEightPointsApart)
{
    make(SelectionMode::record);
    QList<QWidget*> items = hud->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    EXPECT_EQ(items.size(), 9);
    std::sort(items.begin(), items.end(), [](auto* a, auto* b) { return a->x() < b->x(); });
    EXPECT_EQ(items.front()->x(), 14);
    EXPECT_EQ(items.back()->geometry().right() + 1, hud->width() - 10);
    for (int i = 1; i < items.size(); ++i)
        EXPECT_EQ(items[i]->x() - items[i - 1]->geometry().right() - 1, 8);
    EXPECT_EQ(hud->height(), 40);
    for (const auto* separator : hud->findChildren<ChromeSeparator*>())
        EXPECT_EQ(separator->height(), 20);
}

TEST_F(SelectionHUDTest, ShowsTheSizeAndIsAsWideAsItNeedsToBe)
{
    make(SelectionMode::record);
    const int narrow = hud->width();
    const Layouts layouts(*hud);
    hud->update(1280, 720);
    EXPECT_EQ(dims().text(), QStringLiteral("1280 × 720"));
    EXPECT_EQ(layouts.count, 1);
    const int wide = hud->width();
    EXPECT_GT(wide, narrow);
    hud->update(1280, 720);
    EXPECT_EQ(layouts.count, 1);
    hud->update(1111, 111); // as wide as any other digits
    EXPECT_EQ(hud->width(), wide);
    hud->update(99, 99);
    EXPECT_LT(hud->width(), wide);
}

TEST_F(SelectionHUDTest, TheMicrophoneSwitchShowsAtOnceWhatItDid)
{
    mic = true;
    make(SelectionMode::record);
    ChromeButton& button = *buttons()[0];
    EXPECT_TRUE(button.isToggledOn());
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_FALSE(mic);
    EXPECT_FALSE(button.isToggledOn());
}

TEST_F(SelectionHUDTest, TheCameraSwitchShowsAfterAWhileWhatBecameOfIt)
{
    make(SelectionMode::record);
    ChromeButton& button = *buttons()[1];
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(notes, QStringList{QStringLiteral("camera")});
    camera = true;
    clock.advance(699ms);
    EXPECT_FALSE(button.isToggledOn());
    clock.advance(1ms);
    EXPECT_TRUE(button.isToggledOn());

    QTest::mouseClick(&button, Qt::LeftButton);
    hud.reset();
    clock.advance(700ms); // nobody to show it any more
}

TEST_F(SelectionHUDTest, TheCameraSwitchShowsALaterAnswerWhenItComes)
{
    make(SelectionMode::record);
    ChromeButton& button = *buttons()[1];
    QTest::mouseClick(&button, Qt::LeftButton);
    camera = true;
    clock.advance(300ms);
    hud->cameraAnswered();
    EXPECT_FALSE(button.isToggledOn()) << "not before its time";
    clock.advance(400ms);
    EXPECT_TRUE(button.isToggledOn());
    camera = false;
    hud->cameraAnswered();
    EXPECT_FALSE(button.isToggledOn());
}

TEST_F(SelectionHUDTest, EachButtonDoesItsOneThing)
{
    make(SelectionMode::record);
    for (int i = 2; i < 6; ++i)
        QTest::mouseClick(buttons()[i], Qt::LeftButton);
    EXPECT_EQ(notes.join(u' '), QStringLiteral("readjust gif confirm cancel"));
    notes.clear();
    make(SelectionMode::screenshot);
    for (ChromeButton* button : buttons())
        QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(notes.join(u' '), QStringLiteral("confirm cancel"));
}

TEST_F(SelectionHUDOnScreen, AppearsWithTheFirstSelectionBelowIt)
{
    open(SelectionMode::record);
    EXPECT_FALSE(hud());
    drag(view(0), {500, 300}, {900, 600});
    ASSERT_TRUE(hud());
    EXPECT_TRUE(hud()->isVisible());
    EXPECT_EQ(hud()->findChild<NumberLabel*>()->text(), QStringLiteral("400 × 300"));
    EXPECT_NEAR(place().x + place().width / 2, 700, 0.5);
    EXPECT_EQ(place().maxY(), 300 - 14);
    EXPECT_EQ(hud()->cursor().shape(), Qt::ArrowCursor);
    EXPECT_FALSE(hud(1));
}

TEST_F(SelectionHUDOnScreen, StandsAboveASelectionAtTheBottomAndInsideAWholeScreen)
{
    open(SelectionMode::record);
    drag(view(0), {0, 600}, {300, 890});
    EXPECT_EQ(place().minY(), 300 + 14);
    EXPECT_EQ(place().minX(), 12);
    QTest::keyClick(&window(0), Qt::Key_Escape);
    settle();

    open(SelectionMode::record);
    drag(view(0), {0, 1}, {1439, 899});
    EXPECT_EQ(view(0).globalSelectionRect(), (Rect{0, 0, 1440, 899}));
    EXPECT_EQ(place().maxY(), 900 - 12);
}

TEST_F(SelectionHUDOnScreen, IsHiddenWhileTheSelectionChanges)
{
    open(SelectionMode::record);
    drag(view(0), {500, 300}, {900, 600});
    QTest::mousePress(&view(0), Qt::LeftButton, {}, {700, 450});
    EXPECT_FALSE(hud()->isVisible());
    QTest::mouseMove(&view(0), {750, 400});
    QTest::mouseRelease(&view(0), Qt::LeftButton, {}, {750, 400});
    EXPECT_TRUE(hud()->isVisible());
    EXPECT_NEAR(place().x + place().width / 2, 750, 0.5);
    EXPECT_EQ(place().maxY(), 350 - 14);

    QTest::mousePress(&view(0), Qt::LeftButton, {}, {950, 550}); // a corner
    EXPECT_FALSE(hud()->isVisible());
    QTest::mouseMove(&view(0), {1000, 600});
    QTest::mouseRelease(&view(0), Qt::LeftButton, {}, {1000, 600});
    EXPECT_EQ(hud()->findChild<NumberLabel*>()->text(), QStringLiteral("450 × 350"));

    QTest::mousePress(&view(1), Qt::LeftButton, {}, {100, 100}); // on the other screen
    EXPECT_FALSE(hud()->isVisible());
    QTest::mouseRelease(&view(1), Qt::LeftButton, {}, {100, 100});
    EXPECT_FALSE(hud()->isVisible());
}

TEST_F(SelectionHUDOnScreen, APressBetweenItsButtonsLeavesTheSelection)
{
    open(SelectionMode::record);
    drag(view(0), {500, 300}, {900, 600});
    const auto before = view(0).globalSelectionRect();
    QTest::mouseClick(hud(), Qt::LeftButton, {}, {4, 20});
    EXPECT_EQ(view(0).globalSelectionRect(), before);
    EXPECT_TRUE(hud()->isVisible());
}

TEST_F(SelectionHUDOnScreen, ItsButtonsEndTheSession)
{
    const Rect selection = {500, 300, 400, 300};
    const std::array endings = {std::pair{"Record", only(Kind::recordVideo, selection)},
                                std::pair{"Record as GIF", only(Kind::recordGIF, selection)},
                                std::pair{"Cancel (Esc)", Results{std::nullopt}}};
    for (const auto& [name, wanted] : endings) {
        results.clear();
        open(SelectionMode::record);
        drag(view(0), {500, 300}, {900, 600});
        click(name);
        clock.advance(180ms);
        EXPECT_EQ(results, wanted) << name;
        EXPECT_FALSE(SelectionSession::current);
        settle();
    }
}

TEST_F(SelectionHUDOnScreen, RedoClearsTheSelectionAndKeepsTheSession)
{
    open(SelectionMode::record);
    drag(view(0), {500, 300}, {900, 600});
    click("Redo selection");
    EXPECT_FALSE(hud()->isVisible());
    EXPECT_FALSE(view(0).globalSelectionRect());
    EXPECT_TRUE(results.empty());
    QTest::mouseClick(&view(0), Qt::LeftButton, {}, {100, 100}); // no longer cancels
    EXPECT_TRUE(results.empty());
    drag(view(0), {100, 100}, {200, 200});
    EXPECT_TRUE(hud()->isVisible());
}

TEST_F(SelectionHUDOnScreen, ScreenshotsEndBeforeThereIsAnythingToAdjust)
{
    open(SelectionMode::screenshot);
    SelectionView& first = view(0);
    drag(first, {500, 300}, {900, 600});
    EXPECT_FALSE(first.hud());
}
