#include "NewFile.h"

#include "EndingSignals.h"

#include <algorithm>
#include <cerrno>
#include <random>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t ownerOnly = 0600;
constexpr int hiddenNameTries = 100;

std::string randomHiddenName()
{
    constexpr char letters[] = "abcdefghijklmnopqrstuvwxyz234567";
    std::random_device random;
    std::string name = ".screencapture-";
    for (int i = 0; i < 12; ++i)
        name += letters[random() % 32];
    return name;
}

/// Gives hidden names to `make`, which returns false with errno set, until one is free. Empty when
/// none could be made; errno says why.
template <class Make>
std::string firstFreeName(Make make)
{
    for (int i = 0; i < hiddenNameTries; ++i) {
        std::string name = randomHiddenName();
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

NewFile::NewFile(std::string path, std::string name, FileDescriptor folder)
    : m_path(std::move(path))
    , m_name(std::move(name))
    , m_folder(std::move(folder))
{
}

NewFile::~NewFile()
{
    if (m_hiddenName.empty())
        return;
    const EndingSignals::Block block;
    unlinkat(m_folder.get(), m_hiddenName.c_str(), 0);
    EndingSignals::removeNothing();
}

Failure NewFile::cannotWrite(int error) const
{
    return {"cannot write \"" + m_path + "\": " + std::generic_category().message(error)};
}

Result<std::unique_ptr<NewFile>> NewFile::create(const std::string& path, Kind kind)
{
    const std::size_t slash = path.rfind('/');
    const bool hasFolder = slash != std::string::npos;
    const std::string folderPath = hasFolder ? path.substr(0, slash + 1) : ".";
    std::unique_ptr<NewFile> file(
        new NewFile(path, hasFolder ? path.substr(slash + 1) : path,
                    FileDescriptor(open(folderPath.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC))));
    if (!file->m_folder)
        return file->cannotWrite(errno);
    if (const PossibleFailure failure = file->checkPlace())
        return *failure;
    if (kind == Kind::Nameless && file->openNameless())
        return file;
    if (const PossibleFailure failure = file->openHidden())
        return *failure;
    return file;
}

/// Finds out early, before any work is done, that the file could not be put in its place.
PossibleFailure NewFile::checkPlace() const
{
    if (m_name.empty() || m_name == "." || m_name == "..")
        return cannotWrite(EISDIR);
    struct stat status = {};
    if (fstatat(m_folder.get(), m_name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT)
            return std::nullopt;
        return cannotWrite(errno);
    }
    if (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode))
        return std::nullopt;
    return Failure{"cannot write \"" + m_path + "\": it is not a regular file"};
}

bool NewFile::openNameless()
{
    FileDescriptor file(openat(m_folder.get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, ownerOnly));
    // It gets its name through /proc, which a container may lack.
    if (!file || access(descriptorPath(file).c_str(), F_OK) != 0)
        return false;
    m_file = std::move(file);
    return fchmod(m_file.get(), ownerOnly) == 0; // whatever the umask
}

PossibleFailure NewFile::openHidden()
{
    const EndingSignals::Block block;
    m_hiddenName = firstFreeName([this](const char* name) {
        m_file = FileDescriptor(openat(
            m_folder.get(), name, O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, ownerOnly));
        return static_cast<bool>(m_file);
    });
    if (m_hiddenName.empty())
        return cannotWrite(errno);
    EndingSignals::removeOnArrival(m_folder.get(), m_hiddenName.c_str());
    if (fchmod(m_file.get(), ownerOnly) != 0)
        return cannotWrite(errno);
    return std::nullopt;
}

PossibleFailure NewFile::write(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(m_file.get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return cannotWrite(errno);
        m_size += static_cast<std::uint64_t>(written);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return std::nullopt;
}

void NewFile::cutTo(std::uint64_t size)
{
    // Where it fails there is more than there should be, as there was before.
    const off_t length = static_cast<off_t>(size);
    if (ftruncate(m_file.get(), length) == 0 && lseek(m_file.get(), length, SEEK_SET) == length)
        m_size = size;
}

PossibleFailure NewFile::sync()
{
    // EINVAL: the file system has nothing to say about it.
    if (fdatasync(m_file.get()) != 0 && errno != EINVAL)
        return cannotWrite(errno);
    return std::nullopt;
}

bool NewFile::isRemoved() const
{
    struct stat status = {};
    return fstat(m_file.get(), &status) == 0 && status.st_nlink == 0;
}

PossibleFailure NewFile::publish()
{
    // Network file systems speak up about a full disk only at close, which is too late once the
    // file has its name; closing a copy makes them speak now.
    const int copy = dup(m_file.get());
    if (copy < 0 || close(copy) != 0)
        return cannotWrite(errno);
    return m_hiddenName.empty() ? publishNameless() : publishHidden();
}

PossibleFailure NewFile::publishNameless()
{
    const std::string source = descriptorPath(m_file);
    const auto linkTo = [&](const char* name) {
        return linkat(AT_FDCWD, source.c_str(), m_folder.get(), name, AT_SYMLINK_FOLLOW) == 0;
    };
    if (linkTo(m_name.c_str()))
        return std::nullopt;
    if (errno != EEXIST)
        return cannotWrite(errno);

    // A link never replaces anything; only a rename does, and that wants a name.
    const EndingSignals::Block block;
    m_hiddenName = firstFreeName(linkTo);
    if (m_hiddenName.empty())
        return cannotWrite(errno);
    return publishHidden();
}

PossibleFailure NewFile::publishHidden()
{
    const EndingSignals::Block block;
    if (renameat(m_folder.get(), m_hiddenName.c_str(), m_folder.get(), m_name.c_str()) != 0)
        return cannotWrite(errno);
    m_hiddenName.clear();
    EndingSignals::removeNothing();
    return std::nullopt;
}
