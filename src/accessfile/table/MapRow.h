#pragma once

#include "accessfile/Value.h"
#include "accessfile/file/Pager.h"

// A map is a row in one of two shapes, told by its first byte:
//
//   offset size
//        0    1  0: a bitmap follows
//        1    4  page of its first bit, a multiple of 8
//        5    n  bits of the pages from there, lowest bit first
//
//        0    1  1: references follow
//        1   4n  pages of type 5, 0 for none: 4 bytes of header, then the bits of 32736 pages each
namespace accessfile::maprow {

inline constexpr std::size_t startAt = 1;
inline constexpr std::size_t inlineHeader = 5;
inline constexpr std::size_t referencesAt = 1;
inline constexpr std::size_t referenceLength = 4;
inline constexpr std::uint8_t inlineShape = 0;
inline constexpr std::uint8_t referenceShape = 1;
inline constexpr std::size_t usualLength = 69;
inline constexpr std::size_t bitmapHeader = 4;
inline constexpr std::size_t bitmapPageBits = (pageSize - bitmapHeader) * 8;

[[nodiscard]] inline bool bitAt(ByteView bits, std::size_t index)
{
    return (bits[index / 8] >> (index % 8) & 1) != 0;
}

inline void setBit(std::uint8_t* bits, std::size_t index, bool on)
{
    const auto mask = static_cast<std::uint8_t>(1U << (index % 8));
    bits[index / 8] = static_cast<std::uint8_t>(on ? bits[index / 8] | mask : bits[index / 8] & ~mask);
}

/// A stored map in its two shapes; holds the page alive.
struct View
{
    /// Raises Damaged for a row that is no map.
    View(const Pager& pager, RowId where);

    PagePointer page;
    ByteView row;
    std::size_t offset = 0; ///< Of the row in the page.

    [[nodiscard]] bool inlineBits() const { return row[0] == inlineShape; }
    [[nodiscard]] std::uint64_t start() const { return load32(row.data() + startAt); }
    [[nodiscard]] ByteView bits() const { return row.subspan(inlineHeader); }
    [[nodiscard]] std::size_t references() const { return (row.size() - referencesAt) / referenceLength; }
    /// Page of a part's bits; 0 for none, and for a part that the row has no place for.
    [[nodiscard]] PageNumber reference(std::size_t index) const
    {
        return index < references() ? load32(row.data() + referencesAt + referenceLength * index) : 0;
    }
};

/// Raises Damaged for a page that is no bitmap.
[[nodiscard]] PagePointer bitmapPage(const Pager& pager, PageNumber number);

/// Bits of a bitmap page.
[[nodiscard]] inline ByteView bitsOf(const PageBytes& page)
{
    return ByteView(page).subspan(bitmapHeader);
}

/// Calls `take` with the base page and the bits of every part of the map.
template <typename Take>
void forEachPart(const Pager& pager, const View& view, Take take)
{
    if (view.inlineBits()) {
        take(view.start(), view.bits());
        return;
    }
    for (std::size_t i = 0; i < view.references(); ++i) {
        if (view.reference(i) == 0)
            continue;
        const PagePointer page = bitmapPage(pager, view.reference(i));
        take(std::uint64_t{i} * bitmapPageBits, bitsOf(*page));
    }
}

} // namespace accessfile::maprow
