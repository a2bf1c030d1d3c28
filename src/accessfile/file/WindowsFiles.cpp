#ifdef _WIN32

#include "accessfile/Error.h"
#include "accessfile/file/FileDevice.h"
#include "accessfile/file/FileErrors.h"

#include <system_error>
#include <thread>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace accessfile {

namespace {

/// Every opening admits every other; the locks alone keep programs apart.
constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::string lastReason()
{
    return std::system_category().message(static_cast<int>(GetLastError()));
}

bool keptClosed(DWORD error)
{
    return error == ERROR_LOCK_VIOLATION || error == ERROR_SHARING_VIOLATION;
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
        if (!ReadFile(m_handle, to.data(), static_cast<DWORD>(to.size()), &done, &where)) {
            if (keptClosed(GetLastError()))
                throwBytesLocked();
            throwInputOutput("ler", lastReason());
        }
        if (done != to.size())
            throwInputOutput("ler", "fim inesperado");
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
    bool tryLock(ByteRange range) override
    {
        OVERLAPPED where = at(range.start);
        if (LockFileEx(m_handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, low(range.length),
                       high(range.length), &where))
            return true;
        if (keptClosed(GetLastError()) || GetLastError() == ERROR_IO_PENDING)
            return false;
        throwInputOutput("reservar", lastReason());
    }
    void unlock(ByteRange range) override
    {
        OVERLAPPED where = at(range.start);
        if (!UnlockFileEx(m_handle, 0, low(range.length), high(range.length), &where))
            throwInputOutput("liberar", lastReason());
    }
    std::optional<ByteRange> lockOfOthers(ByteRange range) override
    {
        // There is no question without taking; the range is given back at once.
        if (!tryLock(range))
            return range;
        unlock(range);
        return std::nullopt;
    }
    FileIdentity identity() override
    {
        BY_HANDLE_FILE_INFORMATION found;
        if (!GetFileInformationByHandle(m_handle, &found))
            throwInputOutput("ler", lastReason());
        return {found.dwVolumeSerialNumber, std::uint64_t{found.nFileIndexHigh} << 32 | found.nFileIndexLow};
    }
    /// The fence that a writer holds tells it here.
    bool openForWriting() override { return false; }

private:
    static DWORD low(std::uint64_t number) { return static_cast<DWORD>(number & 0xFFFFFFFF); }
    static DWORD high(std::uint64_t number) { return static_cast<DWORD>(number >> 32); }
    static OVERLAPPED at(std::uint64_t offset)
    {
        OVERLAPPED where{};
        where.Offset = low(offset);
        where.OffsetHigh = high(offset);
        return where;
    }
    HANDLE m_handle;
};

HANDLE openHandle(const std::filesystem::path& file, DWORD access, DWORD disposition)
{
    return CreateFileW(file.c_str(), access, shareAll, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

/// Takes a handle only of a file: no pipe or device, no link.
std::unique_ptr<FileDevice> fileOf(const std::filesystem::path& file, HANDLE handle)
{
    auto device = std::make_unique<NativeDevice>(handle);
    BY_HANDLE_FILE_INFORMATION found;
    if (GetFileType(handle) != FILE_TYPE_DISK || !GetFileInformationByHandle(handle, &found) ||
        (found.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0)
        throwCannotOpen(file, "não é um arquivo");
    return device;
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
        auto device = openData(file, GENERIC_READ);
        if (!device)
            throwLocked(file);
        return device;
    }
    std::unique_ptr<FileDevice> openToWrite(const std::filesystem::path& file) override
    {
        return openData(file, GENERIC_READ | GENERIC_WRITE);
    }
    /// The rights of a new file come from its folder, as those of the data file did.
    std::unique_ptr<FileDevice> openBeside(const std::filesystem::path& file, FileDevice&) override
    {
        const HANDLE handle = openHandle(file, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
        if (handle == INVALID_HANDLE_VALUE)
            throwInputOutput("gravar", "'" + shownName(file.filename()) + "': " + lastReason());
        return fileOf(file, handle);
    }
    std::unique_ptr<FileDevice> openExisting(const std::filesystem::path& file, FileDevice&) override
    {
        HANDLE handle = openHandle(file, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
        if (handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_ACCESS_DENIED)
            handle = openHandle(file, GENERIC_READ, OPEN_EXISTING);
        if (handle == INVALID_HANDLE_VALUE) {
            if (GetLastError() == ERROR_FILE_NOT_FOUND)
                return nullptr;
            throwInputOutput("ler", "'" + shownName(file.filename()) + "': " + lastReason());
        }
        return fileOf(file, handle);
    }
    std::unique_ptr<FileDevice> createNew(const std::filesystem::path& file) override
    {
        const HANDLE handle = openHandle(file, GENERIC_READ | GENERIC_WRITE, CREATE_NEW);
        if (handle == INVALID_HANDLE_VALUE) {
            if (GetLastError() == ERROR_FILE_EXISTS)
                throwExists(file);
            throwCannotOpen(file, lastReason());
        }
        return std::make_unique<NativeDevice>(handle);
    }
    std::optional<FileIdentity> identityOf(const std::filesystem::path& file) override
    {
        const HANDLE handle =
            CreateFileW(file.c_str(), FILE_READ_ATTRIBUTES, shareAll, nullptr, OPEN_EXISTING, 0, nullptr);
        if (handle == INVALID_HANDLE_VALUE)
            return std::nullopt;
        return NativeDevice(handle).identity();
    }
    bool exists(const std::filesystem::path& file) override
    {
        return GetFileAttributesW(file.c_str()) != INVALID_FILE_ATTRIBUTES;
    }
    /// Names differ in more than case there.
    std::optional<std::filesystem::path> findIgnoringCase(const std::filesystem::path& file) override
    {
        return exists(file) ? std::optional(file) : std::nullopt;
    }
    bool fileWritable(const std::filesystem::path& file) override
    {
        const HANDLE handle = openHandle(file, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
        if (handle == INVALID_HANDLE_VALUE)
            return keptClosed(GetLastError());
        CloseHandle(handle);
        return true;
    }
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
    std::string machineName() override
    {
        std::string name(MAX_COMPUTERNAME_LENGTH + 1, '\0');
        auto length = static_cast<DWORD>(name.size());
        if (!GetComputerNameA(name.data(), &length))
            return {};
        name.resize(length);
        return name;
    }
    std::chrono::milliseconds now() override { return std::chrono::milliseconds(GetTickCount64()); }
    void pause(std::chrono::milliseconds time) override { std::this_thread::sleep_for(time); }

private:
    static std::unique_ptr<FileDevice> openData(const std::filesystem::path& file, DWORD access)
    {
        const HANDLE handle =
            CreateFileW(file.c_str(), access, shareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            if (keptClosed(GetLastError()))
                return nullptr;
            throwCannotOpen(file, GetLastError() == ERROR_FILE_NOT_FOUND ? "arquivo não encontrado" : lastReason());
        }
        return fileOf(file, handle);
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
