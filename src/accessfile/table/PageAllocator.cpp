#include "accessfile/table/PageAllocator.h"

#include "accessfile/Error.h"
#include "accessfile/format/DataPage.h"
#include "accessfile/table/MapRow.h"

#include <algorithm>

namespace accessfile {

using namespace maprow;

namespace {

constexpr RowId freeMap{1, 0};
/// Page 1 keeps so much room beside the map.
constexpr std::size_t leastRoom = 4;

} // namespace

PageNumber PageAllocator::allocate()
{
    while (!m_freed.empty()) {
        const PageNumber page = m_freed.back();
        m_freed.pop_back();
        if (take(page))
            return page;
    }
    if (!m_searched)
        findFree();
    while (m_next < m_found.size()) {
        const PageNumber page = m_found[m_next++];
        if (!looksUsed(page) && take(page))
            return page;
    }
    // The map may need pages of its own to cover the new one.
    PageNumber page = m_pager.pageCount();
    for (cover(page); page != m_pager.pageCount() || !isFree(page); cover(page)) {
        // A page behind the end that the map calls used is left to whoever claims it.
        if (page == m_pager.pageCount())
            static_cast<void>(m_pager.append());
        page = m_pager.pageCount();
    }
    setFree(page, false);
    return m_pager.append();
}

bool PageAllocator::take(PageNumber page)
{
    if (page >= m_pager.pageCount() || !isFree(page))
        return false;
    setFree(page, false);
    m_pager.modify(page).fill(0);
    return true;
}

void PageAllocator::release(PageNumber page, PageType mark)
{
    cover(page);
    setFree(page, true);
    PageBytes& bytes = m_pager.modify(page);
    store32(bytes.data(), 0);
    bytes[0] = static_cast<std::uint8_t>(mark);
    m_freed.push_back(page);
}

void PageAllocator::forgetUnit() noexcept
{
    m_freed = m_committedFreed;
    m_next = m_committedNext;
}

void PageAllocator::keepUnit()
{
    m_committedFreed = m_freed;
    m_committedNext = m_next;
}

void PageAllocator::forgetFound() noexcept
{
    m_freed.clear();
    m_committedFreed.clear();
    m_found.clear();
    m_next = 0;
    m_committedNext = 0;
    m_searched = false;
}

void PageAllocator::findFree()
{
    if (!m_claims) {
        m_searched = true;
        return;
    }
    std::vector<PageNumber> found;
    forEachPart(m_pager, View(m_pager, freeMap), [&](std::uint64_t base, ByteView bits) {
        for (std::size_t i = 0; i < bits.size() * 8 && base + i < m_pager.pageCount(); ++i) {
            if (base + i != 0 && bitAt(bits, i))
                found.push_back(static_cast<PageNumber>(base + i));
        }
    });
    if (!found.empty()) {
        try {
            const std::vector<bool> claimed = m_claims();
            std::erase_if(found, [&](PageNumber page) { return claimed[page]; });
        } catch (const Error& error) {
            if (error.kind() != ErrorKind::Damaged)
                throw;
            // A table that cannot be followed may claim any of them: the file grows instead.
            found.clear();
        }
    }
    m_found = std::move(found);
    m_searched = true;
}

bool PageAllocator::looksUsed(PageNumber number) const
{
    const PagePointer page = m_pager.page(number);
    if (isType(*page, PageType::Data) && datapage::owner(*page) == datapage::longValueOwner)
        return datapage::hasLiveRow(*page);
    if (!isType(*page, PageType::Data) && !isType(*page, PageType::IndexNode) && !isType(*page, PageType::IndexLeaf))
        return false;
    const PageNumber owner = datapage::owner(*page);
    return owner < m_pager.pageCount() && isType(*m_pager.page(owner), PageType::Definition);
}

std::optional<PageNumber> PageAllocator::usedBehindEnd() const
{
    const View view(m_pager, freeMap);
    const std::uint64_t end = m_pager.pageCount();
    std::optional<PageNumber> found;
    const auto search = [&](std::uint64_t base, ByteView bits) {
        for (std::size_t i = base < end ? end - base : 0; i < bits.size() * 8 && !found; ++i) {
            if (!bitAt(bits, i))
                found = static_cast<PageNumber>(base + i);
        }
    };
    if (view.inlineBits())
        search(view.start(), view.bits());
    else if (const PageNumber bits = view.reference(end / bitmapPageBits); bits != 0 && bits < end)
        search(end / bitmapPageBits * bitmapPageBits, bitsOf(*bitmapPage(m_pager, bits)));
    return found;
}

bool PageAllocator::isFree(PageNumber page) const
{
    const View view(m_pager, freeMap);
    if (view.inlineBits()) {
        // Pages behind the bits do not exist yet.
        const bool covered = page >= view.start() && page - view.start() < view.bits().size() * 8;
        return !covered || bitAt(view.bits(), page - view.start());
    }
    const PageNumber bits = view.reference(page / bitmapPageBits);
    return bits != 0 ? bitAt(bitsOf(*bitmapPage(m_pager, bits)), page % bitmapPageBits) : page >= m_pager.pageCount();
}

void PageAllocator::setFree(PageNumber page, bool free)
{
    const View view(m_pager, freeMap);
    if (view.inlineBits()) {
        setBit(m_pager.modify(freeMap.page).data() + view.offset + inlineHeader, page, free);
        return;
    }
    PageBytes& bits = m_pager.modify(view.reference(page / bitmapPageBits));
    setBit(bits.data() + bitmapHeader, page % bitmapPageBits, free);
}

/// Gives the map a bit for the page.
void PageAllocator::cover(PageNumber page)
{
    const View view(m_pager, freeMap);
    if (view.inlineBits()) {
        if (view.start() != 0)
            throw Error(ErrorKind::ReadOnly, "O mapa de páginas livres do arquivo não é compreendido.");
        if (page < view.bits().size() * 8 || growInline(page))
            return;
        convertToReferences();
    }
    coverPart(page / bitmapPageBits);
}

/// The row grows in place by whole words; pages that do not exist yet count as free.
bool PageAllocator::growInline(PageNumber page)
{
    const View view(m_pager, freeMap);
    Bytes longer(view.row.begin(), view.row.end());
    longer.resize(inlineHeader + 4 * ((page / 8 + 1 + 3) / 4), 0xFF);
    return datapage::freeBytes(*view.page) + view.row.size() >= longer.size() + leastRoom &&
           datapage::replace(m_pager.modify(freeMap.page), freeMap.slot, longer, datapage::SlotKind::Live);
}

void PageAllocator::convertToReferences()
{
    const View before(m_pager, freeMap);
    Bytes row(usualLength, 0);
    row[0] = referenceShape;
    const PageNumber number = m_pager.append();
    PageBytes& page = m_pager.modify(number);
    page.fill(0xFF);
    store32(page.data(), 0);
    setType(page, PageType::Bitmap);
    // What the map had no bit for is taken as used.
    for (std::size_t i = 0; i < std::min<std::size_t>(m_pager.pageCount(), bitmapPageBits); ++i)
        setBit(page.data() + bitmapHeader, i, i != number && i < before.bits().size() * 8 && bitAt(before.bits(), i));
    store32(row.data() + referencesAt, number);
    if (!datapage::replace(m_pager.modify(freeMap.page), freeMap.slot, row, datapage::SlotKind::Live))
        throw Error(ErrorKind::ReadOnly, "O mapa de páginas livres do arquivo não tem espaço para crescer.");
}

/// Gives the map of references the bits of a part; its pages that exist already are taken as used.
void PageAllocator::coverPart(std::size_t part)
{
    const auto missing = [this](std::size_t index) { return View(m_pager, freeMap).reference(index) == 0; };
    if (!missing(part))
        return;
    if (part >= View(m_pager, freeMap).references())
        throw Error(ErrorKind::ReadOnly, "O mapa de páginas livres do arquivo não tem espaço para crescer.");
    // The page of the bits has a bit itself, at the end of the file.
    while (m_pager.pageCount() / bitmapPageBits != part && missing(m_pager.pageCount() / bitmapPageBits))
        coverPart(m_pager.pageCount() / bitmapPageBits);
    const PageNumber number = m_pager.append();
    PageBytes& page = m_pager.modify(number);
    page.fill(0xFF);
    store32(page.data(), 0);
    setType(page, PageType::Bitmap);
    for (std::uint64_t i = part * bitmapPageBits;
         i < std::min<std::uint64_t>(m_pager.pageCount(), (part + 1) * bitmapPageBits); ++i)
        setBit(page.data() + bitmapHeader, static_cast<std::size_t>(i % bitmapPageBits), false);
    const View view(m_pager, freeMap);
    store32(m_pager.modify(freeMap.page).data() + view.offset + referencesAt + referenceLength * part, number);
    setFree(number, false);
}

} // namespace accessfile
