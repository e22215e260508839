#include "Support/OutputFile.h"

#include "Platform/NewFiles.h"

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

} // namespace

OutputFile::OutputFile(std::string path, Options options)
    : m_name(std::move(path))
    , m_options(std::move(options))
{
    if (m_options.nameInFailures.empty())
        m_options.nameInFailures = m_name;
}

OutputFile::~OutputFile()
{
    if (m_hiddenName.empty())
        return;
    changeHiddenName([this] {
        unlinkat(m_folder.get(), m_hiddenName.c_str(), 0);
        m_hiddenName.clear();
    });
}

void OutputFile::changeHiddenName(const std::function<void()>& change)
{
    if (m_options.hiding)
        m_options.hiding(change, m_folder.get(), m_hiddenName);
    else
        change();
}

Failure OutputFile::cannotWrite(int error) const
{
    return {"cannot write " + m_options.nameInFailures + ": " +
            std::generic_category().message(error)};
}

Result<std::unique_ptr<OutputFile>> OutputFile::create(const std::string& path, Kind kind)
{
    return create(path, Options{.kind = kind});
}

Result<std::unique_ptr<OutputFile>> OutputFile::create(const std::string& path, Options options)
{
    std::unique_ptr<OutputFile> file(new OutputFile(path, std::move(options)));
    if (const PossibleFailure failure = file->openFolder(path))
        return *failure;
    // Where that fails something is found out when it is to be replaced.
    if (file->m_options.clearsPlace)
        unlinkat(file->m_folder.get(), file->m_name.c_str(), 0);
    if (file->m_options.kind == Kind::Nameless && file->openNameless())
        return file;
    if (const PossibleFailure failure = file->openHidden())
        return *failure;
    return file;
}

PossibleFailure OutputFile::openFolder(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    const bool hasFolder = slash != std::string::npos;
    m_name = hasFolder ? path.substr(slash + 1) : path;
    m_folder =
        FileDescriptor(Platform::openFolder(hasFolder ? path.substr(0, slash + 1).c_str() : "."));
    return m_folder ? std::nullopt : PossibleFailure(cannotWrite(errno));
}

bool OutputFile::openNameless()
{
    FileDescriptor file(Platform::openNameless(m_folder.get()));
    if (!file)
        return false;
    m_file = std::move(file);
    return fchmod(m_file.get(), ownerOnly) == 0; // whatever the umask
}

PossibleFailure OutputFile::openHidden()
{
    int error = 0;
    changeHiddenName([&] {
        m_hiddenName = firstFreeName([this](const char* name) {
            m_file = FileDescriptor(openat(m_folder.get(), name,
                                           O_CREAT | O_EXCL | O_NOFOLLOW | O_RDWR | O_CLOEXEC,
                                           ownerOnly));
            return static_cast<bool>(m_file);
        });
        error = errno;
    });
    if (m_hiddenName.empty())
        return cannotWrite(error);
    if (fchmod(m_file.get(), ownerOnly) != 0)
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
        m_size = std::max(m_size, position);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return {};
}

std::int64_t OutputFile::read(std::span<std::uint8_t> bytes, std::int64_t position) const
{
    return pread(m_file.get(), bytes.data(), bytes.size(), position);
}

void OutputFile::cutTo(std::int64_t size)
{
    // Where it fails there is more than there should be, as there was before.
    if (ftruncate(m_file.get(), size) == 0)
        m_size = size;
}

PossibleFailure OutputFile::sync()
{
    // EINVAL: the file system has nothing to say about it.
    if (fdatasync(m_file.get()) != 0 && errno != EINVAL)
        return cannotWrite(errno);
    return {};
}

PossibleFailure OutputFile::publish()
{
    if (fsync(m_file.get()) != 0 && errno != EINVAL)
        return cannotWrite(errno);
    if (PossibleFailure failure = publishUnsynced())
        return failure;
    // The name as well. Where that fails the file is there all the same.
    const FileDescriptor folder(openat(m_folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder)
        fsync(folder.get());
    return {};
}

PossibleFailure OutputFile::publishUnsynced()
{
    // Network file systems speak up about a full disk only at close, which is too late once the
    // file has its name; closing a copy makes them speak now.
    const int copy = dup(m_file.get());
    if (copy < 0 || close(copy) != 0)
        return cannotWrite(errno);
    return m_hiddenName.empty() ? nameNameless() : rename();
}

PossibleFailure OutputFile::nameNameless()
{
    const auto linkTo = [&](const char* name) {
        return Platform::nameNameless(m_file.get(), m_folder.get(), name);
    };
    if (linkTo(m_name.c_str()))
        return {};
    if (errno != EEXIST)
        return cannotWrite(errno);
    // A link never replaces anything; only a rename does, and that wants a name.
    int error = 0;
    changeHiddenName([&] {
        m_hiddenName = firstFreeName(linkTo);
        error = errno;
    });
    if (m_hiddenName.empty())
        return cannotWrite(error);
    return rename();
}

PossibleFailure OutputFile::rename()
{
    int error = 0;
    changeHiddenName([&] {
        if (renameat(m_folder.get(), m_hiddenName.c_str(), m_folder.get(), m_name.c_str()) == 0)
            m_hiddenName.clear();
        else
            error = errno;
    });
    return error == 0 ? std::nullopt : PossibleFailure(cannotWrite(error));
}

bool OutputFile::isRemoved() const
{
    struct stat status = {};
    return fstat(m_file.get(), &status) == 0 && status.st_nlink == 0;
}
