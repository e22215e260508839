// What the window gives away and when it says so, and where its controls lie.

#include "gui/VideoEditorFixture.h"

#include <QFileInfo>

#include <gmock/gmock.h>

#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::ElementsAre;
using Handle = TrimModel::Handle;

namespace {

class VideoEditorExport : public VideoEditorTest {
protected:
    void moveHandles(double start, double end)
    {
        Q_EMIT strip().moved(Handle::end, end);
        Q_EMIT strip().moved(Handle::start, start);
    }

    /// That is what a film and a GIF are made of now.
    void expectExported(double start, double end)
    {
        editor->saveTrimmed();
        editor->exportGIF();
        EXPECT_NEAR(trims.back().start, start, 1e-9);
        EXPECT_NEAR(trims.back().end, end, 1e-9);
        EXPECT_NEAR(gifs.back().range.start, start, 1e-9);
        EXPECT_NEAR(gifs.back().range.duration, end - start, 1e-9);
    }
};

/// Makes a folder that is removed by nobody who goes by paths: they become too long inside.
void makeBottomless(const QString& folder)
{
    const std::string name(250, 'd');
    ASSERT_EQ(mkdir(qPrintable(folder), 0700), 0);
    int inside = open(qPrintable(folder), O_PATH | O_DIRECTORY | O_CLOEXEC);
    for (int depth = 0; depth < 20; ++depth) {
        ASSERT_EQ(mkdirat(inside, name.c_str(), 0700), 0);
        const int next = openat(inside, name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        close(inside);
        inside = next;
    }
    close(inside);
}

} // namespace

TEST_F(VideoEditorExport, HandlesThatAreNotConfirmedDoNotCount)
{
    openReady();
    editor->trimClicked();
    moveHandles(2, 7);
    ASSERT_TRUE(view().trimBar().isVisible());
    expectExported(0, 10);
    press(Qt::Key_Return);
    expectExported(2, 7);
    editor->trimClicked();
    moveHandles(3, 5);
    ASSERT_TRUE(view().trimBar().isVisible());
    expectExported(2, 7);
    press(Qt::Key_Escape);
    ASSERT_FALSE(view().trimBar().isVisible());
    expectExported(2, 7);
}

TEST_F(VideoEditorExport, TheTitleTellsOfAFileBeforeItIsGivenAway)
{
    openReady();
    QStringList titles;
    editor->onFileProduced = [&](const QUrl&) { titles += title(); };
    editor->saveTrimmed();
    editor->exportGIF();
    trims[0].completion({MovieExport::End::completed, {}});
    gifs[0].completion(true);
    EXPECT_THAT(titles, ElementsAre(QStringLiteral("Saved ✓ clip trimmed.mp4"),
                                    QStringLiteral("GIF ✓ clip.gif")));
}

TEST_F(VideoEditorExport, WhatCannotBeRemovedIsLeftToTheExport)
{
    openReady();
    const QString output = folder.filePath(QStringLiteral("clip trimmed.mp4"));
    ASSERT_NO_FATAL_FAILURE(makeBottomless(output));
    editor->saveTrimmed();
    EXPECT_TRUE(QFileInfo::exists(output));
    EXPECT_EQ(title(), QStringLiteral("Exporting video…"));
    ASSERT_EQ(trims.size(), 1U);
    EXPECT_EQ(trims[0].destination, output);
    std::filesystem::remove_all(output.toStdString());
}

TEST_F(VideoEditorExport, TheButtonsStandInARowInTheMiddleOfTheirBar)
{
    openReady();
    int left = 10;
    for (const char* text : {"Trim", "Save Trimmed", "Export GIF", "Copy File"}) {
        SCOPED_TRACE(text);
        const ChromeButton* it = button(text);
        ASSERT_TRUE(it);
        EXPECT_EQ(it->x(), left);
        left += it->width() + 8;
        EXPECT_EQ(it->height(), it->sizeHint().height());
        EXPECT_EQ(it->y(), (46 - it->height()) / 2);
    }
}

TEST_F(VideoEditorExport, ThePlayersControlsLieOverTheBottomOfThePicture)
{
    openReady();
    for (const QSize size : {QSize(980, 640), QSize(720, 500)}) {
        editor->window().resize(size);
        settle();
        for (const QWidget* bar :
             std::initializer_list<const QWidget*>{&view().bar(), &view().trimBar()}) {
            EXPECT_EQ(bar->width(), size.width() - 2 * 12);
            EXPECT_EQ(bar->height(), bar->sizeHint().height());
            EXPECT_EQ(bar->geometry().bottomLeft(), QPoint(12, view().height() - 12 - 1));
        }
    }
}
