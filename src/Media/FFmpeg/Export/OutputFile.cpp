#include "Media/FFmpeg/Export/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <random>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t ownerOnly = 0600;
constexpr int hiddenNameTries = 100;

/// Gives hidden names to `make`, which returns false with errno set, until one is free. Empty when
/// none could be made; errno says why.
template <class Make>
std::string firstFreeName(Make make)
{
    constexpr char letters[] = "abcdefghijklmnopqrstuvwxyz234567";
    std::random_device random;
    for (int i = 0; i < hiddenNameTries; ++i) {
        std::string name = ".tamrik-";
        for (int letter = 0; letter < 12; ++letter)
            name += letters[random() % 32];
        if (make(name.c_str()))
            return name;
        if (errno != EEXIST)
            break;
    }
    return {};
}

std::string descriptorPath(const FileDescriptor& file)
{
    return "/proc/self/fd/" + std::to_string(file.get());
}

} // namespace

OutputFile::OutputFile(std::string path, std::string name, FileDescriptor folder)
    : m_path(std::move(path))
    , m_name(std::move(name))
    , m_folder(std::move(folder))
{
}

OutputFile::~OutputFile()
{
    if (!m_hiddenName.empty())
        unlinkat(m_folder.get(), m_hiddenName.c_str(), 0);
}

Failure OutputFile::cannotWrite(int error) const
{
    return {"cannot write " + m_path + ": " + std::generic_category().message(error)};
}

Result<std::unique_ptr<OutputFile>> OutputFile::create(const std::string& path, Kind kind)
{
    const std::size_t slash = path.rfind('/');
    const bool hasFolder = slash != std::string::npos;
    const std::string folder = hasFolder ? path.substr(0, slash + 1) : ".";
    std::unique_ptr<OutputFile> file(
        new OutputFile(path, hasFolder ? path.substr(slash + 1) : path,
                       FileDescriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))));
    if (!file->m_folder)
        return file->cannotWrite(errno);
    // Where that fails something is found out when it is to be replaced.
    unlinkat(file->m_folder.get(), file->m_name.c_str(), 0);
    if (kind == Kind::Nameless && file->openNameless())
        return file;
    if (const PossibleFailure failure = file->openHidden())
        return *failure;
    return file;
}

bool OutputFile::openNameless()
{
#ifdef O_TMPFILE // where the C library knows it
    FileDescriptor file(openat(m_folder.get(), ".", O_TMPFILE | O_RDWR | O_CLOEXEC, ownerOnly));
    // It gets its name through /proc, which a container may lack.
    if (!file || access(descriptorPath(file).c_str(), F_OK) != 0)
        return false;
    m_file = std::move(file);
    return true;
#else
    return false;
#endif
}

PossibleFailure OutputFile::openHidden()
{
    m_hiddenName = firstFreeName([this](const char* name) {
        m_file = FileDescriptor(openat(
            m_folder.get(), name, O_CREAT | O_EXCL | O_NOFOLLOW | O_RDWR | O_CLOEXEC, ownerOnly));
        return static_cast<bool>(m_file);
    });
    if (m_hiddenName.empty())
        return cannotWrite(errno);
    return {};
}

PossibleFailure OutputFile::write(std::span<const std::uint8_t> bytes, std::int64_t position)
{
    while (!bytes.empty()) {
        const ssize_t written = pwrite(m_file.get(), bytes.data(), bytes.size(), position);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return cannotWrite(errno);
        position += written;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    m_size = std::max(m_size, position);
    return {};
}

std::int64_t OutputFile::read(std::span<std::uint8_t> bytes, std::int64_t position) const
{
    return pread(m_file.get(), bytes.data(), bytes.size(), position);
}

PossibleFailure OutputFile::publish()
{
    // EINVAL: the file system has nothing to say about it.
    if (fsync(m_file.get()) != 0 && errno != EINVAL)
        return cannotWrite(errno);
    // Network file systems speak up about a full disk only at close, which is too late once the
    // file has its name; closing a copy makes them speak now.
    const int copy = dup(m_file.get());
    if (copy < 0 || close(copy) != 0)
        return cannotWrite(errno);
    if (PossibleFailure failure = m_hiddenName.empty() ? nameNameless() : rename())
        return failure;
    // The name as well. Where that fails the file is there all the same.
    fsync(m_folder.get());
    return {};
}

PossibleFailure OutputFile::nameNameless()
{
    const std::string source = descriptorPath(m_file);
    const auto linkTo = [&](const char* name) {
        return linkat(AT_FDCWD, source.c_str(), m_folder.get(), name, AT_SYMLINK_FOLLOW) == 0;
    };
    if (linkTo(m_name.c_str()))
        return {};
    if (errno != EEXIST)
        return cannotWrite(errno);
    // Somebody was quicker. A link never replaces anything; only a rename does, and wants a name.
    m_hiddenName = firstFreeName(linkTo);
    if (m_hiddenName.empty())
        return cannotWrite(errno);
    return rename();
}

PossibleFailure OutputFile::rename()
{
    if (renameat(m_folder.get(), m_hiddenName.c_str(), m_folder.get(), m_name.c_str()) != 0)
        return cannotWrite(errno);
    m_hiddenName.clear();
    return {};
}
