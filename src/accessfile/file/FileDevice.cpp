#include "accessfile/file/FileDevice.h"

#include "accessfile/Error.h"

#include <cerrno>
#include <string>
#include <system_error>

#ifdef _WIN32
#define NOMINMAX
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace accessfile {

namespace {

std::string nameOf(const std::filesystem::path& file)
{
    const std::u8string text = file.u8string();
    return {text.begin(), text.end()};
}

[[noreturn]] void throwInputOutput(const char* doing, const std::string& reason)
{
    throw Error(ErrorKind::IoError, std::string("Falha ao ") + doing + " o arquivo de dados: " + reason + ".");
}

[[noreturn]] void throwLocked(const std::filesystem::path& file)
{
    throw Error(ErrorKind::Locked,
                "O arquivo '" + nameOf(file) + "' está em uso por outro programa. Feche-o e tente novamente.");
}

[[noreturn]] void throwCannotOpen(const std::filesystem::path& file, const std::string& reason)
{
    throw Error(ErrorKind::CannotOpen, "Não é possível abrir o arquivo '" + nameOf(file) + "': " + reason + ".");
}

[[noreturn]] void throwExists(const std::filesystem::path& file)
{
    throw Error(ErrorKind::Duplicate, "O arquivo '" + nameOf(file) + "' já existe.");
}

#ifdef _WIN32

std::string lastReason()
{
    return std::system_category().message(static_cast<int>(GetLastError()));
}

class NativeDevice : public FileDevice
{
public:
    explicit NativeDevice(HANDLE handle)
        : m_handle(handle)
    {}
    ~NativeDevice() override { CloseHandle(m_handle); }
    NativeDevice(const NativeDevice&) = delete;
    NativeDevice& operator=(const NativeDevice&) = delete;

    std::uint64_t size() override
    {
        LARGE_INTEGER length;
        if (!GetFileSizeEx(m_handle, &length))
            throwInputOutput("ler", lastReason());
        return static_cast<std::uint64_t>(length.QuadPart);
    }
    void read(std::uint64_t offset, std::span<std::uint8_t> to) override
    {
        OVERLAPPED where = at(offset);
        DWORD done = 0;
        if (!ReadFile(m_handle, to.data(), static_cast<DWORD>(to.size()), &done, &where) || done != to.size())
            throwInputOutput("ler", lastReason());
    }
    void write(std::uint64_t offset, std::span<const std::uint8_t> from) override
    {
        OVERLAPPED where = at(offset);
        DWORD done = 0;
        if (!WriteFile(m_handle, from.data(), static_cast<DWORD>(from.size()), &done, &where) || done != from.size())
            throwInputOutput("gravar", lastReason());
    }
    void truncate(std::uint64_t size) override
    {
        FILE_END_OF_FILE_INFO end;
        end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
        if (!SetFileInformationByHandle(m_handle, FileEndOfFileInfo, &end, sizeof end))
            throwInputOutput("gravar", lastReason());
    }
    void sync() override
    {
        if (!FlushFileBuffers(m_handle))
            throwInputOutput("gravar", lastReason());
    }

private:
    static OVERLAPPED at(std::uint64_t offset)
    {
        OVERLAPPED where{};
        where.Offset = static_cast<DWORD>(offset & 0xFFFFFFFF);
        where.OffsetHigh = static_cast<DWORD>(offset >> 32);
        return where;
    }
    HANDLE m_handle;
};

class NativeFileSystem : public FileSystem
{
public:
    // Windows refuses a second opener by the sharing mode alone; a reader shares with readers.
    OpenedFile openLocked(const std::filesystem::path& file, bool readOnly) override
    {
        HANDLE handle = INVALID_HANDLE_VALUE;
        if (!readOnly) {
            handle = CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                 FILE_ATTRIBUTE_NORMAL, nullptr);
            readOnly = handle == INVALID_HANDLE_VALUE &&
                       (GetLastError() == ERROR_ACCESS_DENIED || GetLastError() == ERROR_WRITE_PROTECT);
        }
        if (readOnly)
            handle = CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                 FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            if (GetLastError() == ERROR_SHARING_VIOLATION || GetLastError() == ERROR_LOCK_VIOLATION)
                throwLocked(file);
            throwCannotOpen(file, lastReason());
        }
        return {std::make_unique<NativeDevice>(handle), readOnly};
    }
    std::unique_ptr<FileDevice> createNew(const std::filesystem::path& file) override
    {
        const HANDLE handle = CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                          FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            if (GetLastError() == ERROR_FILE_EXISTS)
                throwExists(file);
            throwCannotOpen(file, lastReason());
        }
        return std::make_unique<NativeDevice>(handle);
    }
    std::unique_ptr<FileDevice> openJournal(const std::filesystem::path& file) override
    {
        const HANDLE handle = CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                          OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE)
            throwInputOutput("gravar", lastReason());
        return std::make_unique<NativeDevice>(handle);
    }
    std::unique_ptr<FileDevice> openExisting(const std::filesystem::path& file) override
    {
        const HANDLE handle = CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            if (GetLastError() == ERROR_FILE_NOT_FOUND)
                return nullptr;
            throwInputOutput("ler", lastReason());
        }
        return std::make_unique<NativeDevice>(handle);
    }
    bool exists(const std::filesystem::path& file) override { return std::filesystem::exists(file); }
    bool folderWritable(const std::filesystem::path&) override { return true; }
    void remove(const std::filesystem::path& file) override { std::filesystem::remove(file); }
    void publish(const std::filesystem::path& from, const std::filesystem::path& to) override
    {
        if (!MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH)) {
            if (GetLastError() == ERROR_ALREADY_EXISTS || GetLastError() == ERROR_FILE_EXISTS)
                throwExists(to);
            throwInputOutput("gravar", lastReason());
        }
    }
};

#else

std::string lastReason()
{
    return std::generic_category().message(errno);
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

    std::uint64_t size() override
    {
        struct stat status = {};
        if (::fstat(m_descriptor, &status) != 0)
            throwInputOutput("ler", lastReason());
        return static_cast<std::uint64_t>(status.st_size);
    }
    void read(std::uint64_t offset, std::span<std::uint8_t> to) override
    {
        while (!to.empty()) {
            const ssize_t got = ::pread(m_descriptor, to.data(), to.size(), static_cast<off_t>(offset));
            if (got < 0 && errno == EINTR)
                continue;
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

private:
    int m_descriptor;
};

/// Locks of the open file, not of the process, so that a second opening in this process is refused as well.
bool lockDescriptor(int descriptor, bool shared)
{
#ifdef F_OFD_SETLK
    struct flock range = {};
    range.l_type = static_cast<short>(shared ? F_RDLCK : F_WRLCK);
    range.l_whence = SEEK_SET;
    if (::fcntl(descriptor, F_OFD_SETLK, &range) == 0)
        return true;
    if (errno == EACCES || errno == EAGAIN)
        return false;
#endif
    return ::flock(descriptor, (shared ? LOCK_SH : LOCK_EX) | LOCK_NB) == 0;
}

void syncFolder(const std::filesystem::path& file)
{
    const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

class NativeFileSystem : public FileSystem
{
public:
    OpenedFile openLocked(const std::filesystem::path& file, bool readOnly) override
    {
        int descriptor = -1;
        if (!readOnly) {
            descriptor = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
            readOnly = descriptor < 0 && (errno == EACCES || errno == EROFS || errno == EPERM);
        }
        if (readOnly)
            descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0)
            throwCannotOpen(file, errno == ENOENT ? "arquivo não encontrado" : lastReason());
        auto device = std::make_unique<NativeDevice>(descriptor);
        struct stat status = {};
        if (::fstat(descriptor, &status) == 0 && !S_ISREG(status.st_mode))
            throwCannotOpen(file, "não é um arquivo");
        if (!lockDescriptor(descriptor, readOnly))
            throwLocked(file);
        return {std::move(device), readOnly};
    }
    std::unique_ptr<FileDevice> createNew(const std::filesystem::path& file) override
    {
        const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0 && errno == EEXIST)
            throwExists(file);
        if (descriptor < 0)
            throwCannotOpen(file, lastReason());
        return std::make_unique<NativeDevice>(descriptor);
    }
    std::unique_ptr<FileDevice> openJournal(const std::filesystem::path& file) override
    {
        const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (descriptor < 0)
            throwInputOutput("gravar", lastReason());
        auto device = std::make_unique<NativeDevice>(descriptor);
        syncFolder(file);
        return device;
    }
    std::unique_ptr<FileDevice> openExisting(const std::filesystem::path& file) override
    {
        const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0 && errno == ENOENT)
            return nullptr;
        if (descriptor < 0)
            throwInputOutput("ler", lastReason());
        return std::make_unique<NativeDevice>(descriptor);
    }
    bool exists(const std::filesystem::path& file) override
    {
        std::error_code ignored;
        return std::filesystem::exists(file, ignored);
    }
    bool folderWritable(const std::filesystem::path& file) override
    {
        const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
        return ::access(folder.c_str(), W_OK | X_OK) == 0;
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
};

#endif

} // namespace

FileSystem& nativeFileSystem()
{
    static NativeFileSystem instance;
    return instance;
}

} // namespace accessfile
