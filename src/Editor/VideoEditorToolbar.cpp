#include "Editor/VideoEditorToolbar.h"

#include "ChromeButton.h"

#include <QHBoxLayout>

namespace {

constexpr int heightOfAll = 46;
constexpr int spacing = 8;
constexpr int inset = 10;

} // namespace

VideoEditorToolbar::VideoEditorToolbar(QWidget* parent)
    : ChromeBarView(parent)
{
    setObjectName(QStringLiteral("VideoEditorToolbar"));
    setAccessibleName(QStringLiteral("Tools"));
    setFlat(true);
    setFixedHeight(heightOfAll);
    struct Entry {
        QString title;
        QString tip;
        void (VideoEditorToolbar::*clicked)();
        Chrome::Accent accent;
    };
    const Entry entries[] = {
        {QStringLiteral("Trim"),
         QStringLiteral("Select a range with the yellow handles, then Done"),
         &VideoEditorToolbar::trimClicked, Chrome::Accent::none},
        {QStringLiteral("Save Trimmed"),
         QStringLiteral("Export the selected range as a new .mov (no re-encode)"),
         &VideoEditorToolbar::saveClicked, Chrome::Accent::none},
        {QStringLiteral("Export GIF"),
         QStringLiteral("Export the selected range as an animated GIF (≤800 px, 10 fps)"),
         &VideoEditorToolbar::exportClicked, Chrome::Accent::none},
        {QStringLiteral("Copy File"), QStringLiteral("Put the video file on the clipboard"),
         &VideoEditorToolbar::copyClicked, Chrome::Accent::blue},
    };
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(inset, 0, inset, 0);
    row->setSpacing(spacing);
    for (const Entry& entry : entries) {
        auto* button = new ChromeButton(entry.title);
        button->setToolTip(entry.tip);
        button->setAccent(entry.accent);
        connect(button, &ChromeButton::clicked, this, entry.clicked);
        row->addWidget(button);
    }
    row->addStretch();
}
