#ifndef _WIN32

#include "accessfile/Error.h"
#include "accessfile/file/FileDevice.h"
#include "accessfile/file/FileErrors.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

namespace accessfile {

namespace {

constexpr mode_t readAndWrite = 0666;

std::string lastReason()
{
    return std::generic_category().message(errno);
}

/// A lock of another opener, where locks bind readers and writers too (network shares).
bool keptClosed(int error)
{
    return error == EACCES || error == EAGAIN;
}

std::filesystem::path folderOf(const std::filesystem::path& file)
{
    return file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
}

class NativeDevice : public FileDevice
{
public:
    explicit NativeDevice(int descriptor)
        : m_descriptor(descriptor)
    {}
    ~NativeDevice() override { ::close(m_descriptor); }
    NativeDevice(const NativeDevice&) = delete;
    NativeDevice& operator=(const NativeDevice&) = delete;

    std::uint64_t size() override { return static_cast<std::uint64_t>(status().st_size); }
    void read(std::uint64_t offset, std::span<std::uint8_t> to) override
    {
        while (!to.empty()) {
            const ssize_t got = ::pread(m_descriptor, to.data(), to.size(), static_cast<off_t>(offset));
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0 && keptClosed(errno))
                throwBytesLocked();
            if (got < 0)
                throwInputOutput("ler", lastReason());
            if (got == 0)
                throwInputOutput("ler", "fim inesperado");
            to = to.subspan(static_cast<std::size_t>(got));
            offset += static_cast<std::uint64_t>(got);
        }
    }
    void write(std::uint64_t offset, std::span<const std::uint8_t> from) override
    {
        while (!from.empty()) {
            const ssize_t put = ::pwrite(m_descriptor, from.data(), from.size(), static_cast<off_t>(offset));
            if (put < 0 && errno == EINTR)
                continue;
            if (put <= 0)
                throwInputOutput("gravar", lastReason());
            from = from.subspan(static_cast<std::size_t>(put));
            offset += static_cast<std::uint64_t>(put);
        }
    }
    void truncate(std::uint64_t size) override
    {
        if (::ftruncate(m_descriptor, static_cast<off_t>(size)) != 0)
            throwInputOutput("gravar", lastReason());
    }
    void sync() override
    {
#ifdef __APPLE__
        const int result = ::fcntl(m_descriptor, F_FULLFSYNC);
#else
        const int result = ::fdatasync(m_descriptor);
#endif
        if (result != 0)
            throwInputOutput("gravar", lastReason());
    }

    // Locks of the open file. The classic ones belong to the process: they would let a second opening in, and vanish
    // with the first descriptor that closes.
    bool tryLock(ByteRange range) override
    {
        struct flock lock = of(range, F_WRLCK);
        if (::fcntl(m_descriptor, F_OFD_SETLK, &lock) == 0)
            return true;
        if (keptClosed(errno))
            return false;
        throwInputOutput("reservar", lastReason());
    }
    void unlock(ByteRange range) override
    {
        struct flock lock = of(range, F_UNLCK);
        if (::fcntl(m_descriptor, F_OFD_SETLK, &lock) != 0)
            throwInputOutput("liberar", lastReason());
    }
    std::optional<ByteRange> lockOfOthers(ByteRange range) override
    {
        struct flock lock = of(range, F_WRLCK);
        if (::fcntl(m_descriptor, F_OFD_GETLK, &lock) != 0)
            throwInputOutput("consultar", lastReason());
        if (lock.l_type == F_UNLCK)
            return std::nullopt;
        return ByteRange{static_cast<std::uint64_t>(lock.l_start), static_cast<std::uint64_t>(lock.l_len)};
    }

    FileIdentity identity() override
    {
        const struct stat found = status();
        return {found.st_dev, found.st_ino};
    }
    bool openForWriting() override
    {
        // A lease for reading is granted only where nobody has the file open for writing. Whoever opens it in the
        // moment that it is held lets the system send a signal: one that does nothing, instead of SIGIO, which kills.
#ifdef F_SETLEASE
        if (::fcntl(m_descriptor, F_SETSIG, SIGURG) != 0)
            return false;
        if (::fcntl(m_descriptor, F_SETLEASE, F_RDLCK) != 0)
            return errno == EAGAIN;
        ::fcntl(m_descriptor, F_SETLEASE, F_UNLCK);
#endif
        return false;
    }

    [[nodiscard]] struct stat status() const
    {
        struct stat found = {};
        if (::fstat(m_descriptor, &found) != 0)
            throwInputOutput("ler", lastReason());
        return found;
    }
    [[nodiscard]] int descriptor() const
    {
        return m_descriptor;
    }

private:
    static struct flock of(ByteRange range, int type)
    {
        struct flock lock = {};
        lock.l_type = static_cast<short>(type);
        lock.l_whence = SEEK_SET;
        lock.l_start = static_cast<off_t>(range.start);
        lock.l_len = static_cast<off_t>(range.length);
        return lock;
    }
    int m_descriptor;
};

void syncFolder(const std::filesystem::path& file)
{
    const int descriptor = ::open(folderOf(file).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

/// Gives a new file the owner, group and rights of the data file. Rights that would reach another owner or group than
/// the data file's are left out.
void giveRights(int descriptor, const struct stat& like)
{
    mode_t mode = like.st_mode & readAndWrite;
    struct stat own = {};
    const bool owned = ::fchown(descriptor, like.st_uid, like.st_gid) == 0 ||
                       ::fchown(descriptor, static_cast<uid_t>(-1), like.st_gid) == 0;
    if (!owned || ::fstat(descriptor, &own) != 0 || own.st_gid != like.st_gid)
        mode &= ~static_cast<mode_t>(S_IRWXG);
    ::fchmod(descriptor, mode);
}

/// Refuses what cannot be a file of the engine's beside that data file: a pipe, device or folder, a second name of some
/// other file, and a file of somebody who has no right to the data file and could feed us anything.
void checkBeside(const std::filesystem::path& file, const struct stat& found, const struct stat& like)
{
    const bool groupWrites = (like.st_mode & S_IWGRP) != 0 && found.st_gid == like.st_gid;
    const bool othersWrite = (like.st_mode & S_IWOTH) != 0;
    const bool trusted = found.st_uid == like.st_uid || found.st_uid == ::geteuid() || found.st_uid == 0;
    if (!S_ISREG(found.st_mode) || found.st_nlink > 1)
        throwCannotOpen(file, "não é um arquivo comum; apague-o ou mude-o de lugar");
    if (!trusted && !groupWrites && !othersWrite)
        throwCannotOpen(file, "é de outro usuário, que não tem direito ao arquivo de dados; apague-o");
}

class NativeFileSystem : public FileSystem
{
public:
    std::filesystem::path resolved(const std::filesystem::path& file) override
    {
        std::error_code failure;
        const std::filesystem::path real = std::filesystem::canonical(file, failure);
        return failure ? file : real;
    }
    std::unique_ptr<FileDevice> openToRead(const std::filesystem::path& file) override
    {
        auto device = openData(file, O_RDONLY);
        if (!device)
            throwLocked(file);
        return device;
    }
    std::unique_ptr<FileDevice> openToWrite(const std::filesystem::path& file) override
    {
        return openData(file, O_RDWR);
    }
    std::unique_ptr<FileDevice> openBeside(const std::filesystem::path& file, FileDevice& like) override
    {
        const struct stat model = static_cast<NativeDevice&>(like).status();
        constexpr int attempts = 3; // Another program may make or remove it between the two looks.
        for (int attempt = 0; attempt < attempts; ++attempt) {
            if (auto device = open(file, O_RDWR, model))
                return device;
            // Nobody else gets in before it has its rights.
            const int made =
                ::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
            if (made >= 0) {
                auto device = std::make_unique<NativeDevice>(made);
                giveRights(made, model);
                syncFolder(file);
                return device;
            }
            if (errno != EEXIST)
                throwInputOutput("gravar", "'" + shownName(file.filename()) + "': " + lastReason());
        }
        throwCannotOpen(file, "outro programa o apaga");
    }
    std::unique_ptr<FileDevice> openExisting(const std::filesystem::path& file, FileDevice& like) override
    {
        const struct stat model = static_cast<NativeDevice&>(like).status();
        try {
            return open(file, O_RDWR, model);
        } catch (const Error& error) {
            if (error.kind() != ErrorKind::ReadOnly)
                throw;
            return open(file, O_RDONLY, model);
        }
    }
    std::unique_ptr<FileDevice> createNew(const std::filesystem::path& file) override
    {
        const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, readAndWrite);
        if (descriptor < 0 && errno == EEXIST)
            throwExists(file);
        if (descriptor < 0)
            throwCannotOpen(file, lastReason());
        return std::make_unique<NativeDevice>(descriptor);
    }
    std::optional<FileIdentity> identityOf(const std::filesystem::path& file) override
    {
        struct stat found = {};
        if (::stat(file.c_str(), &found) != 0)
            return std::nullopt;
        return FileIdentity{found.st_dev, found.st_ino};
    }
    bool exists(const std::filesystem::path& file) override
    {
        struct stat found = {};
        return ::lstat(file.c_str(), &found) == 0;
    }
    std::optional<std::filesystem::path> findIgnoringCase(const std::filesystem::path& file) override
    {
        const std::string wanted = file.filename().string();
        std::error_code failure;
        for (auto entry = std::filesystem::directory_iterator(folderOf(file), failure);
             !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
            if (::strcasecmp(entry->path().filename().c_str(), wanted.c_str()) == 0)
                return file.parent_path() / entry->path().filename();
        }
        return std::nullopt;
    }
    bool fileWritable(const std::filesystem::path& file) override
    {
        return ::faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) == 0;
    }
    bool folderWritable(const std::filesystem::path& file) override
    {
        return ::faccessat(AT_FDCWD, folderOf(file).c_str(), W_OK | X_OK, AT_EACCESS) == 0;
    }
    void remove(const std::filesystem::path& file) override
    {
        if (::unlink(file.c_str()) != 0) {
            if (errno == ENOENT)
                return;
            throwInputOutput("gravar", lastReason());
        }
        syncFolder(file);
    }
    void publish(const std::filesystem::path& from, const std::filesystem::path& to) override
    {
        // A hard link never replaces; file systems without links get a plain rename.
        if (::link(from.c_str(), to.c_str()) == 0) {
            ::unlink(from.c_str());
        } else {
            if (errno == EEXIST || exists(to))
                throwExists(to);
            if (::rename(from.c_str(), to.c_str()) != 0)
                throwInputOutput("gravar", lastReason());
        }
        syncFolder(to);
    }
    std::string machineName() override
    {
        std::string name(256, '\0');
        if (::gethostname(name.data(), name.size() - 1) != 0)
            return {};
        return name.substr(0, name.find_first_of(std::string(".\0", 2)));
    }
    std::chrono::milliseconds now() override
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now().time_since_epoch());
    }
    void pause(std::chrono::milliseconds time) override { std::this_thread::sleep_for(time); }

private:
    /// nullptr where an opener keeps everybody out. O_NONBLOCK: neither a pipe nor a lease makes us wait.
    static std::unique_ptr<FileDevice> openData(const std::filesystem::path& file, int mode)
    {
        // Looked at first: opening a device may do something to it.
        struct stat found = {};
        if (::stat(file.c_str(), &found) == 0 && !S_ISREG(found.st_mode))
            throwCannotOpen(file, "não é um arquivo");
        const int descriptor = ::open(file.c_str(), mode | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        if (descriptor < 0 && (errno == EWOULDBLOCK || errno == EBUSY || errno == ETXTBSY))
            return nullptr;
        if (descriptor < 0)
            throwCannotOpen(file, errno == ENOENT ? "arquivo não encontrado" : lastReason());
        auto device = std::make_unique<NativeDevice>(descriptor);
        if (!S_ISREG(device->status().st_mode))
            throwCannotOpen(file, "não é um arquivo");
        return device;
    }
    /// nullptr when there is none. ReadOnly when it may only be read.
    static std::unique_ptr<NativeDevice> open(const std::filesystem::path& file, int mode, const struct stat& like)
    {
        struct stat found = {};
        if (::lstat(file.c_str(), &found) == 0)
            checkBeside(file, found, like); // Looked at first: opening a device may do something to it.
        const int descriptor = ::open(file.c_str(), mode | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        if (descriptor < 0) {
            if (errno == ENOENT)
                return nullptr;
            if (errno == EACCES || errno == EPERM || errno == EROFS)
                throw Error(ErrorKind::ReadOnly,
                            "Não há permissão para gravar em '" + shownName(file.filename()) + "'.");
            throwInputOutput("ler", "'" + shownName(file.filename()) + "': " + lastReason());
        }
        auto device = std::make_unique<NativeDevice>(descriptor);
        checkBeside(file, device->status(), like);
        return device;
    }
};

} // namespace

FileSystem& nativeFileSystem()
{
    static NativeFileSystem instance;
    return instance;
}

} // namespace accessfile

#endif
