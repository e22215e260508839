#pragma once

#include "Support/Background.h"
#include "unit/RecordingFixture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>
#include <vector>

/// Recordings that the program leaves, and its next start.
class RecordingRecoveryFixture : public RecordingFixture {
protected:
    void recover()
    {
        manager->recover(
            [this](const QUrl& file, bool asGIF) { recovered.emplace_back(file, asGIF); });
    }

    /// The program goes; `films` says whether the tool leaves a film meanwhile.
    void crash(bool films = true)
    {
        if (films && manager->state() != RecordingState::paused)
            write(runs.back()->file(), "film");
        makeManager();
    }

    QJsonObject journal() const
    {
        const QStringList names = journals();
        return names.size() == 1
                   ? QJsonDocument::fromJson(contents(segmentFolder() + u'/' + names.front()))
                         .object()
                   : QJsonObject();
    }

    int lostAttempts() const { return journal().value(QStringLiteral("lostAttempts")).toInt(-1); }

    QString journalPath() const { return segmentFolder() + u'/' + journals().value(0); }

    void startAsGIF()
    {
        auto asGIF = session();
        asGIF.asGIF = true;
        manager->start(asGIF);
    }

    QString part(int number, int all) const
    {
        return folder.filePath(
            QStringLiteral("captures/Tamrik Rec 1 (%1 of %2).mov").arg(number).arg(all));
    }

    /// What was begun beside the main thread has ended, and that is known.
    static void awaitEnded()
    {
        Background::threads().waitForDone();
        QCoreApplication::processEvents();
    }

    std::vector<std::pair<QUrl, bool>> recovered;
};
