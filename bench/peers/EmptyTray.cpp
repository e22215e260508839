// The least that a program with an icon in the status area can be: the icon, and a menu of one
// item.

#include <QApplication>
#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QPixmap square(22, 22);
    square.fill(Qt::white);
    QMenu menu;
    menu.addAction(QStringLiteral("Quit"), [] { QApplication::quit(); });
    QSystemTrayIcon icon{QIcon(square)};
    icon.setContextMenu(&menu);
    icon.show();
    return QApplication::exec();
}
