#pragma once

#include "Support/FileDescriptor.h"
#include "Support/Result.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

/// A file that has its name when it is published and not before, readable by its owner alone.
///
/// Until then it has no name at all, so that nothing stays behind however the process ends; only to
/// replace a file it gets a hidden one for the moment before. On file systems that cannot do this
/// it has a hidden one in the same folder, which goes with this object. What stands at its place is
/// never opened, and a link there is replaced itself and not what it points at.
class OutputFile {
public:
    enum class Kind { Nameless, Hidden };

    /// Makes `change`, which gives the file a hidden name or takes it away. Afterwards `name`
    /// within `folder` is what stays behind should the process be ended from outside; nothing when
    /// it is empty.
    using Hiding = std::function<void(const std::function<void()>& change, int folder,
                                      const std::string& name)>;

    struct Options {
        /// Hidden is for file systems without nameless files, which are found out without being
        /// told.
        Kind kind = Kind::Nameless;
        /// Removes what stands in its place at once, unless that is a folder.
        bool clearsPlace = true;
        /// What failures call it; the path when it is empty.
        std::string nameInFailures = {};
        Hiding hiding = {};
    };

    static Result<std::unique_ptr<OutputFile>> create(const std::string& path, Options options);
    static Result<std::unique_ptr<OutputFile>> create(const std::string& path,
                                                      Kind kind = Kind::Nameless);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /// How many bytes it has.
    std::int64_t size() const { return m_size; }

    /// All of `bytes`, or a failure.
    PossibleFailure write(std::span<const std::uint8_t> bytes, std::int64_t position);

    /// The same at its end.
    PossibleFailure append(std::span<const std::uint8_t> bytes) { return write(bytes, m_size); }

    /// How many bytes were read; 0 at the end, -1 with errno.
    std::int64_t read(std::span<std::uint8_t> bytes, std::int64_t position) const;

    /// Cuts off what is beyond that size.
    void cutTo(std::int64_t size);

    /// Returns when what was written is on the disk itself and outlives a power cut.
    PossibleFailure sync();

    /// Brings it to the disk itself and gives it its name. Call it once. A file that is meant to
    /// grow in its place may be written to afterwards.
    PossibleFailure publish();

    /// The same without waiting for the disk.
    PossibleFailure publishUnsynced();

    /// Whether nobody can find it any more: somebody has removed or replaced it.
    bool isRemoved() const;

private:
    OutputFile(std::string path, Options options);

    PossibleFailure openFolder(const std::string& path);
    bool openNameless();
    PossibleFailure openHidden();
    PossibleFailure nameNameless();
    PossibleFailure rename();
    void changeHiddenName(const std::function<void()>& change);
    Failure cannotWrite(int error) const;

    std::string m_name; // within the folder
    Options m_options;
    FileDescriptor m_folder;
    FileDescriptor m_file;
    std::int64_t m_size = 0;
    std::string m_hiddenName; // within the folder; empty while there is none
};
