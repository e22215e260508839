// An open selection while screens come, go and change.

#include "SelectionOverlay.h"

#include "gui/SelectionSessionFixture.h"

#include <functional>

using namespace std::chrono_literals;

namespace {

using Screens = std::vector<Platform::Screen>;
using Looks = std::vector<FakePlatform::Look>;

/// Does something when an event of a type is on its way to whom it watches.
class Before : public QObject {
public:
    Before(QEvent::Type type, std::function<void()> act)
        : m_type(type)
        , m_act(std::move(act))
    {
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == m_type)
            m_act();
        return false;
    }

private:
    QEvent::Type m_type;
    std::function<void()> m_act;
};

class SelectionOverlayTest : public SelectionSessionFixture {
protected:
    void SetUp() override
    {
        SelectionSessionFixture::SetUp();
        a = FakePlatform::current().screens.at(0);
        b = FakePlatform::current().screens.at(1);
    }

    static void change(Screens now)
    {
        FakePlatform::current().changeScreens(std::move(now));
        settle();
    }

    /// Past the time that the desktop gets to repaint.
    void repaint()
    {
        clock.advance(200ms);
        settle();
    }

    std::vector<QScreen*> covered() const
    {
        std::vector<QScreen*> screens;
        for (const auto& window : session->windows())
            screens.push_back(window->screen());
        return screens;
    }

    Platform::Screen larger(Platform::Screen screen) const
    {
        screen.frame.height += 100;
        return screen;
    }

    using Handles = std::vector<QScreen*>;
    Platform::Screen a; // the primary
    Platform::Screen b;
};

} // namespace

TEST_F(SelectionOverlayTest, AScreenThatGoesTakesItsWindowAndItsSelectionAtOnce)
{
    open(SelectionMode::record);
    drag(view(1), {100, 100}, {400, 300});
    const QPointer<QWidget> gone = &window(1);
    change({a});
    EXPECT_EQ(covered(), Handles{a.handle});
    EXPECT_FALSE(gone);
    EXPECT_EQ(session->activeView(), nullptr);
    EXPECT_TRUE(session->hadSelection());
    QTest::keyClick(&view(0), Qt::Key_Return);
    // There was a selection once, so a click still only clears.
    QTest::mouseClick(&view(0), Qt::LeftButton, {}, {50, 50});
    repaint();
    EXPECT_EQ(covered(), Handles{a.handle});
    EXPECT_TRUE(results.empty());
    EXPECT_EQ(SelectionSession::current, session);
}

TEST_F(SelectionOverlayTest, ASelectionOnAnotherScreenStaysAndCanBeConfirmedAtOnce)
{
    open(SelectionMode::record);
    drag(view(0), {100, 100}, {400, 300});
    const SelectionWindow* const kept = &window(0);
    change({a});
    ASSERT_EQ(&window(0), kept);
    EXPECT_EQ(session->activeView(), &view(0));
    QTest::keyClick(&view(0), Qt::Key_Return);
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::recordVideo, {100, 600, 300, 200}));
}

TEST_F(SelectionOverlayTest, UnderAnotherPrimaryTheSelectionNamesTheSamePixels)
{
    open(SelectionMode::record);
    drag(view(1), {100, 100}, {400, 300});
    ASSERT_EQ(view(1).globalSelectionRect(), (Geometry::Rect{1540, 600, 300, 200}));
    const SelectionWindow* const first = &window(0);
    const SelectionWindow* const second = &window(1);
    b.frame = {0, 0, 1280, 800};
    a.frame = {-1440, -100, 1440, 900};
    change({b, a});
    EXPECT_EQ(&window(0), second);
    EXPECT_EQ(&window(1), first);
    EXPECT_TRUE(second->isVisible());
    EXPECT_EQ(session->activeView(), &view(0));
    QTest::keyClick(&view(0), Qt::Key_Return);
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::recordVideo, {100, 500, 300, 200}));
}

TEST_F(SelectionOverlayTest, AScreenThatComesGetsItsWindowOnceTheDesktopHasRepainted)
{
    FakePlatform::current().screens = {b};
    open(SelectionMode::record);
    drag(view(0), {100, 100}, {400, 300});
    change({a, b});
    EXPECT_EQ(covered(), Handles{b.handle});
    clock.advance(199ms);
    EXPECT_EQ(covered(), Handles{b.handle});
    clock.advance(1ms);
    settle();
    EXPECT_EQ(covered(), (Handles{a.handle, b.handle})); // in the order of the screens
    EXPECT_TRUE(window(0).isVisible());
    EXPECT_EQ(window(0).geometry(), a.handle->geometry());
    EXPECT_EQ(session->activeView(), &view(1));

    // It is one of the overlay's windows like any other.
    drag(view(0), {10, 10}, {60, 60});
    EXPECT_FALSE(view(1).globalSelectionRect());
    QTest::keyClick(&view(1), Qt::Key_Return);
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::recordVideo, {10, 840, 50, 50}));
}

TEST_F(SelectionOverlayTest, EachChangeStartsTheWaitAfresh)
{
    FakePlatform::current().screens = {a};
    open(SelectionMode::screenshot);
    change({a, b});
    clock.advance(150ms);
    change({a, larger(b)});
    clock.advance(150ms);
    EXPECT_EQ(covered(), Handles{a.handle});
    clock.advance(50ms);
    EXPECT_EQ(covered(), (Handles{a.handle, b.handle}));
    clock.advance(1s);
    EXPECT_EQ(FakePlatform::current().front.size(), 2u);
}

TEST_F(SelectionOverlayTest, AScreenOfAnotherSizeOrScaleGetsAFreshWindow)
{
    Platform::Screen scaled = b;
    scaled.scale = 2;
    for (const Platform::Screen& changed : {larger(b), scaled}) {
        FakePlatform::current().screens = {a, b};
        open(SelectionMode::record);
        drag(view(1), {100, 100}, {400, 300});
        const QPointer<QWidget> old = &window(1);
        change({a, changed});
        EXPECT_EQ(covered(), Handles{a.handle});
        EXPECT_FALSE(old);
        repaint();
        ASSERT_EQ(covered(), (Handles{a.handle, b.handle}));
        EXPECT_FALSE(view(1).globalSelectionRect());
        EXPECT_FALSE(session->activeView());
        session->finish(std::nullopt);
        settle();
    }
}

TEST_F(SelectionOverlayTest, ADragOnAScreenThatGoesEndsQuietly)
{
    open(SelectionMode::screenshot);
    QTest::mousePress(&view(1), Qt::LeftButton, {}, {100, 100});
    QTest::mouseMove(&view(1), {300, 300});
    change({a});
    EXPECT_EQ(session->activeView(), nullptr);
    // To X11 and Qt the button may still be down.
    QTest::mouseMove(&view(0), {320, 320});
    QTest::mouseRelease(&view(0), Qt::LeftButton, {}, {320, 320});
    clock.advance(1s);
    EXPECT_TRUE(results.empty());
    EXPECT_TRUE(view(0).model().isIn<SelectionModel::Idle>());
    drag(view(0), {100, 100}, {400, 300});
    clock.advance(180ms);
    EXPECT_EQ(results, only(Kind::screenshot, {100, 600, 300, 200}));
}

TEST_F(SelectionOverlayTest, AScreenMayGoInTheMiddleOfAnEventOfItsOwnWindow)
{
    for (const auto type :
         {QEvent::MouseButtonPress, QEvent::MouseMove, QEvent::MouseButtonRelease}) {
        FakePlatform::current().screens = {a, b};
        open(SelectionMode::screenshot);
        const auto old = &view(1);
        Before before(type, [this] { FakePlatform::current().changeScreens({a}); });
        old->installEventFilter(&before);
        QTest::mousePress(old, Qt::LeftButton, {}, {100, 100});
        QTest::mouseMove(old, {300, 300});
        QTest::mouseRelease(old, Qt::LeftButton, {}, {300, 300});
        EXPECT_EQ(session->activeView(), nullptr);
        settle();
        clock.advance(1s);
        EXPECT_TRUE(results.empty());
        EXPECT_EQ(covered(), Handles{a.handle});
        session->finish(std::nullopt);
        results.clear();
    }
}

TEST_F(SelectionOverlayTest, WhenTheWindowWithTheKeyboardGoesAnotherOneHasItAtOnce)
{
    auto& platform = FakePlatform::current();
    platform.mouse = {1500, 500};
    open(SelectionMode::screenshot);
    ASSERT_EQ(platform.key, &window(1));
    change({a, larger(b)});
    EXPECT_EQ(platform.key, &window(0));
    repaint();
    EXPECT_EQ(platform.key, &window(1)); // which has the pointer
}

TEST_F(SelectionOverlayTest, TheKeyboardStaysWhereItIsWhenOtherScreensChange)
{
    auto& platform = FakePlatform::current();
    open(SelectionMode::screenshot);
    ASSERT_EQ(platform.key, &window(0));
    platform.mouse = {1500, 500};
    change({a, larger(b)});
    EXPECT_EQ(platform.key, &window(0));
    repaint();
    EXPECT_EQ(platform.key, &window(0));
}

TEST_F(SelectionOverlayTest, ItOutlastsATimeWithoutScreens)
{
    open(SelectionMode::screenshot);
    change({});
    EXPECT_TRUE(session->windows().empty());
    repaint();
    session->confirmActiveSelection(false);
    EXPECT_EQ(SelectionSession::current, session);
    EXPECT_TRUE(results.empty());

    FakePlatform::current().mouse = {2000, 2000};
    change({a});
    repaint();
    ASSERT_EQ(covered(), Handles{a.handle});
    EXPECT_EQ(FakePlatform::current().key, &window(0));
    QTest::keyClick(&window(0), Qt::Key_Escape);
    EXPECT_EQ(results, Results{std::nullopt});
}

TEST_F(SelectionOverlayTest, AFrozenBackdropNeverShowsTheOverlayItself)
{
    FakePlatform::current().backdrop = QPixmap(1280, 900);
    open(SelectionMode::screenshot);
    change({a, larger(b)});
    repaint();
    EXPECT_EQ(FakePlatform::current().looks, (Looks{{QStringLiteral("A"), false},
                                                    {QStringLiteral("B"), false},
                                                    {QStringLiteral("B"), false}}));
}

TEST_F(SelectionOverlayTest, AfterTheEndNobodyFollowsTheScreens)
{
    open(SelectionMode::screenshot);
    change({a});
    session->finish(std::nullopt); // while a window is still to come
    change({a, b});
    repaint();
    EXPECT_TRUE(session->windows().empty());
    EXPECT_EQ(FakePlatform::current().front.size(), 2u);
    EXPECT_EQ(results, Results{std::nullopt});
}
