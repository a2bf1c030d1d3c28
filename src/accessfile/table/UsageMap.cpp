#include "accessfile/table/UsageMap.h"

#include "accessfile/Error.h"
#include "accessfile/format/DataPage.h"
#include "accessfile/table/MapRow.h"

#include <algorithm>
#include <bit>

namespace accessfile {

using namespace maprow;

bool UsageMap::contains(PageNumber page) const
{
    const View view(m_pager, m_row);
    if (view.inlineBits())
        return page >= view.start() && page - view.start() < view.bits().size() * 8 &&
               bitAt(view.bits(), page - view.start());
    const std::size_t part = page / bitmapPageBits;
    return view.reference(part) != 0 &&
           bitAt(bitsOf(*bitmapPage(m_pager, view.reference(part))), page % bitmapPageBits);
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
    forEachPage([&](PageNumber page) { found.push_back(page); });
    return found;
}

void UsageMap::forEachPage(const std::function<void(PageNumber)>& take) const
{
    forEachPart(m_pager, View(m_pager, m_row), [&](std::uint64_t base, ByteView bits) {
        for (std::size_t i = 0; i < bits.size(); ++i) {
            for (unsigned byte = bits[i]; byte != 0; byte &= byte - 1) {
                const std::uint64_t page = base + i * 8 + static_cast<unsigned>(std::countr_zero(byte));
                if (page != 0 && page < largestFile / pageSize)
                    take(static_cast<PageNumber>(page));
            }
        }
    });
}

std::optional<PageNumber> UsageMap::highest() const
{
    const std::uint64_t limit = m_pager.pageCount();
    const auto highestIn = [limit](std::uint64_t base, ByteView bits) -> std::optional<PageNumber> {
        for (std::size_t i = bits.size(); i-- > 0;) {
            for (unsigned byte = bits[i]; byte != 0;) {
                const unsigned top = static_cast<unsigned>(std::bit_width(byte)) - 1;
                const std::uint64_t page = base + i * 8 + top;
                if (page != 0 && page < limit)
                    return static_cast<PageNumber>(page);
                byte &= ~(1U << top);
            }
        }
        return std::nullopt;
    };
    const View view(m_pager, m_row);
    if (view.inlineBits())
        return highestIn(view.start(), view.bits());
    std::optional<PageNumber> found;
    for (std::size_t i = view.references(); i-- > 0 && !found;) {
        if (view.reference(i) != 0)
            found = highestIn(std::uint64_t{i} * bitmapPageBits, bitsOf(*bitmapPage(m_pager, view.reference(i))));
    }
    return found;
}

std::vector<PageNumber> UsageMap::bitmapPages() const
{
    std::vector<PageNumber> found;
    const View view(m_pager, m_row);
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
    const View view(m_pager, m_row);
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
    Bytes empty(usualLength, 0);
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
    const View view(m_pager, m_row);
    if (view.inlineBits())
        setBit(m_pager.modify(m_row.page).data() + view.offset + inlineHeader, page - view.start(), false);
    else
        setBit(m_pager.modify(view.reference(page / bitmapPageBits)).data() + bitmapHeader, page % bitmapPageBits,
               false);
}

RowId makeUsageMap(Pager& pager, PageAllocator& allocator, PageNumber& mapPage)
{
    const Bytes empty(usualLength, 0);
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
