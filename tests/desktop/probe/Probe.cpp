// A small program with which the harness's tests find out what programs on a desktop get to see:
//   probe screens            each screen's name, geometry in points and scale
//   probe tray COLOR         an icon in the tray; tells of each click on it
//   probe veil               a half transparent black window over the middle of the screen
#include <QtCore/QTextStream>
#include <QtGui/QPainter>
#include <QtGui/QPixmap>
#include <QtGui/QScreen>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QSystemTrayIcon>
#include <QtWidgets/QWidget>

namespace {

void say(const QString& line)
{
    QTextStream(stdout) << line << Qt::endl;
}

void tellScreens()
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (const QScreen* screen : screens) {
        const QRect area = screen->geometry();
        say(QStringLiteral("%1 %2,%3 %4x%5 @%6")
                .arg(screen->name())
                .arg(area.x())
                .arg(area.y())
                .arg(area.width())
                .arg(area.height())
                .arg(screen->devicePixelRatio()));
    }
}

int showTrayIcon(const QColor& color)
{
    QPixmap square(64, 64);
    square.fill(color);
    QSystemTrayIcon icon{QIcon(square)};
    QMenu menu;
    QObject::connect(menu.addAction(QStringLiteral("Choose")), &QAction::triggered, &menu,
                     [] { say(QStringLiteral("chosen")); });
    icon.setContextMenu(&menu);
    QObject::connect(&icon, &QSystemTrayIcon::activated, &icon,
                     [](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger)
                             say(QStringLiteral("clicked"));
                     });
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [] { say(QStringLiteral("menu")); });
    icon.show();
    return QApplication::exec();
}

class Veil : public QWidget {
public:
    Veil()
    {
        setWindowFlags(Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint);
        setAttribute(Qt::WA_TranslucentBackground);
        setWindowTitle(QStringLiteral("veil"));
        resize(200, 200);
        move(screen()->geometry().center() - rect().center());
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter(this).fillRect(rect(), QColor(0, 0, 0, 128));
    }
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QApplication::arguments();
    const QString what = arguments.value(1);
    if (what == QStringLiteral("screens")) {
        tellScreens();
        return 0;
    }
    if (what == QStringLiteral("tray"))
        return showTrayIcon(QColor(arguments.value(2)));
    if (what == QStringLiteral("veil")) {
        Veil veil;
        veil.show();
        return QApplication::exec();
    }
    return 2;
}
