// What a screen reader gets to say of everything that the program shows.

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
