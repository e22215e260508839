#pragma once

#include "Support/RegularFile.h"

#include <QByteArrayView>
#include <QFile>
#include <QString>

#include <memory>

/// A regular file's bytes, of which only those are read that are looked at. Not for files that
/// somebody may cut off meanwhile: looking at what is gone ends the program.
class MappedFile {
public:
    /// Fails when there are more than `most` bytes, or none.
    static Result<MappedFile> open(const QString& path, qint64 most);

    QByteArrayView content() const { return m_content; }

private:
    MappedFile(RegularFile file, std::unique_ptr<QFile> device, QByteArrayView content);

    RegularFile m_file;              // closes the descriptor
    std::unique_ptr<QFile> m_device; // ends the mapping
    QByteArrayView m_content;
};
