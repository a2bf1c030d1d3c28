#include "accessfile/table/UsageMap.h"

#include "accessfile/Error.h"
#include "accessfile/format/DataPage.h"

#include <algorithm>
#include <bit>

namespace accessfile {

namespace {

// A map is a row in one of two shapes, told by its first byte:
//
//   offset size
//        0    1  0: a bitmap follows
//        1    4  page of its first bit, a multiple of 8
//        5    n  bits of the pages from there, lowest bit first
//
//        0    1  1: references follow
//        1   4n  pages of type 5, 0 for none: 4 bytes of header, then the bits of 32736 pages each
constexpr std::size_t startAt = 1;
constexpr std::size_t inlineHeader = 5;
constexpr std::size_t referencesAt = 1;
constexpr std::size_t referenceLength = 4;
constexpr std::uint8_t inlineShape = 0;
constexpr std::uint8_t referenceShape = 1;
constexpr std::size_t usualRowLength = 69;
constexpr std::size_t bitmapHeader = 4;
constexpr std::size_t bitmapPageBits = (pageSize - bitmapHeader) * 8;

bool bitAt(ByteView bits, std::size_t index)
{
    return (bits[index / 8] >> (index % 8) & 1) != 0;
}

void setBit(std::uint8_t* bits, std::size_t index, bool on)
{
    const auto mask = static_cast<std::uint8_t>(1U << (index % 8));
    bits[index / 8] = static_cast<std::uint8_t>(on ? bits[index / 8] | mask : bits[index / 8] & ~mask);
}

/// A stored map in its two shapes; holds the page alive.
struct MapView
{
    PagePointer page;
    ByteView row;
    std::size_t offset = 0;

    [[nodiscard]] bool inlineBits() const { return row[0] == inlineShape; }
    [[nodiscard]] std::uint64_t start() const { return load32(row.data() + startAt); }
    [[nodiscard]] ByteView bits() const { return row.subspan(inlineHeader); }
    [[nodiscard]] std::size_t references() const { return (row.size() - referencesAt) / referenceLength; }
    [[nodiscard]] PageNumber reference(std::size_t index) const
    {
        return load32(row.data() + referencesAt + referenceLength * index);
    }
};

MapView viewOf(const Pager& pager, RowId where)
{
    MapView view;
    view.page = pager.page(where.page);
    view.row = datapage::row(*view.page, where.slot);
    view.offset = static_cast<std::size_t>(view.row.data() - view.page->data());
    if (view.row.size() < inlineHeader || view.row[0] > referenceShape)
        throwDamaged("mapa de páginas");
    return view;
}

PagePointer bitmapPage(const Pager& pager, PageNumber number)
{
    PagePointer page = pager.page(number);
    if (!isType(*page, PageType::Bitmap))
        throwDamaged("mapa de páginas");
    return page;
}

/// Calls `take` with the base page and the bits of every part of the map.
template <typename Take>
void forEachPart(const Pager& pager, const MapView& view, Take take)
{
    if (view.inlineBits()) {
        take(view.start(), view.bits());
        return;
    }
    for (std::size_t i = 0; i < view.references(); ++i) {
        if (view.reference(i) == 0)
            continue;
        const PagePointer page = bitmapPage(pager, view.reference(i));
        take(std::uint64_t{i} * bitmapPageBits, ByteView(*page).subspan(bitmapHeader));
    }
}

} // namespace

PageNumber PageAllocator::allocate()
{
    while (!m_freed.empty()) {
        const PageNumber page = m_freed.back();
        m_freed.pop_back();
        if (page < m_pager.pageCount() && isFree(page)) {
            setFree(page, false);
            m_pager.modify(page).fill(0);
            return page;
        }
    }
    const PageNumber page = m_pager.pageCount();
    setFree(page, false);
    return m_pager.append();
}

void PageAllocator::release(PageNumber page, PageType mark)
{
    setFree(page, true);
    PageBytes& bytes = m_pager.modify(page);
    store32(bytes.data(), 0);
    bytes[0] = static_cast<std::uint8_t>(mark);
    m_freed.push_back(page);
}

bool PageAllocator::isFree(PageNumber page) const
{
    const MapView view = viewOf(m_pager, {1, 0});
    bool free = true;
    if (view.inlineBits()) {
        if (page >= view.start() && page - view.start() < view.bits().size() * 8)
            free = bitAt(view.bits(), page - view.start());
    } else if (page / bitmapPageBits < view.references() && view.reference(page / bitmapPageBits) != 0) {
        const PagePointer bits = bitmapPage(m_pager, view.reference(page / bitmapPageBits));
        free = bitAt(ByteView(*bits).subspan(bitmapHeader), page % bitmapPageBits);
    }
    return free;
}

void PageAllocator::setFree(PageNumber page, bool free)
{
    MapView view = viewOf(m_pager, {1, 0});
    if (!view.inlineBits() || view.start() != 0)
        throw Error(ErrorKind::ReadOnly, "O arquivo é grande demais para ser alterado com segurança.");
    if (page >= view.bits().size() * 8) {
        // The row grows in place by whole words; pages that do not exist yet count as free.
        Bytes longer(view.row.begin(), view.row.end());
        const std::size_t length = inlineHeader + 4 * ((page / 8 + 1 + 3) / 4);
        longer.resize(length, 0xFF);
        if (!datapage::replace(m_pager.modify(1), 0, longer, datapage::SlotKind::Live))
            throw Error(ErrorKind::ReadOnly, "O arquivo é grande demais para ser alterado com segurança.");
        view = viewOf(m_pager, {1, 0});
    }
    setBit(m_pager.modify(1).data() + view.offset + inlineHeader, page, free);
}

bool UsageMap::contains(PageNumber page) const
{
    const MapView view = viewOf(m_pager, m_row);
    if (view.inlineBits())
        return page >= view.start() && page - view.start() < view.bits().size() * 8 &&
               bitAt(view.bits(), page - view.start());
    const std::size_t part = page / bitmapPageBits;
    if (part >= view.references() || view.reference(part) == 0)
        return false;
    const PagePointer bits = bitmapPage(m_pager, view.reference(part));
    return bitAt(ByteView(*bits).subspan(bitmapHeader), page % bitmapPageBits);
}

std::vector<PageNumber> UsageMap::pages() const
{
    std::vector<PageNumber> found = allPages();
    std::erase_if(found, [this](PageNumber page) { return page >= m_pager.pageCount(); });
    return found;
}

std::vector<PageNumber> UsageMap::allPages() const
{
    std::vector<PageNumber> found;
    forEachPart(m_pager, viewOf(m_pager, m_row), [&](std::uint64_t base, ByteView bits) {
        for (std::size_t i = 0; i < bits.size(); ++i) {
            for (unsigned byte = bits[i]; byte != 0; byte &= byte - 1) {
                const std::uint64_t page = base + i * 8 + static_cast<unsigned>(std::countr_zero(byte));
                if (page != 0 && page < largestFile / pageSize)
                    found.push_back(static_cast<PageNumber>(page));
            }
        }
    });
    return found;
}

std::optional<PageNumber> UsageMap::highest() const
{
    std::optional<PageNumber> found;
    const std::uint64_t limit = m_pager.pageCount();
    forEachPart(m_pager, viewOf(m_pager, m_row), [&](std::uint64_t base, ByteView bits) {
        for (std::size_t i = bits.size(); i-- > 0;) {
            for (unsigned byte = bits[i]; byte != 0;) {
                const unsigned top = static_cast<unsigned>(std::bit_width(byte)) - 1;
                const std::uint64_t page = base + i * 8 + top;
                if (page != 0 && page < limit) {
                    found = static_cast<PageNumber>(page);
                    return;
                }
                byte &= ~(1U << top);
            }
        }
    });
    return found;
}

std::vector<PageNumber> UsageMap::bitmapPages() const
{
    std::vector<PageNumber> found;
    const MapView view = viewOf(m_pager, m_row);
    if (!view.inlineBits()) {
        for (std::size_t i = 0; i < view.references(); ++i) {
            if (view.reference(i) != 0)
                found.push_back(view.reference(i));
        }
    }
    return found;
}

void UsageMap::add(PageNumber page, PageAllocator& allocator)
{
    const MapView view = viewOf(m_pager, m_row);
    if (view.inlineBits()) {
        const std::size_t capacity = view.bits().size() * 8;
        if (page >= view.start() && page - view.start() < capacity) {
            setBit(m_pager.modify(m_row.page).data() + view.offset + inlineHeader, page - view.start(), true);
            return;
        }
        std::vector<PageNumber> all = pages();
        all.push_back(page);
        const auto [least, most] = std::minmax_element(all.begin(), all.end());
        const PageNumber start = *least & ~PageNumber{7};
        if (*most - start >= capacity) {
            convertToReference(all, allocator);
            return;
        }
        PageBytes& bytes = m_pager.modify(m_row.page);
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(view.offset + inlineHeader), capacity / 8,
                    std::uint8_t{0});
        store32(bytes.data() + view.offset + startAt, start);
        for (const PageNumber each : all)
            setBit(bytes.data() + view.offset + inlineHeader, each - start, true);
        return;
    }
    const std::size_t part = page / bitmapPageBits;
    if (part >= view.references())
        throwDamaged("mapa de páginas pequeno demais");
    PageNumber bitmap = view.reference(part);
    if (bitmap == 0) {
        bitmap = allocator.allocate();
        PageBytes& fresh = m_pager.modify(bitmap);
        setType(fresh, PageType::Bitmap);
        store32(m_pager.modify(m_row.page).data() + view.offset + referencesAt + referenceLength * part, bitmap);
    } else {
        static_cast<void>(bitmapPage(m_pager, bitmap));
    }
    setBit(m_pager.modify(bitmap).data() + bitmapHeader, page % bitmapPageBits, true);
}

void UsageMap::convertToReference(const std::vector<PageNumber>& pages, PageAllocator& allocator)
{
    Bytes empty(usualRowLength, 0);
    empty[0] = referenceShape;
    if (!datapage::replace(m_pager.modify(m_row.page), m_row.slot, empty, datapage::SlotKind::Live))
        throwDamaged("mapa de páginas sem espaço");
    for (const PageNumber page : pages)
        add(page, allocator);
}

void UsageMap::remove(PageNumber page)
{
    if (!contains(page))
        return;
    const MapView view = viewOf(m_pager, m_row);
    if (view.inlineBits())
        setBit(m_pager.modify(m_row.page).data() + view.offset + inlineHeader, page - view.start(), false);
    else
        setBit(m_pager.modify(view.reference(page / bitmapPageBits)).data() + bitmapHeader, page % bitmapPageBits,
               false);
}

RowId makeUsageMap(Pager& pager, PageAllocator& allocator, PageNumber& mapPage)
{
    const Bytes empty(usualRowLength, 0);
    if (mapPage != 0) {
        const PagePointer current = pager.page(mapPage);
        if (isType(*current, PageType::Data) && datapage::owner(*current) == 0) {
            if (const auto slot = datapage::append(pager.modify(mapPage), empty))
                return {mapPage, *slot};
        }
    }
    mapPage = allocator.allocate();
    PageBytes& fresh = pager.modify(mapPage);
    datapage::initialise(fresh, 0);
    return {mapPage, *datapage::append(fresh, empty)};
}

} // namespace accessfile
