#pragma once

#include "Support/OutputFile.h"

#include <memory>
#include <span>
#include <string>

/// The file that a movie grows in. It has its name from the first piece on, and holds whole pieces
/// only, each of them on the disk itself before the next one comes.
class MovieFile {
public:
    /// Finds out early what can be found out; there is no file under that name yet.
    static Result<MovieFile> create(const std::string& path);

    /// Whether the file has its name: what there is can be played.
    bool isPublished() const { return m_isPublished; }

    /// Adds a piece. When that fails, what of it was written is cut off again.
    PossibleFailure append(std::span<const std::uint8_t> piece);

private:
    MovieFile(std::string path, std::unique_ptr<OutputFile> file);

    std::string m_path; // for messages
    std::unique_ptr<OutputFile> m_file;
    bool m_isPublished = false;
};
