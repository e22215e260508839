#include "Support/RemoveFile.h"

#include "Support/Background.h"

#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

struct Freeing {
    std::atomic<ino_t> file = 0;
    std::atomic<QThread*> thread = nullptr;
};

Freeing& freeing()
{
    static Freeing it;
    return it;
}

} // namespace

// In place of the C library's.
extern "C" int close(int file)
{
    struct stat status = {};
    if (freeing().file != 0 && fstat(file, &status) == 0 && status.st_ino == freeing().file &&
        status.st_nlink == 0)
        freeing().thread = QThread::currentThread();
    return static_cast<int>(syscall(SYS_close, file));
}

TEST(RemoveFile, TakesTheNameAtOnceAndTheSpaceElsewhere)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("film"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    struct stat status = {};
    ASSERT_EQ(fstat(file.handle(), &status), 0);
    file.close();
    freeing().file = status.st_ino;
    removeFile(path);
    EXPECT_FALSE(QFile::exists(path));
    Background::threads().waitForDone();
    freeing().file = 0;
    EXPECT_NE(freeing().thread, nullptr);
    EXPECT_NE(freeing().thread, QThread::currentThread());
}

TEST(RemoveFile, RemovesALinkAndNotWhatItNames)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("film"));
    const QString link = folder.filePath(QStringLiteral("link"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(QFile::link(path, link));
    removeFile(link);
    EXPECT_TRUE(QFile::exists(path));
    EXPECT_FALSE(QFile::symLinkTarget(link).size() > 0);
    removeFile(folder.filePath(QStringLiteral("nothing")));
}
