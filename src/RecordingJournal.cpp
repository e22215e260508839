#include "RecordingJournal.h"

#include "Support/Background.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUuid>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <future>
#include <optional>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

using Entry = RecordingJournal::Entry;

const QString prefix = QStringLiteral("tamrik-rec-");
const QString suffix = QStringLiteral(".json");
const QString unfinishedSuffix = QStringLiteral(".json.new");
const QString brokenSuffix = QStringLiteral(".broken");

/// More than any journal holds, in bytes: a segment takes some sixty.
constexpr qint64 largestFile = 1 << 20;

constexpr int formatVersion = 1;

constexpr auto diskPatience = 100ms;

QByteArray native(const QString& path)
{
    return QFile::encodeName(path);
}

bool lock(const FileDescriptor& file)
{
    return flock(file.get(), LOCK_EX | LOCK_NB) == 0;
}

bool writeAll(const FileDescriptor& file, const QByteArray& bytes)
{
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(file.get(), bytes.constData() + written,
                                      static_cast<std::size_t>(bytes.size() - written));
        if (count <= 0)
            return false;
        written += count;
    }
    return true;
}

/// Brings the file to the disk itself. That can take seconds while others write: it goes on
/// without us after a moment. Whether it has failed by then.
bool failsToSync(const QString& path)
{
    // A copy of an open descriptor would hold the lock too.
    const auto file =
        std::make_shared<FileDescriptor>(open(native(path).constData(), O_RDONLY | O_CLOEXEC));
    const auto succeeded = std::make_shared<std::promise<bool>>();
    std::future<bool> outcome = succeeded->get_future();
    // EINVAL: the file system has nothing to say about it.
    Background::threads().start([file, succeeded] {
        succeeded->set_value(fdatasync(file->get()) == 0 || errno == EINVAL);
    });
    return outcome.wait_for(diskPatience) == std::future_status::ready && !outcome.get();
}

/// The names in the folder, some time soon.
void syncNames(const QString& folder)
{
    Background::threads().start([path = native(folder)] {
        const FileDescriptor file(open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (file)
            fsync(file.get()); // where that fails only a power cut can tell
    });
}

std::optional<QByteArray> readAll(const FileDescriptor& file)
{
    QFile reader;
    if (!reader.open(file.get(), QIODevice::ReadOnly, QFileDevice::DontCloseHandle) ||
        reader.size() > largestFile)
        return std::nullopt;
    return reader.read(largestFile);
}

QByteArray toJson(const Entry& entry)
{
    QJsonArray segments;
    for (const QUrl& segment : entry.segments)
        segments += segment.fileName(QUrl::FullyDecoded);
    const QJsonObject root = {
        {QStringLiteral("version"), formatVersion},
        {QStringLiteral("film"), entry.finalURL.toLocalFile()},
        {QStringLiteral("gif"), entry.asGIF},
        {QStringLiteral("discarded"), entry.discarded},
        {QStringLiteral("segments"), segments},
        {QStringLiteral("lostAttempts"), entry.lostAttempts},
    };
    return QJsonDocument(root).toJson();
}

bool isNewer(const QJsonObject& root)
{
    return root.value(QStringLiteral("version")).toInt() > formatVersion;
}

/// What a journal in `folder` says; absent when it does not make sense.
std::optional<Entry> fromJson(const QJsonObject& root, const QString& folder)
{
    static const QRegularExpression segmentName(
        QRegularExpression::anchoredPattern(QStringLiteral("tamrik-seg-[0-9A-F-]{36}\\.mov")));
    const QString film = root.value(QStringLiteral("film")).toString();
    const QJsonValue gif = root.value(QStringLiteral("gif"));
    const QJsonValue discarded = root.value(QStringLiteral("discarded"));
    const QJsonValue segments = root.value(QStringLiteral("segments"));
    if (root.value(QStringLiteral("version")).toInt() != formatVersion ||
        !QDir::isAbsolutePath(film) || !film.endsWith(QStringLiteral(".mp4")) || !gif.isBool() ||
        !discarded.isBool() || !segments.isArray())
        return std::nullopt;
    Entry entry{.finalURL = QUrl::fromLocalFile(film),
                .asGIF = gif.toBool(),
                .segments = {},
                .discarded = discarded.toBool(),
                .lostAttempts = root.value(QStringLiteral("lostAttempts")).toInt()};
    const QJsonArray names = segments.toArray();
    for (const auto& name : names) {
        if (!segmentName.match(name.toString()).hasMatch())
            return std::nullopt;
        entry.segments += QUrl::fromLocalFile(folder + QLatin1Char('/') + name.toString());
    }
    return entry;
}

/// A file of the user's own at `path`, open; none when there is none, or something else is there.
FileDescriptor openOwn(const QString& path)
{
    FileDescriptor file(
        open(native(path).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status = {};
    if (file && fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
        status.st_uid == geteuid())
        return file;
    return FileDescriptor();
}

/// Whether `path` still is the name of `file`, which may have been replaced or removed meanwhile.
bool isNamed(const FileDescriptor& file, const QString& path)
{
    struct stat opened = {};
    struct stat named = {};
    return fstat(file.get(), &opened) == 0 && lstat(native(path).constData(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// A journal that was being written when the program ended: the one before it is complete.
void removeUnfinished(const QString& path)
{
    const FileDescriptor file = openOwn(path);
    if (file && lock(file) && isNamed(file, path))
        QFile::remove(path);
}

} // namespace

RecordingJournal::RecordingJournal(const QString& folder)
    : m_path(folder + QLatin1Char('/') + prefix +
             QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() + suffix)
{
}

RecordingJournal::RecordingJournal(QString path, FileDescriptor file, Entry entry)
    : m_path(std::move(path))
    , m_file(std::move(file))
    , m_entry(std::move(entry))
{
}

bool RecordingJournal::write(const Entry& entry)
{
    const QString unfinished = m_path.chopped(suffix.size()) + unfinishedSuffix;
    QFile::remove(unfinished); // left over from a write that failed
    FileDescriptor file(open(native(unfinished).constData(),
                             O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                             S_IRUSR | S_IWUSR));
    if (!file || !lock(file) || !writeAll(file, toJson(entry)) || failsToSync(unfinished) ||
        std::rename(native(unfinished).constData(), native(m_path).constData()) != 0)
    {
        QFile::remove(unfinished);
        return false;
    }
    syncNames(QFileInfo(m_path).path());
    m_file = std::move(file); // locked before it got its name, so there is no gap
    m_entry = entry;
    return true;
}

bool RecordingJournal::discard()
{
    // As many bytes, which get to a disk together.
    constexpr QByteArrayView wanted = "\"discarded\": false", discarded = "\"discarded\": true ";
    static_assert(wanted.size() == discarded.size());
    const qsizetype place = toJson(m_entry).indexOf(wanted);
    if (!m_file || m_entry.discarded || place < 0 ||
        pwrite(m_file.get(), discarded.data(), static_cast<std::size_t>(discarded.size()), place) !=
            discarded.size())
        return false;
    m_entry.discarded = true;
    return !failsToSync(m_path);
}

void RecordingJournal::beginAttempt()
{
    Entry entry = m_entry;
    ++entry.lostAttempts;
    (void)write(entry); // on a full disk it is tried all the same
}

void RecordingJournal::endAttempt()
{
    if (m_isAttemptLost || !m_file || !isNamed(m_file, m_path))
        return;
    Entry entry = m_entry;
    entry.lostAttempts = 0;
    (void)write(entry);
}

void RecordingJournal::putAside()
{
    std::rename(native(m_path).constData(), native(m_path + brokenSuffix).constData());
}

void RecordingJournal::remove()
{
    if (m_file && isNamed(m_file, m_path))
        QFile::remove(m_path);
}

RecordingJournal::Search RecordingJournal::claimAbandoned(const QString& folder)
{
    Search search;
    const QDir names(folder);
    for (const QString& name : names.entryList({prefix + QLatin1Char('*') + unfinishedSuffix}))
        removeUnfinished(names.filePath(name));
    for (const QString& name : names.entryList({prefix + QLatin1Char('*') + suffix})) {
        const QString path = names.filePath(name);
        FileDescriptor file = openOwn(path);
        if (!file)
            continue;
        if (!lock(file)) {
            search.othersAreHeld = true;
            continue;
        }
        if (!isNamed(file, path))
            continue;
        const QJsonObject root =
            QJsonDocument::fromJson(readAll(file).value_or(QByteArray())).object();
        if (isNewer(root))
            continue;
        const auto entry = fromJson(root, names.path());
        std::unique_ptr<RecordingJournal> journal(
            new RecordingJournal(path, std::move(file), entry.value_or(Entry())));
        if (entry)
            search.found.push_back({std::move(journal), *entry});
        else
            journal->putAside();
    }
    return search;
}
