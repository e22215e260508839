// What a screen reader gets to say of everything that the program shows.

#include "RecordingControlsPanel.h"
#include "SelectionHUD.h"
#include "gui/AppDelegateFixture.h"

#include <QAccessible>
#include <QApplication>

namespace {

QString spokenDescription(QWidget& widget)
{
    const QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(&widget);
    return spoken ? spoken->text(QAccessible::Description) : QString();
}

/// Whether something is there to be looked at alone.
bool isDecoration(const QAccessibleInterface& item)
{
    const auto* widget = qobject_cast<const QWidget*>(item.object());
    return item.role() == QAccessible::Separator ||
           (widget && widget->testAttribute(Qt::WA_TransparentForMouseEvents));
}

/// The controls of `top` and all below it that have no name.
QStringList nameless(QAccessibleInterface& top)
{
    QStringList result;
    if (!isDecoration(top) && top.text(QAccessible::Name).isEmpty()) {
        const QObject* object = top.object();
        result += object ? QString::fromLatin1(object->metaObject()->className())
                         : QStringLiteral("role %1").arg(top.role());
    }
    for (int i = 0; i < top.childCount(); ++i) {
        if (QAccessibleInterface* child = top.child(i))
            result += nameless(*child);
    }
    return result;
}

} // namespace

TEST_F(AppDelegateTest, EveryWindowAndControlHasANameForScreenReaders)
{
    launch();
    takeScreenshot();
    ASSERT_EQ(chips().size(), 1);
    app->captureArea();
    ASSERT_TRUE(SelectionSession::current);
    int windows = 0;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        QAccessibleInterface* top = QAccessible::queryAccessibleInterface(widget);
        ASSERT_TRUE(top);
        EXPECT_EQ(nameless(*top), QStringList());
        ++windows;
    }
    // The menu, its submenu, a chip and the overlay at the least.
    EXPECT_GE(windows, 4);
}

TEST_F(AppDelegateTest, TheBarsOfARecordingHaveNamesForScreenReaders)
{
    launch();
    app->toggleRecording();
    drag({100, 100}, {400, 300});
    SelectionHUD* hud = SelectionSession::current->windows().front()->view().hud();
    ASSERT_TRUE(hud);
    QAccessibleInterface* bar = QAccessible::queryAccessibleInterface(hud);
    EXPECT_EQ(nameless(*bar), QStringList());
    // A switch says whether it is on, and the size can be read.
    hud->refreshToggleTints();
    QStringList spoken;
    for (int i = 0; i < bar->childCount(); ++i) {
        if (!isDecoration(*bar->child(i)))
            spoken += bar->child(i)->text(QAccessible::Name) +
                      (bar->child(i)->state().checkable ? QStringLiteral(" (switch)") : QString());
    }
    EXPECT_EQ(spoken.join(u'|'),
              QStringLiteral("300 × 200|Record microphone audio (switch)|"
                             "Camera bubble on/off (switch)|Redo selection|Record as GIF|Record|"
                             "Cancel (Esc)"));

    RecordingControlsPanel controlsPanel(
        {100, 100, 200, 200}, clock.clock(),
        {[] { return false; }, [] { return 0.0; }, [] {}, [] {}, [] {}, [] {}});
    EXPECT_EQ(nameless(*QAccessible::queryAccessibleInterface(&controlsPanel)), QStringList());
}

TEST_F(AppDelegateTest, TheOverlayTellsScreenReadersWhatItSaysOnScreen)
{
    launch();
    app->captureArea();
    ASSERT_TRUE(SelectionSession::current);
    EXPECT_EQ(spokenDescription(SelectionSession::current->windows().front()->view()),
              QStringLiteral("Drag to select capture area  ·  Esc to cancel"));
    SelectionSession::current->finish(std::nullopt);

    app->toggleRecording();
    ASSERT_TRUE(SelectionSession::current);
    EXPECT_EQ(spokenDescription(SelectionSession::current->windows().front()->view()),
              QStringLiteral("Drag to select recording area  ·  Esc to cancel"));
}

TEST_F(AppDelegateTest, TheStatusItemIsCalledTamrik)
{
    launch();
    EXPECT_EQ(app->statusMenu()->statusItem().toolTip(), QStringLiteral("Tamrik"));
}
