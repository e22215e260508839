// What an editor leaves in its picture's folder, however it ends.

#include "Editor/AnnotationRenderer.h"
#include "Editor/CanvasView.h"
#include "Editor/EditorToolbar.h"
#include "Editor/EditorWindowController.h"
#include "Editor/LabelField.h"
#include "Editor/Sidecar.h"
#include "fakes/FakeClock.h"
#include "fakes/FakePlatform.h"
#include "support/EventLoop.h"
#include "support/TestLog.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

#include <csignal>

#include <private/qguiapplication_p.h>
#include <sys/resource.h>

namespace {

class EditorFiles : public testing::Test {
protected:
    EditorFiles() { FakePlatform::reset(); }

    QString picture(const char* name) const
    {
        QImage image(400, 300, QImage::Format_RGB32);
        image.fill(Qt::white);
        for (int x = 0; x < image.width(); ++x) // no two rows and columns are the same
            for (int y = 0; y < image.height(); ++y)
                image.setPixel(x, y, qRgb(x * 7 % 256, y * 11 % 256, (x ^ y) % 256));
        const QString path = folder.filePath(QString::fromLatin1(name));
        EXPECT_TRUE(image.save(path));
        return path;
    }

    std::unique_ptr<EditorWindowController> open(const QString& path)
    {
        auto editor = EditorWindowController::open(QUrl::fromLocalFile(path), clock.clock());
        EXPECT_TRUE(editor);
        editor->makeKeyAndOrderFront();
        settle();
        return editor;
    }

    static CanvasModel& modelOf(EditorWindowController& editor) { return editor.canvas().model(); }

    /// A stroke of so many points.
    static void draw(EditorWindowController& editor, int points)
    {
        CanvasModel& model = modelOf(editor);
        model.setTool(EditorTool::freehand);
        model.mouseDown({1, 1});
        for (int i = 1; i < points; ++i)
            model.mouseDragged({1.0 + i % 397 / 1.1, 1.0 + i % 293 / 1.3});
        model.mouseUp();
    }

    static void type(EditorWindowController& editor, const QString& text)
    {
        modelOf(editor).setTool(EditorTool::text);
        QTest::mouseClick(&editor.canvas(), Qt::LeftButton, {}, {60, 200});
        auto* field = editor.canvas().findChild<LabelField*>();
        ASSERT_TRUE(field);
        QTest::keyClicks(field, text);
    }

    QTemporaryDir folder;
    FakeClock clock;
};

constexpr int many = 100'000;

} // namespace

TEST_F(EditorFiles, ClosingWaitsUntilAllOfItIsInTheSidecar)
{
    const QString path = picture("shot.png");
    const auto editor = open(path);
    editor->onClose = [&](EditorWindowController*) {
        EXPECT_TRUE(Sidecar::load(path) == modelOf(*editor).annotations()) << "told too soon";
    };
    draw(*editor, many);
    type(*editor, QStringLiteral("last words"));
    editor->window().close();
    const QList<Annotation> found = Sidecar::load(path);
    ASSERT_EQ(found.size(), 2);
    EXPECT_EQ(found[0].path->size(), many);
    EXPECT_EQ(found[1].text, QStringLiteral("last words"));
}

TEST_F(EditorFiles, OpeningAnewRightAfterClosingHasTheNewest)
{
    const QString path = picture("shot.png");
    for (int round = 1; round <= 3; ++round) {
        auto editor = open(path);
        draw(*editor, many / 3);
        const auto drawn = modelOf(*editor).annotations();
        EXPECT_EQ(drawn.size(), round);
        editor->window().close();
        const auto next = EditorWindowController::open(QUrl::fromLocalFile(path), clock.clock());
        EXPECT_TRUE(modelOf(*next).annotations() == drawn);
    }
}

TEST_F(EditorFiles, AnOpenEditorThatGoesSavesToo)
{
    const QString path = picture("shot.png");
    {
        const auto editor = open(path);
        draw(*editor, many);
        type(*editor, QStringLiteral("half a wo"));
    }
    const QList<Annotation> found = Sidecar::load(path);
    ASSERT_EQ(found.size(), 2);
    EXPECT_EQ(found[1].text, QStringLiteral("half a wo"));
}

TEST_F(EditorFiles, ASessionThatEndsFindsAllOfItSaved)
{
    const QString path = picture("shot.png");
    const auto editor = open(path);
    draw(*editor, many);
    type(*editor, QStringLiteral("half a wo"));
    // What Qt calls when the session manager asks it to save; the user may yet stay.
    static_cast<QGuiApplicationPrivate*>(QObjectPrivate::get(qApp))->commitData();
    EXPECT_TRUE(Sidecar::load(path) == modelOf(*editor).annotations());
    EXPECT_EQ(modelOf(*editor).annotations().size(), 2);
    EXPECT_TRUE(editor->window().isVisible());
}

TEST_F(EditorFiles, QuittingClosesAndSavesEveryEditor)
{
    const QString first = picture("first.png");
    const QString second = picture("second.png");
    std::vector<std::unique_ptr<EditorWindowController>> editors;
    int closed = 0;
    for (const QString& path : {first, second}) {
        editors.push_back(open(path));
        editors.back()->onClose = [&](EditorWindowController*) { ++closed; };
    }
    draw(*editors[0], 10);
    type(*editors[1], QStringLiteral("typing"));
    QTimer::singleShot(0, qApp, [] { QCoreApplication::quit(); });
    QApplication::exec();
    EXPECT_EQ(closed, 2);
    ASSERT_EQ(Sidecar::load(first).size(), 1);
    EXPECT_EQ(Sidecar::load(first)[0].kind, AnnotationKind::freehand);
    ASSERT_EQ(Sidecar::load(second).size(), 1);
    EXPECT_EQ(Sidecar::load(second)[0].text, QStringLiteral("typing"));
}

TEST_F(EditorFiles, AnExportThatDoesNotFitOnTheDiskLeavesTheLastOne)
{
    const QString path = picture("shot.png");
    const auto editor = open(path);
    editor->exportFlattened();
    QFile exported(folder.filePath(QStringLiteral("shot annotated.png")));
    ASSERT_TRUE(exported.open(QIODevice::ReadOnly));
    const QByteArray before = exported.readAll();
    ASSERT_GT(before.size(), 1000);

    // A file that may not grow is what a full disk looks like: a part is written, then no more.
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &usual), 0);
    const rlimit tight{1000, usual.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    editor->exportFlattened();
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &usual), 0);
    std::signal(SIGXFSZ, handler);

    EXPECT_EQ(editor->window().windowTitle(), QStringLiteral("Export failed"));
    EXPECT_EQ(TestLog::takeLines().size(), 1);
    QFile now(exported.fileName());
    ASSERT_TRUE(now.open(QIODevice::ReadOnly));
    EXPECT_TRUE(now.readAll() == before);
}

TEST_F(EditorFiles, UnusualNamesAreTakenAsTheyStand)
{
    const struct {
        const char* name;
        const char* exported;
    } cases[] = {
        {"a[*]b.png", "a[*]b annotated.png"}, // what Qt replaces in titles
        {"x.tar.png", "x.tar annotated.png"}, {"none", "none annotated.png"},
        {".hidden", ".hidden annotated.png"}, {"ünï 100%&.PNG", "ünï 100%& annotated.png"},
    };
    for (const auto& [name, exported] : cases) {
        SCOPED_TRACE(name);
        const QString path = folder.filePath(QString::fromUtf8(name));
        ASSERT_TRUE(QFile::rename(picture("shot.png"), path));
        const auto editor = open(path);
        EXPECT_EQ(editor->window().windowHandle()->title(), QString::fromUtf8(name));
        editor->exportFlattened();
        EXPECT_EQ(editor->window().windowHandle()->title(),
                  QStringLiteral("Exported ✓ ") + QString::fromUtf8(exported));
        EXPECT_TRUE(QFile::exists(folder.filePath(QString::fromUtf8(exported))));
        draw(*editor, 10);
        editor->window().close();
        EXPECT_TRUE(QFile::exists(path + QStringLiteral(".tamrik.json")));
    }
}

TEST_F(EditorFiles, ACopyHasWhatIsBeingTypedAndTheCanvasHasTheKeysAgain)
{
    const auto editor = open(picture("shot.png"));
    const auto expectLabels = [&](const QImage& image, qsizetype count) {
        ASSERT_EQ(modelOf(*editor).annotations().size(), count);
        EXPECT_EQ(modelOf(*editor).annotations().last().text, QStringLiteral("label"));
        EXPECT_EQ(image.convertToFormat(QImage::Format_RGB32),
                  AnnotationRenderer::flattened(editor->canvas().image(),
                                                modelOf(*editor).annotations()));
        EXPECT_EQ(editor->window().focusWidget(), &editor->canvas());
        settle();
    };
    type(*editor, QStringLiteral("label"));
    EXPECT_NE(editor->window().focusWidget(), &editor->canvas());
    editor->copyFlattened();
    expectLabels(QImage::fromData(*FakePlatform::current().pasteboard.at(0).png, "PNG"), 1);
    type(*editor, QStringLiteral("label"));
    editor->exportFlattened();
    expectLabels(QImage(folder.filePath(QStringLiteral("shot annotated.png"))), 2);
}
