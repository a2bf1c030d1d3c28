#pragma once

#include "accessfile/file/FileDevice.h"

// Where Access puts its locks in the lock file, far beyond its end: kind << 28 | page << 9 | user. A user that shares
// takes a byte of its own; who wants a page alone takes 0x100 + user bytes from base + 1: they meet every sharer, and
// the overhang tells who holds them.
namespace accessfile::lockrange {

enum class Kind : std::uint32_t { User = 1, Page = 2, TableRead = 4, TableWrite = 5, TableDenyWrite = 6 };

inline constexpr std::uint32_t mostUsers = 255;

constexpr std::uint64_t base(Kind kind, std::uint32_t page)
{
    return std::uint64_t{static_cast<std::uint32_t>(kind)} << 28 | std::uint64_t{page} << 9;
}
constexpr ByteRange shared(Kind kind, std::uint32_t page, std::uint32_t user)
{
    return {base(kind, page) + user, 1};
}
constexpr ByteRange exclusive(Kind kind, std::uint32_t page, std::uint32_t user)
{
    return {base(kind, page) + 1, 0x100 + user};
}

/// The byte that a user holds while the file is open.
constexpr ByteRange user(std::uint32_t number)
{
    return shared(Kind::User, 0, number);
}
/// All of them and the byte by which Access asks whether anybody is there: whoever holds this is alone.
inline constexpr ByteRange everyUser{base(Kind::User, 0), 0x100};

/// Ours alone, in a kind that Access has no use for: who waits for a turn holds it, so that one who has just had a turn
/// comes after him.
inline constexpr ByteRange nextInTurn{0x70000000, 1};

/// The whole data file, held for the length of a turn: on a network share nobody reads or writes within it.
inline constexpr ByteRange wholeFile{0, 0x7FFFFFFF};

} // namespace accessfile::lockrange
