#pragma once

#include "Support/FileDescriptor.h"
#include "Support/Result.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

/// A file that appears under its name when it is published and not before, readable by its owner
/// only.
///
/// Until it is published it has no name (O_TMPFILE), so that nothing stays behind however the
/// process ends; only to replace a file it gets a hidden one for the moment before. On file systems
/// that cannot do this it has a hidden name in the same folder, which the destructor and the
/// signals SIGHUP, SIGINT and SIGTERM remove. It never opens what stands at its place, nor follows
/// a link there.
///
/// One at a time in a process: the signals' handlers know of one.
class NewFile {
public:
    enum class Kind { Nameless, Hidden };

    /// Fails, among other reasons, when something other than a regular file or a symbolic link
    /// stands at `path`. Hidden is for file systems without nameless files, which are found out
    /// without being told.
    static Result<std::unique_ptr<NewFile>> create(const std::string& path,
                                                   Kind kind = Kind::Nameless);

    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    PossibleFailure write(std::span<const std::uint8_t> bytes);

    /// Puts the file in its place; what stood there is replaced, a symbolic link itself and not
    /// what it points at. Call it once. A file that is meant to grow in its place may be written to
    /// afterwards.
    PossibleFailure publish();

    /// How much was written, in bytes.
    std::uint64_t size() const { return m_size; }

    /// Cuts off what is beyond that size.
    void cutTo(std::uint64_t size);

    /// Returns when what was written is on the disk and outlives a power cut.
    PossibleFailure sync();

    /// Whether nobody can find it any more: somebody has removed or replaced it.
    bool isRemoved() const;

private:
    NewFile(std::string path, std::string name, FileDescriptor folder);

    PossibleFailure checkPlace() const;
    bool openNameless();
    PossibleFailure openHidden();
    PossibleFailure publishNameless();
    PossibleFailure publishHidden();
    Failure cannotWrite(int error) const;

    std::string m_path; // as given, for messages
    std::string m_name; // within the folder
    FileDescriptor m_folder;
    FileDescriptor m_file;
    std::uint64_t m_size = 0; // bytes written
    std::string m_hiddenName; // within the folder; empty while there is none
};
