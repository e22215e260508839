#pragma once

#include <QString>

#include <cstdint>

/// Makes those who write the same file do so in the order in which they were asked to, so that what
/// was wanted last is what stays.
class FileTurn {
public:
    /// The turn behind all that there are for `file` now. Any thread.
    explicit FileTurn(const QString& file);
    FileTurn(const FileTurn&) = delete;
    FileTurn& operator=(const FileTurn&) = delete;
    /// Lets the next one begin.
    ~FileTurn();

    /// Waits until those before have ended. Any thread.
    void await() const;

private:
    QString m_file;
    std::uint64_t m_number;
};
