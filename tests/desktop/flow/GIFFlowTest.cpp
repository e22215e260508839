// Recordings for a GIF, with the real capture tool.

#include "desktop/flow/FlowTest.h"
#include "desktop/flow/RecordingHands.h"
#include "desktop/harness/Clipboard.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

using namespace Desktop;

namespace {

class RecordingAsGIF : public FlowTest {
protected:
    void SetUp() override { begin({}); }

    /// Begins with Alt+Return; comes back with the film's name when it is being filmed.
    QString record()
    {
        EXPECT_TRUE(succeeded(tamrik->pressRecordKey()));
        EXPECT_TRUE(succeeded(dragOut(area())));
        EXPECT_TRUE(succeeded(awaitRecordButton(*desktop, area())));
        EXPECT_TRUE(succeeded(input().key(QStringLiteral("alt+Return"))));
        EXPECT_TRUE(succeeded(RecordingControls::await(*desktop, *tamrik)));
        QString film;
        EXPECT_TRUE(succeeded(waitUntil(QStringLiteral("a film and its journal"), [&] {
            const QDir folder(temporaryFolder(*desktop));
            const QStringList journals = folder.entryList({QStringLiteral("tamrik-*.json")});
            if (journals.isEmpty() ||
                folder.entryList({QStringLiteral("tamrik-seg-*.mov")}).isEmpty())
                return false;
            QFile journal(folder.filePath(journals.front()));
            if (journal.open(QIODevice::ReadOnly))
                film = QJsonDocument::fromJson(journal.readAll())
                           .object()
                           .value(QStringLiteral("film"))
                           .toString();
            return !film.isEmpty();
        })));
        return film;
    }

    /// Ends it with the key, and waits for its chip. What is on the clipboard then.
    QString end()
    {
        EXPECT_TRUE(succeeded(input().key(QStringLiteral("alt+shift+r"))));
        EXPECT_TRUE(succeeded(RecordingControls::awaitNone(*desktop, *tamrik)));
        EXPECT_TRUE(succeeded(tamrik->awaitChips(1)));
        const auto uris = Clipboard(*desktop).read(QStringLiteral("text/uri-list"));
        EXPECT_TRUE(succeeded(uris));
        return uris ? QUrl::fromEncoded(uris->trimmed()).toLocalFile() : QString();
    }
};

} // namespace

TEST_F(RecordingAsGIF, IsDeliveredAsOneBesideItsFilmOrAsTheFilm)
{
    const auto before = screen().grab(area());
    ASSERT_TRUE(succeeded(before));
    const QString film = record();
    const QString gif = film.chopped(3) + QStringLiteral("gif");
    EXPECT_EQ(end(), gif);
    EXPECT_EQ(tamrik->captures(), (QStringList{gif, film}));
    const auto read = Film::read(film);
    ASSERT_TRUE(succeeded(read));
    QImageReader reader(gif);
    EXPECT_EQ(reader.size(), area().size());
    EXPECT_EQ(reader.loopCount(), -1);
    QImage frame;
    int frames = 0;
    for (; reader.read(&frame); ++frames) {
        EXPECT_EQ(reader.nextImageDelay(), 100);
        EXPECT_LT(differingPixels(frame.convertToFormat(QImage::Format_RGB32), *before, 64),
                  frame.width() * frame.height() / 20);
    }
    EXPECT_NEAR(frames, 10 * read->seconds, 1.1);
    EXPECT_EQ(temporaryFiles(*desktop), QStringList());

    // Something that cannot be replaced stands where the next one should be.
    ASSERT_TRUE(succeeded(tamrik->putChipsAway()));
    const QString second = record();
    ASSERT_TRUE(QDir().mkpath(second.chopped(3) + QStringLiteral("gif/kept")));
    EXPECT_EQ(end(), second);
    EXPECT_EQ(tamrik->captures(), (QStringList{gif, film, second}));
}
