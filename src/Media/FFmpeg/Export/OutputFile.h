#pragma once

#include "Support/FileDescriptor.h"
#include "Support/Result.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

/// A file that has its name when it is complete and not before, readable by its owner alone.
///
/// Until then it has no name at all, so that nothing stays behind however the process ends. On file
/// systems that cannot do this it has a hidden one in the same folder, which goes with this object.
class OutputFile {
public:
    enum class Kind { Nameless, Hidden };

    /// Removes what stands at `path`, unless it is a folder. Hidden is for file systems without
    /// nameless files, which are found out without being told.
    static Result<std::unique_ptr<OutputFile>> create(const std::string& path,
                                                      Kind kind = Kind::Nameless);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /// How many bytes it has.
    std::int64_t size() const { return m_size; }

    /// All of `bytes`, or a failure.
    PossibleFailure write(std::span<const std::uint8_t> bytes, std::int64_t position);

    /// How many bytes were read; 0 at the end, -1 with errno.
    std::int64_t read(std::span<std::uint8_t> bytes, std::int64_t position) const;

    /// Brings it to the disk itself and gives it its name. Call it once, at the end.
    PossibleFailure publish();

private:
    OutputFile(std::string path, std::string name, FileDescriptor folder);

    bool openNameless();
    PossibleFailure openHidden();
    PossibleFailure nameNameless();
    PossibleFailure rename();
    Failure cannotWrite(int error) const;

    std::string m_path; // as given, for messages
    std::string m_name; // within the folder
    FileDescriptor m_folder;
    FileDescriptor m_file;
    std::int64_t m_size = 0;
    std::string m_hiddenName; // within the folder; empty while there is none
};
