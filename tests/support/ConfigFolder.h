#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// A configuration folder of one test's own, in place of the process's while it lives.
class ConfigFolder {
public:
    ConfigFolder()
        : m_before(qgetenv("XDG_CONFIG_HOME"))
    {
        qputenv("XDG_CONFIG_HOME", m_folder.path().toLocal8Bit());
    }
    ~ConfigFolder() { qputenv("XDG_CONFIG_HOME", m_before); }
    ConfigFolder(const ConfigFolder&) = delete;
    ConfigFolder& operator=(const ConfigFolder&) = delete;

    /// The path of a file in the folder.
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    /// What a file holds; empty when there is none.
    QByteArray contents(const char* name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Writes a file, and the folder that it is in.
    void write(const char* name, const QByteArray& bytes) const
    {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path(name)).path()));
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

private:
    QTemporaryDir m_folder;
    QByteArray m_before;
};
