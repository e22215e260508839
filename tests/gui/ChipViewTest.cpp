#include "gui/ChipFixture.h"
#include "gui/Rendered.h"

#include <QFile>
#include <QLabel>

using namespace std::chrono_literals;
using Geometry::Point;

namespace {

class ChipViewTest : public ChipFixture {
protected:
    static QRect boxOf(const QWidget& child, const QWidget& view)
    {
        return {child.mapTo(&view, QPoint()), child.size()};
    }

    static QLabel* label(ChipPanel& panel, const QString& text)
    {
        for (QLabel* child : panel.findChildren<QLabel*>()) {
            if (child->text() == text)
                return child;
        }
        return nullptr;
    }

    static void press(ChipView& view, QPoint at, Qt::KeyboardModifiers keys = {})
    {
        QTest::mousePress(&view, Qt::LeftButton, keys, at);
    }

    static void moveTo(ChipView& view, QPointF at, Qt::KeyboardModifiers keys = {})
    {
        QMouseEvent move(QEvent::MouseMove, at, view.mapToGlobal(at), Qt::NoButton, Qt::LeftButton,
                         keys);
        QCoreApplication::sendEvent(&view, &move);
    }

    static void release(ChipView& view, QPoint at, Qt::KeyboardModifiers keys = {})
    {
        QTest::mouseRelease(&view, Qt::LeftButton, keys, at);
    }

    /// A file with these bytes in the test's own folder.
    QUrl written(const char* name, const QByteArray& bytes) const
    {
        QFile output(folder.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(output.open(QIODevice::WriteOnly));
        EXPECT_EQ(output.write(bytes), bytes.size());
        return QUrl::fromLocalFile(output.fileName());
    }
};

} // namespace

TEST_F(ChipViewTest, ButtonsStandWhereTheyShould)
{
    ChipPanel& panel = add(QStringLiteral("1.png"), {2880, 1800}); // 220 x 137.5
    const ChipView& view = panel.view();
    EXPECT_EQ(panel.frame().size(), (Geometry::Size{220, 137.5}));
    EXPECT_EQ(view.size(), QSize(220, 138));
    ASSERT_TRUE(button(panel, "Dismiss"));
    ASSERT_TRUE(button(panel, "Copy to clipboard"));
    ASSERT_TRUE(button(panel, "Annotate"));
    EXPECT_EQ(boxOf(*button(panel, "Dismiss"), view), QRect(6, 6, 22, 22));
    EXPECT_EQ(boxOf(*button(panel, "Copy to clipboard"), view), QRect(75, 54, 30, 30));
    EXPECT_EQ(boxOf(*button(panel, "Annotate"), view), QRect(115, 54, 30, 30));
}

TEST_F(ChipViewTest, AFractionOfAPointIsNoPartOfTheChip)
{
    ChipPanel& panel = add(QStringLiteral("1.png"), {1000, 437}); // 220 x 96.14
    ChipView& view = panel.view();
    ASSERT_EQ(view.size(), QSize(220, 97));
    EXPECT_EQ(view.body(), QRectF(0, 1, 220, 96));
    EXPECT_EQ(FakePlatform::current().bodies.at(&panel), QRectF(18, 19, 220, 96));
    // Without a compositor a dark line of the shadow is left.
    FakePlatform::current().composited = false;
    panel.hide();
    panel.show();
    EXPECT_EQ(FakePlatform::current().bodies.at(&panel), QRectF(17, 18, 222, 98));

    QEnterEvent enter({110, 50}, {110, 50}, {110, 50});
    QCoreApplication::sendEvent(&view, &enter);
    ASSERT_TRUE(runUntil([&] { return view.overlayOpacity() == 1; }));
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    view.render(&image, {}, {}, QWidget::DrawChildren);
    // Neither the picture nor the border nor the dark layer is there; below, all three are.
    for (int x = 0; x < image.width(); ++x)
        EXPECT_EQ(qAlpha(image.pixel(x, 0)), 0) << x;
    EXPECT_EQ(qAlpha(image.pixel(110, 1)), 255);
    const QColor dark(qRound(40 * 0.68), qRound(90 * 0.68), qRound(200 * 0.68));
    EXPECT_NE(image.pixelColor(110, 1), dark); // the border
    EXPECT_EQ(image.pixelColor(20, 60), dark);
}

TEST_F(ChipViewTest, ButtonsShowTheirSymbolsAndAreNamed)
{
    ChipPanel& panel = add(QStringLiteral("1.png"));
    const std::map<const char*, Symbols::Symbol> symbols = {
        {"Dismiss", Symbols::Symbol::xmark},
        {"Copy to clipboard", Symbols::Symbol::docOnDoc},
        {"Annotate", Symbols::Symbol::pencil}};
    for (const auto& [tip, symbol] : symbols) {
        ChromeButton* found = button(panel, tip);
        ASSERT_TRUE(found) << tip;
        ASSERT_TRUE(found->image());
        EXPECT_EQ(found->image()->symbol, symbol);
        EXPECT_EQ(found->image()->pointSize, 12);
        EXPECT_EQ(found->image()->weight, Symbols::Weight::semibold);
        EXPECT_EQ(found->accessibleName(), QString::fromUtf8(tip));
        EXPECT_EQ(found->focusPolicy(), Qt::NoFocus);
    }
}

TEST_F(ChipViewTest, OnlyPicturesAreAnnotatedAndArriveCopied)
{
    for (const char* name : {"1.png", "1.PNG", "1.jpeg", "1.tiff"}) {
        ChipPanel& panel = add(QString::fromLatin1(name));
        EXPECT_TRUE(button(panel, "Annotate")) << name;
        EXPECT_EQ(panel.view().copiedBadgeOpacity(), 1) << name;
        panel.close();
    }
    for (const char* name : {"1.mp4", "1.MOV", "1.gif", "1.txt"}) {
        ChipPanel& panel = add(QString::fromLatin1(name));
        EXPECT_TRUE(button(panel, "Open editor")) << name;
        EXPECT_EQ(panel.view().copiedBadgeOpacity(), 0) << name;
        panel.close();
    }
}

TEST_F(ChipViewTest, BadgesStandWhereTheyShould)
{
    content = contentOf({200, 100});
    content->badge = QStringLiteral("▶ 2:05");
    manager->add(file(QStringLiteral("1.mp4")));
    ChipPanel& panel = *manager->panels().back();
    const QLabel* duration = label(panel, QStringLiteral("▶ 2:05"));
    ASSERT_TRUE(duration);
    const int pillWidth = duration->width() + 12;
    EXPECT_EQ(boxOf(*duration->parentWidget(), panel.view()),
              QRect(200 - pillWidth - 6, 6, pillWidth, 18));
    EXPECT_EQ(duration->pos(), QPoint(6, (18 - duration->height()) / 2));

    const QLabel* copied = label(panel, QStringLiteral("Copied ✓"));
    ASSERT_TRUE(copied);
    const int copiedWidth = copied->width() + 16;
    EXPECT_EQ(boxOf(*copied->parentWidget(), panel.view()),
              QRect((200 - copiedWidth) / 2, 100 - 6 - 18, copiedWidth, 18));
    EXPECT_EQ(copied->pos(), QPoint(8, (18 - copied->height()) / 2));
}

TEST_F(ChipViewTest, TheCopiedBadgeGoesAfterAWhileAndCopyingAgainStartsAnew)
{
    ChipPanel& panel = add(QStringLiteral("1.png"));
    ChipView& view = panel.view();
    clock.advance(1500ms);
    QTest::mouseClick(button(panel, "Copy to clipboard"), Qt::LeftButton);
    clock.advance(1500ms); // the first one's end passes
    QTest::qWait(100);
    EXPECT_EQ(view.copiedBadgeOpacity(), 1);
    clock.advance(100ms);
    ASSERT_TRUE(runUntil([&] { return view.copiedBadgeOpacity() < 1; }));
    EXPECT_GT(view.copiedBadgeOpacity(), 0);
    ASSERT_TRUE(runUntil([&] { return view.copiedBadgeOpacity() == 0; }));
    view.showCopiedBadge();
    EXPECT_EQ(view.copiedBadgeOpacity(), 1);
}

TEST_F(ChipViewTest, TheButtonsAreSeenWhileThePointerIsOnTheChip)
{
    ChipView& view = add(QStringLiteral("1.png")).view();
    EXPECT_EQ(view.overlayOpacity(), 0);
    QEnterEvent enter({10, 10}, {10, 10}, {10, 10});
    QCoreApplication::sendEvent(&view, &enter);
    ASSERT_TRUE(runUntil([&] { return view.overlayOpacity() == 1; }));
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&view, &leave);
    EXPECT_GT(view.overlayOpacity(), 0); // it fades
    ASSERT_TRUE(runUntil([&] { return view.overlayOpacity() == 0; }));
}

TEST_F(ChipViewTest, CopyingAPictureOffersItsBytesAndItsFile)
{
    // The bytes of whatever format, as they are.
    const QUrl jpeg = written("1.JPG", "\xff\xd8 not really");
    content = contentOf({200, 100});
    manager->add(jpeg);
    QTest::mouseClick(button(*manager->panels().back(), "Copy to clipboard"), Qt::LeftButton);
    const auto& pasteboard = FakePlatform::current().pasteboard;
    ASSERT_EQ(pasteboard.size(), 1u);
    EXPECT_EQ(pasteboard[0].png, QByteArray("\xff\xd8 not really"));
    EXPECT_EQ(pasteboard[0].fileURL, jpeg);
}

TEST_F(ChipViewTest, CopyingAPictureThatIsGoneOffersItsFileAlone)
{
    ChipPanel& panel = add(QStringLiteral("gone.png"));
    clock.advance(10s);
    ASSERT_TRUE(runUntil([&] { return panel.view().copiedBadgeOpacity() == 0; }));
    QTest::mouseClick(button(panel, "Copy to clipboard"), Qt::LeftButton);
    const auto& pasteboard = FakePlatform::current().pasteboard;
    ASSERT_EQ(pasteboard.size(), 1u);
    EXPECT_FALSE(pasteboard[0].png);
    EXPECT_EQ(pasteboard[0].fileURL, file(QStringLiteral("gone.png")));
    EXPECT_EQ(panel.view().copiedBadgeOpacity(), 1);
}

TEST_F(ChipViewTest, CopyingAnythingElseOffersItsFileAlone)
{
    const QUrl gif = written("1.gif", "GIF89a");
    content = contentOf({200, 100});
    manager->add(gif);
    QTest::mouseClick(button(*manager->panels().back(), "Copy to clipboard"), Qt::LeftButton);
    const auto& pasteboard = FakePlatform::current().pasteboard;
    ASSERT_EQ(pasteboard.size(), 1u);
    EXPECT_FALSE(pasteboard[0].png);
    EXPECT_EQ(pasteboard[0].fileURL, gif);
}

TEST_F(ChipViewTest, AClickOpensTheEditorAndSoDoesThePencil)
{
    ChipPanel& panel = add(QStringLiteral("1.png"));
    QTest::mouseClick(&panel.view(), Qt::LeftButton, {}, {30, 70});
    EXPECT_EQ(edited.size(), 1);
    QTest::mouseClick(button(panel, "Annotate"), Qt::LeftButton);
    EXPECT_EQ(edited, (QList<QUrl>{file(QStringLiteral("1.png")), file(QStringLiteral("1.png"))}));
    QTest::mouseClick(&panel.view(), Qt::RightButton, {}, {30, 70});
    EXPECT_EQ(edited.size(), 2);
}

TEST_F(ChipViewTest, APressBesideTheButtonsReachesTheChipThroughTheOverlay)
{
    ChipPanel& panel = add(QStringLiteral("1.png"));
    QWidget* overlay = panel.view().childAt(QPoint(40, 80));
    ASSERT_TRUE(overlay);
    QTest::mouseClick(overlay, Qt::LeftButton, {}, {40, 80});
    EXPECT_EQ(edited.size(), 1);
}

TEST_F(ChipViewTest, FourPointsAreStillAClickAndMoreADrag)
{
    ChipView& view = add(QStringLiteral("1.png")).view();
    press(view, {50, 70});
    moveTo(view, {54, 70});
    release(view, {54, 70});
    EXPECT_EQ(edited.size(), 1);
    press(view, {50, 70});
    moveTo(view, {54.01, 70}); // a drag to nowhere: there is nothing to drop on here
    release(view, {54, 70});
    EXPECT_EQ(edited.size(), 1);
    EXPECT_EQ(manager->panels().size(), 1u);
}

TEST_F(ChipViewTest, CommandDragMovesTheWholeStackAndKeepsItThere)
{
    add(QStringLiteral("1.png"));
    ChipView& view = add(QStringLiteral("2.png")).view();
    auto& mouse = FakePlatform::current().mouse;
    mouse = {100, 100};
    press(view, {50, 70}, Qt::ControlModifier);
    mouse = {130, 90};
    moveTo(view, {80, 80}, Qt::ControlModifier);
    EXPECT_THAT(origins(), testing::ElementsAre(Point{54, 126}, Point{54, 14}));
    mouse = {140, 200};
    moveTo(view, {50, 70}); // the key was let go meanwhile
    EXPECT_THAT(origins(), testing::ElementsAre(Point{64, 236}, Point{64, 124}));
    EXPECT_EQ(preferences.chipPosition(), ChipPosition::bottomLeft);
    release(view, {50, 70});
    EXPECT_EQ(preferences.chipPosition(), ChipPosition::custom);
    EXPECT_EQ(preferences.chipCustomOrigin(), (Point{64, 124}));
    EXPECT_TRUE(edited.isEmpty());
}

TEST_F(ChipViewTest, AMoveOfTheStackOutlivesItsManager)
{
    auto panel = std::make_unique<ChipPanel>(file(QStringLiteral("1.png")), contentOf({200, 100}),
                                             clock.clock(), ChipView::OnEdit());
    panel->view().setManager(manager.get());
    manager.reset();
    press(panel->view(), {50, 70}, Qt::ControlModifier);
    moveTo(panel->view(), {80, 80}, Qt::ControlModifier);
    release(panel->view(), {80, 80});
    EXPECT_EQ(preferences.chipPosition(), ChipPosition::bottomLeft);
    QTest::mouseClick(button(*panel, "Annotate"), Qt::LeftButton); // nobody wants to know
}

TEST_F(ChipViewTest, TheThumbnailFillsTheChipUnderRoundCornersAndALightLine)
{
    ChipView& view = add(QStringLiteral("1.mp4")).view();
    const QImage image = Rendered::at(view, 2);
    const QColor blue(40, 90, 200);
    expectColor(image, {200, 100}, blue);
    expectColor(image, {10, 100}, blue);
    // The line is a point wide, white at 0.35.
    const QColor line = mixed(blue, Qt::white, 0.35);
    for (const QPoint pixel :
         {QPoint(0, 100), QPoint(1, 100), QPoint(399, 100), QPoint(200, 0), QPoint(200, 199)})
        expectColor(image, pixel, line);
    expectColor(image, {2, 100}, blue);
    // The corner is round with a radius of ten points: its centre lies at (20, 20) pixels.
    expectColor(image, {3, 3}, Rendered::ground);
    expectColor(image, {9, 9}, blue);
}

TEST_F(ChipViewTest, TheOverlayDarkensTheThumbnail)
{
    ChipView& view = add(QStringLiteral("1.mp4")).view();
    QEnterEvent enter({10, 10}, {10, 10}, {10, 10});
    QCoreApplication::sendEvent(&view, &enter);
    ASSERT_TRUE(runUntil([&] { return view.overlayOpacity() == 1; }));
    expectColor(Rendered::at(view, 1), {40, 80}, mixed(QColor(40, 90, 200), Qt::black, 0.32));
}
