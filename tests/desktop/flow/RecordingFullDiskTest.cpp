// What becomes of a recording when there is no room for it.

#include "desktop/flow/NumberedRecording.h"

#include <QDir>
#include <QFile>

#include <random>
#include <thread>

#include <unistd.h>

using namespace Desktop;
using namespace std::chrono_literals;
using Control = RecordingControls::Control;

namespace {

class RecordingFullDisk : public NumberedRecording {
protected:
    /// A folder of the user's, with the folders in it that a test asks for.
    QString disk() const { return desktop->home() + QStringLiteral("/disk"); }

    /// Starts the program anew; it alone sees another disk of so many KiB, as `disk()`, on which
    /// there are such folders.
    void startOnDisk(int kib, const QStringList& folders, const QMap<QString, QString>& extra)
    {
        ASSERT_TRUE(QDir().mkpath(disk()));
        QString mounts = QStringLiteral("mount -t tmpfs -o size=%1k tmpfs \"%2\" || exit 90\n")
                             .arg(kib)
                             .arg(disk());
        for (const QString& folder : folders)
            mounts += QStringLiteral("mkdir \"%1/%2\"\n").arg(disk(), folder);
        startWithMounts(mounts, extra);
    }

    /// A path as the program sees it.
    QString seen(const QString& path) const
    {
        return QStringLiteral("/proc/%1/root%2").arg(tamrik->app().pid()).arg(path);
    }
    QStringList namesIn(const QString& folder) const
    {
        return QDir(seen(folder)).entryList(QDir::Files | QDir::Hidden);
    }

    /// Selects and starts a recording, whose files are nowhere to be seen from here.
    void startFilming()
    {
        ASSERT_NO_FATAL_FAILURE(select());
        ASSERT_TRUE(succeeded(input().key(QStringLiteral("Return"))));
        auto shown = RecordingControls::await(*desktop, *tamrik);
        ASSERT_TRUE(succeeded(shown));
        controls = *shown;
    }

    /// Shows what fills a disk: some 80 KB a picture.
    void showNoise()
    {
        QImage noise(area().size(), QImage::Format_RGB32);
        for (int y = 0; y < noise.height(); ++y) {
            for (int x = 0; x < noise.width(); ++x)
                noise.setPixel(x, y, 0xff000000 | static_cast<QRgb>(random() & 0xffffff));
        }
        window->show(noise);
    }
    /// Does so until the recording has ended by itself; slowly, since what of the last half second
    /// is not on the disk yet has no room any more.
    void fillDisk()
    {
        ASSERT_TRUE(
            succeeded(waitFor(QStringLiteral("the disk being full"), [&]() -> Outcome<void> {
                showNoise();
                std::this_thread::sleep_for(50ms);
                return RecordingControls::isShown(*desktop, *tamrik) ? Failure{} : Outcome<void>();
            })));
    }

    std::mt19937 random{8};
};

constexpr int smallDisk = 1200; // KiB
const QString noRoom = QStringLiteral("Tamrik: mp4 remux failed: ");

} // namespace

TEST_F(RecordingFullDisk, WhileItFilmsItEndsAndWhatWasFilmedIsDelivered)
{
    ASSERT_NO_FATAL_FAILURE(startOnDisk(smallDisk, {}, {{QStringLiteral("TMPDIR"), disk()}}));
    ASSERT_NO_FATAL_FAILURE(startFilming());
    ASSERT_NO_FATAL_FAILURE(fillDisk());
    const auto path = awaitFilm();
    ASSERT_TRUE(succeeded(path));
    EXPECT_TRUE(path->endsWith(QStringLiteral(".mp4")));
    EXPECT_EQ(namesIn(disk()), QStringList());
    // Almost all of the disk is in it.
    EXPECT_GT(QFile(*path).size(), 500'000);
    EXPECT_TRUE(succeeded(Film::lastFrame(*path)));
    EXPECT_TRUE(succeeded(awaitRedIcon(false)));
}

TEST_F(RecordingFullDisk, ForTheFinishedFilmTheNextStartDeliversIt)
{
    ASSERT_TRUE(QDir().mkpath(desktop->home() + QStringLiteral("/Pictures")));
    ASSERT_TRUE(QFile::link(disk(), desktop->home() + QStringLiteral("/Pictures/Tamrik")));
    ASSERT_NO_FATAL_FAILURE(startOnDisk(16, {}, {}));
    showNoise();
    ASSERT_NO_FATAL_FAILURE(record());
    ASSERT_TRUE(succeeded(controls->click(Control::Stop)));
    ASSERT_TRUE(succeeded(tamrik->app().awaitErrorOutput(noRoom)));
    ASSERT_TRUE(succeeded(RecordingControls::awaitNone(*desktop, *tamrik)));
    EXPECT_EQ(tamrik->app().errorOutput().count(u'\n'), 1)
        << qPrintable(tamrik->app().errorOutput());
    EXPECT_EQ(namesIn(disk()), QStringList());
    EXPECT_EQ(temporaryFiles(*desktop).size(), 2); // the segment and its journal
    EXPECT_TRUE(tamrik->chips().isEmpty());
    ASSERT_TRUE(succeeded(tamrik->app().stop()));

    ASSERT_NO_FATAL_FAILURE(restart()); // where there is room
    const auto path = awaitFilm();
    ASSERT_TRUE(succeeded(path));
    EXPECT_TRUE(path->endsWith(QStringLiteral(".mp4")));
    EXPECT_TRUE(succeeded(Film::lastFrame(*path)));
    EXPECT_EQ(temporaryFiles(*desktop), QStringList());
}

TEST_F(RecordingFullDisk, ForBothTheSegmentItselfIsDelivered)
{
    ASSERT_TRUE(QDir().mkpath(desktop->home() + QStringLiteral("/Pictures")));
    ASSERT_TRUE(QFile::link(disk() + QStringLiteral("/films"),
                            desktop->home() + QStringLiteral("/Pictures/Tamrik")));
    ASSERT_NO_FATAL_FAILURE(
        startOnDisk(smallDisk, {QStringLiteral("films"), QStringLiteral("segments")},
                    {{QStringLiteral("TMPDIR"), disk() + QStringLiteral("/segments")}}));
    ASSERT_NO_FATAL_FAILURE(startFilming());
    ASSERT_NO_FATAL_FAILURE(fillDisk());
    ASSERT_TRUE(succeeded(tamrik->awaitChips(1)));
    const QString said = tamrik->app().errorOutput();
    EXPECT_TRUE(said.startsWith(noRoom)) << qPrintable(said);
    EXPECT_EQ(said.count(u'\n'), 1) << qPrintable(said);
    EXPECT_EQ(namesIn(disk() + QStringLiteral("/segments")), QStringList());
    const QStringList films = namesIn(disk() + QStringLiteral("/films"));
    ASSERT_EQ(films.size(), 1);
    EXPECT_TRUE(films.front().endsWith(QStringLiteral(".mov")));
    const QString path = seen(disk() + QStringLiteral("/films/") + films.front());
    EXPECT_GT(QFile(path).size(), 500'000);
    EXPECT_TRUE(succeeded(Film::lastFrame(path)));
    ASSERT_TRUE(succeeded(tamrik->app().stop()));
    tamrik.reset(); // it has said something
}
