#include "Platform/Pasteboard.h"

#include "Platform/Linux/X11/EventTimes.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <memory>

void Platform::writePasteboard(const PasteboardItem& item)
{
    auto data = std::make_unique<QMimeData>();
    if (item.png)
        data->setData(QStringLiteral("image/png"), *item.png); // setImageData would encode afresh
    if (item.fileURL) {
        data->setUrls({*item.fileURL});
        // What file managers want beside the URL before they paste a file.
        data->setData(QStringLiteral("x-special/gnome-copied-files"),
                      "copy\n" + item.fileURL->toEncoded());
        data->setData(QStringLiteral("application/x-kde-cutselection"), "0");
    }
    X11::mendTime();
    QGuiApplication::clipboard()->setMimeData(data.release()); // the clipboard owns it
}

void Platform::prepareDrag()
{
    X11::mendTime(); // the drag is announced with it
}
