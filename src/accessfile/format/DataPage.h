#pragma once

#include "accessfile/Value.h"
#include "accessfile/file/Page.h"

#include <optional>

// Pages that hold rows: table rows, usage-map rows, long values. A row keeps its slot number for life.
namespace accessfile {

/// A stored pointer: row in the low byte, page in the other three.
[[nodiscard]] inline RowId loadRowId(const std::uint8_t* at)
{
    const std::uint32_t word = load32(at);
    return {word >> 8, static_cast<std::uint8_t>(word & 0xFF)};
}

inline void storeRowId(std::uint8_t* at, RowId row)
{
    store32(at, row.page << 8 | row.slot);
}

} // namespace accessfile

namespace accessfile::datapage {

// Layout:
//
//   offset size
//        0    4  as every page; free are the bytes between the directory and the lowest row
//        4    4  owner: definition page of the table, "LVAL" for long values, 0 for usage maps, 1 on page 1
//        8    4  on the first page of a chain of long-value rows the chain's stamp, else 0
//       12    2  slots, deleted ones included
//       14   2n  directory: offset of each row in the low 13 bits, over them its kind. Row i ends where row i-1 starts,
//                the first one at the end of the page, so that offsets never rise
inline constexpr std::size_t ownerAt = 4;
inline constexpr std::size_t stampAt = 8;
inline constexpr std::size_t slotCountAt = 12;
inline constexpr std::size_t headerLength = 14;
inline constexpr std::size_t slotLength = 2;
inline constexpr std::size_t mostSlots = 255;
inline constexpr std::size_t pointerLength = 4;             ///< Of a stub's row, and before each piece of a chain.
inline constexpr std::uint32_t longValueOwner = 0x4C41564C; ///< "LVAL"

enum class SlotKind { Live, Stub, Target, Deleted };

struct Slot
{
    std::size_t offset = 0;
    std::size_t length = 0;
    SlotKind kind = SlotKind::Deleted;
};

void initialise(PageBytes& page, std::uint32_t owner);
[[nodiscard]] inline std::uint32_t owner(const PageBytes& page)
{
    return load32(page.data() + ownerAt);
}
/// Slots, deleted ones included. Raises Damaged for a directory that runs off the page.
[[nodiscard]] std::size_t slotCount(const PageBytes& page);
/// Raises Damaged for a slot that does not exist or reaches out of its room.
[[nodiscard]] Slot slot(const PageBytes& page, std::size_t index);
[[nodiscard]] inline ByteView bytesOf(const PageBytes& page, const Slot& slot)
{
    return ByteView(page).subspan(slot.offset, slot.length);
}
/// Bytes of a live row of a page that is checked to be a data page.
[[nodiscard]] ByteView row(const PageBytes& page, std::size_t index);
[[nodiscard]] std::size_t freeBytes(const PageBytes& page);
[[nodiscard]] bool hasLiveRow(const PageBytes& page);

/// Adds a row; nullopt when it does not fit.
[[nodiscard]] std::optional<std::uint8_t> append(PageBytes& page, ByteView bytes, SlotKind kind = SlotKind::Live);
/// Gives a slot new bytes and kind; false, and nothing changed, when they do not fit.
[[nodiscard]] bool replace(PageBytes& page, std::size_t index, ByteView bytes, SlotKind kind);
/// Removes the row and closes its gap.
void erase(PageBytes& page, std::size_t index);

} // namespace accessfile::datapage
