#include "Movie/MovieFile.h"

#include "NewFile.h"

MovieFile::MovieFile(std::string path, std::unique_ptr<OutputFile> file)
    : m_path(std::move(path))
    , m_file(std::move(file))
{
}

Result<MovieFile> MovieFile::create(const std::string& path)
{
    Result<std::unique_ptr<OutputFile>> file = newFile(path);
    if (!file)
        return file.failure();
    return MovieFile(path, std::move(*file));
}

PossibleFailure MovieFile::append(std::span<const std::uint8_t> piece)
{
    const std::int64_t before = m_file->size();
    if (PossibleFailure failure = m_file->append(piece)) {
        m_file->cutTo(before);
        return failure;
    }
    if (!m_isPublished) {
        PossibleFailure failure = m_file->publish();
        m_isPublished = !failure;
        return failure;
    }
    if (PossibleFailure failure = m_file->sync())
        return failure;
    if (m_file->isRemoved())
        return Failure{"the file \"" + m_path + "\" was removed"};
    return std::nullopt;
}
