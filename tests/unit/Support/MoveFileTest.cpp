#include "Support/MoveFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class MoveFile : public testing::Test {
protected:
    QByteArray targetContent() const
    {
        QFile file(m_target);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void write(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    PossibleFailure move(const QString& from)
    {
        return moveFile(from, m_target, [this] { return m_asked++ >= m_patience; });
    }

    QTemporaryDir m_folder;
    QString m_source = m_folder.filePath(QStringLiteral("source"));
    QString m_target = m_folder.filePath(QStringLiteral("target"));
    int m_asked = 0;
    int m_patience = 100;
};

/// A name of the file for which `rename` says that it is on another file system.
struct Abroad {
    explicit Abroad(const QString& path)
        : file(path)
    {
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    }
    QString name() const { return QStringLiteral("/proc/self/fd/%1").arg(file.handle()); }

    QFile file;
};

} // namespace

TEST_F(MoveFile, MovesWithinAFileSystem)
{
    write(m_source, "film");
    write(m_target, "older");
    EXPECT_FALSE(move(m_source));
    EXPECT_EQ(targetContent(), "film");
    EXPECT_FALSE(QFile::exists(m_source));
    EXPECT_EQ(m_asked, 0); // nothing was copied
}

TEST_F(MoveFile, CopiesToAnotherFileSystem)
{
    const QByteArray film(3'000'001, 'f');
    write(m_source, film);
    write(m_target, "older");
    const Abroad abroad(m_source);
    EXPECT_FALSE(move(abroad.name()));
    EXPECT_TRUE(targetContent() == film);
    EXPECT_EQ(QFile::permissions(m_target) & (QFile::ReadGroup | QFile::ReadOther),
              QFile::Permissions());
    EXPECT_GT(m_asked, 0);
}

TEST_F(MoveFile, ACancelledCopyLeavesNothing)
{
    write(m_source, QByteArray(3'000'000, 'f'));
    const Abroad abroad(m_source);
    m_patience = 2;
    EXPECT_TRUE(move(abroad.name()));
    EXPECT_EQ(m_asked, 3);
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden),
              QStringList{QStringLiteral("source")});
}

TEST_F(MoveFile, WithoutASourceTheTargetStays)
{
    write(m_target, "older");
    EXPECT_TRUE(move(m_source));
    EXPECT_EQ(targetContent(), "older");
}
