#include "gui/AppDelegateFixture.h"

TEST_F(AppDelegateTest, EditorsOpenByTheKindOfFile)
{
    launch();
    app->openEditor(file("/a/FILM.MP4"));
    app->openEditor(file("/a/film.MoV"));
    app->openEditor(file("/a/picture.jpg"));
    app->openEditor(file("/a/none"));
    EXPECT_EQ(takeNotes().join(QLatin1Char('|')),
              QStringLiteral("video FILM.MP4|FILM.MP4 front|video film.MoV|film.MoV front|"
                             "image picture.jpg|picture.jpg front|image none|none front"));
    EXPECT_EQ(FakePlatform::current().activations, 4);
}

TEST_F(AppDelegateTest, AGIFOpensInTheUsersDefaultApplication)
{
    launch();
    QFile gif(folder.filePath(QStringLiteral("a.Gif")));
    ASSERT_TRUE(gif.open(QIODevice::WriteOnly));
    app->openEditor(QUrl::fromLocalFile(gif.fileName()));
    EXPECT_EQ(workspace.opened, QList<QUrl>{QUrl::fromLocalFile(gif.fileName())});
    EXPECT_TRUE(takeNotes().isEmpty());
}

TEST_F(AppDelegateTest, TheSameFileIsNeverOpenedTwice)
{
    launch();
    app->openEditor(file("/a/1.png"));
    app->openEditor(file("/a/2.png"));
    takeNotes();
    app->openEditor(file("/a/1.png"));
    EXPECT_EQ(takeNotes(), QStringList{QStringLiteral("1.png front")});
    EXPECT_EQ(madeEditors.size(), 2u);

    const auto first = madeEditors[0].lock();
    first->onClose(first.get());
    app->openEditor(file("/a/1.png"));
    EXPECT_EQ(takeNotes().join(QLatin1Char('|')), QStringLiteral("image 1.png|1.png front"));
    EXPECT_FALSE(madeEditors[1].expired());
}

TEST_F(AppDelegateTest, AnEditorIsKeptUntilItClosesAndThenDropped)
{
    launch();
    app->openEditor(file("/a/1.mp4"));
    ASSERT_FALSE(madeEditors[0].expired());
    auto editor = madeEditors[0].lock();
    editor->onClose(editor.get());
    editor.reset();
    EXPECT_TRUE(madeEditors[0].expired());
}

TEST_F(AppDelegateTest, AnEditorThatCannotOpenIsNotKept)
{
    editorsOpen = false;
    launch();
    app->openEditor(file("/a/1.png"));
    EXPECT_TRUE(takeNotes().isEmpty());
    EXPECT_EQ(FakePlatform::current().activations, 0);
}

TEST_F(AppDelegateTest, AFileThatAVideoEditorWroteIsDelivered)
{
    launch();
    app->openEditor(file("/a/1.mp4"));
    madeEditors[0].lock()->onFileProduced(file("/a/1 trimmed.mp4"));
    EXPECT_EQ(chips(), QList<QUrl>{file("/a/1 trimmed.mp4")});
    EXPECT_EQ(FakePlatform::current().pasteboard.at(0).fileURL, chips().at(0));
}

TEST_F(AppDelegateTest, AChipsEditOpensItsEditor)
{
    launch();
    takeScreenshot();
    ASSERT_EQ(chips().size(), 1);
    takeNotes();
    QTest::mouseClick(&app->chips().panels().front()->view(), Qt::LeftButton, {}, {30, 60});
    const QString name = chips().at(0).fileName();
    EXPECT_EQ(takeNotes().join(QLatin1Char('|')), QStringLiteral("image %1|%1 front").arg(name));
}

TEST_F(AppDelegateTest, AnnotateLastOpensTheLastScreenshotWhileItsFileExists)
{
    launch();
    app->annotateLast();
    EXPECT_TRUE(takeNotes().isEmpty());
    takeScreenshot();
    FakePlatform::current().press(14, optionShift);
    EXPECT_EQ(takeNotes().size(), 2);
    Q_EMIT app->statusMenu()->menu().aboutToShow();
    EXPECT_TRUE(menuItem("Annotate Last Capture")->isEnabled());

    QFile::remove(app->lastCaptureURL()->toLocalFile());
    app->annotateLast();
    EXPECT_TRUE(takeNotes().isEmpty());
    EXPECT_TRUE(preferences.lastCapturePath());
    Q_EMIT app->statusMenu()->menu().aboutToShow();
    EXPECT_FALSE(menuItem("Annotate Last Capture")->isEnabled());
}

TEST_F(AppDelegateTest, OpenFolderOpensTheCapturesFolderIfThereIsOne)
{
    launch();
    app->openFolder();
    EXPECT_TRUE(workspace.opened.isEmpty());
    CaptureFiles::createFolder();
    app->openFolder();
    EXPECT_EQ(workspace.opened, QList<QUrl>{QUrl::fromLocalFile(CaptureFiles::folder())});
}
