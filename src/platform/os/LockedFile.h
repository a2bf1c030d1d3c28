#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// A small file that this process alone holds, from opening until the object goes or the process ends, however it ends.
/// Only the file's owner may read or write it.
class LockedFile
{
public:
    /// Makes a file that is not there yet. Null where it cannot be made and held.
    [[nodiscard]] static std::shared_ptr<LockedFile> create(const std::filesystem::path& path);
    /// Opens one that is there. Null where there is none, where another process holds it, or where it cannot be read
    /// and written.
    [[nodiscard]] static std::shared_ptr<LockedFile> open(const std::filesystem::path& path);

    ~LockedFile(); ///< Lets the file go; it stays.
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;

    /// The whole file; nothing where it cannot be read.
    [[nodiscard]] std::optional<std::string> contents();
    /// Writes behind the end. False where not all of it could be written; none of it is there then.
    [[nodiscard]] bool append(std::string_view bytes);
    /// Cuts the file to its first bytes.
    bool cut(std::uint64_t size);
    /// Has everything so far, the file's name included, lie on the disk when it returns. Another thread may call it.
    bool sync();
    /// Takes the file off its folder. This object holds what is left of it.
    bool remove();

private:
    struct Handle;
    explicit LockedFile(std::unique_ptr<Handle> handle);
    std::unique_ptr<Handle> m_handle;
};

} // namespace platform
