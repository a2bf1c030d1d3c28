#include "platform/os/LockedFile.h"

#include <array>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <sddl.h>

namespace platform {

struct LockedFile::Handle
{
    HANDLE file;

    explicit Handle(HANDLE opened)
        : file(opened)
    {}
    ~Handle() { CloseHandle(file); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    /// Sharing with nobody is the lock.
    static std::unique_ptr<Handle> open(const std::filesystem::path& path, DWORD disposition)
    {
        SECURITY_ATTRIBUTES ownerOnly{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
        ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;;FA;;;OW)", SDDL_REVISION_1,
                                                             &ownerOnly.lpSecurityDescriptor, nullptr);
        const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, &ownerOnly, disposition,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
        LocalFree(ownerOnly.lpSecurityDescriptor);
        return file == INVALID_HANDLE_VALUE ? nullptr : std::make_unique<Handle>(file);
    }
};

LockedFile::LockedFile(std::unique_ptr<Handle> handle)
    : m_handle(std::move(handle))
{}

LockedFile::~LockedFile() = default;

std::shared_ptr<LockedFile> LockedFile::create(const std::filesystem::path& path)
{
    auto handle = Handle::open(path, CREATE_NEW);
    return handle ? std::shared_ptr<LockedFile>(new LockedFile(std::move(handle))) : nullptr;
}

std::shared_ptr<LockedFile> LockedFile::open(const std::filesystem::path& path)
{
    auto handle = Handle::open(path, OPEN_EXISTING);
    return handle ? std::shared_ptr<LockedFile>(new LockedFile(std::move(handle))) : nullptr;
}

std::optional<std::string> LockedFile::contents()
{
    if (!SetFilePointerEx(m_handle->file, LARGE_INTEGER{}, nullptr, FILE_BEGIN))
        return std::nullopt;
    std::string all;
    std::array<char, 16 * 1024> piece{};
    for (;;) {
        DWORD count = 0;
        if (!ReadFile(m_handle->file, piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr))
            return std::nullopt;
        if (count == 0)
            return all;
        all.append(piece.data(), count);
    }
}

bool LockedFile::append(std::string_view bytes)
{
    LARGE_INTEGER end{};
    if (!SetFilePointerEx(m_handle->file, LARGE_INTEGER{}, &end, FILE_END))
        return false;
    DWORD count = 0;
    if (WriteFile(m_handle->file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) &&
        count == bytes.size())
        return true;
    cut(static_cast<std::uint64_t>(end.QuadPart));
    return false;
}

bool LockedFile::cut(std::uint64_t size)
{
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    return SetFileInformationByHandle(m_handle->file, FileEndOfFileInfo, &end, sizeof end) != 0;
}

bool LockedFile::sync()
{
    return FlushFileBuffers(m_handle->file) != 0;
}

bool LockedFile::remove()
{
    // The name goes when the handle is closed.
    FILE_DISPOSITION_INFO gone{TRUE};
    return SetFileInformationByHandle(m_handle->file, FileDispositionInfo, &gone, sizeof gone) != 0;
}

} // namespace platform
