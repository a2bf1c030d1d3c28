#include "platform/os/LockedFile.h"

#include <array>
#include <atomic>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr mode_t OwnerOnly = S_IRUSR | S_IWUSR;

/// The lock goes with the process; the file of that name must still be the one that was opened.
bool isHeld(int file, const std::filesystem::path& path)
{
    struct stat opened
    {};
    struct stat named
    {};
    return flock(file, LOCK_EX | LOCK_NB) == 0 && fstat(file, &opened) == 0 && stat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace

struct LockedFile::Handle
{
    std::filesystem::path path;
    int file;
    std::atomic<bool> isNameKept = false; ///< The folder's entry lies on the disk.

    ~Handle() { close(file); }

    static std::unique_ptr<Handle> open(const std::filesystem::path& path, int flags)
    {
        const int file = ::open(path.c_str(), flags | O_RDWR | O_APPEND | O_CLOEXEC | O_NOFOLLOW, OwnerOnly);
        if (file < 0)
            return nullptr;
        auto handle = std::make_unique<Handle>(path, file);
        return isHeld(file, path) ? std::move(handle) : nullptr;
    }

    Handle(std::filesystem::path named, int opened)
        : path(std::move(named))
        , file(opened)
    {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
};

LockedFile::LockedFile(std::unique_ptr<Handle> handle)
    : m_handle(std::move(handle))
{}

LockedFile::~LockedFile() = default;

std::shared_ptr<LockedFile> LockedFile::create(const std::filesystem::path& path)
{
    auto handle = Handle::open(path, O_CREAT | O_EXCL);
    return handle ? std::shared_ptr<LockedFile>(new LockedFile(std::move(handle))) : nullptr;
}

std::shared_ptr<LockedFile> LockedFile::open(const std::filesystem::path& path)
{
    auto handle = Handle::open(path, 0);
    return handle ? std::shared_ptr<LockedFile>(new LockedFile(std::move(handle))) : nullptr;
}

std::optional<std::string> LockedFile::contents()
{
    if (lseek(m_handle->file, 0, SEEK_SET) != 0)
        return std::nullopt;
    std::string all;
    std::array<char, 16 * 1024> piece{};
    for (;;) {
        const ssize_t count = read(m_handle->file, piece.data(), piece.size());
        if (count == 0)
            return all;
        if (count > 0)
            all.append(piece.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return std::nullopt;
    }
}

bool LockedFile::append(std::string_view bytes)
{
    struct stat before
    {};
    if (fstat(m_handle->file, &before) != 0)
        return false;
    while (!bytes.empty()) {
        const ssize_t count = write(m_handle->file, bytes.data(), bytes.size());
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            cut(static_cast<std::uint64_t>(before.st_size));
            return false;
        }
    }
    return true;
}

bool LockedFile::cut(std::uint64_t size)
{
    return ftruncate(m_handle->file, static_cast<off_t>(size)) == 0;
}

bool LockedFile::sync()
{
    if (!m_handle->isNameKept) {
        const int folder = ::open(m_handle->path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        m_handle->isNameKept = folder >= 0 && fsync(folder) == 0;
        if (folder >= 0)
            close(folder);
    }
    return fsync(m_handle->file) == 0 && m_handle->isNameKept;
}

bool LockedFile::remove()
{
    std::error_code failure;
    return std::filesystem::remove(m_handle->path, failure);
}

} // namespace platform
