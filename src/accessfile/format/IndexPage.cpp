#include "accessfile/format/IndexPage.h"

#include <algorithm>
#include <bit>

namespace accessfile {

namespace {

using namespace indexpage;

PageNumber childAt(const std::uint8_t* at)
{
    return static_cast<PageNumber>(at[0]) << 24 | static_cast<PageNumber>(at[1]) << 16 |
           static_cast<PageNumber>(at[2]) << 8 | at[3];
}

/// Marks where entries end, and what is left free.
void storeEnds(PageBytes& page, std::span<const std::uint16_t> ends)
{
    std::fill_n(page.begin() + bitmapAt, bitmapLength, std::uint8_t{0});
    for (const std::uint16_t end : ends)
        page[bitmapAt + end / 8U] = static_cast<std::uint8_t>(page[bitmapAt + end / 8U] | 1U << (end % 8U));
    store16(page.data() + pageFreeAt, indexEntryArea - (ends.empty() ? 0U : ends.back()));
}

} // namespace

void EntryList::insert(std::size_t index, ByteView entry)
{
    const std::size_t start = index == 0 ? 0 : m_ends[index - 1];
    m_bytes.insert(m_bytes.begin() + static_cast<std::ptrdiff_t>(start), entry.begin(), entry.end());
    m_ends.insert(m_ends.begin() + static_cast<std::ptrdiff_t>(index), start);
    for (std::size_t i = index; i < m_ends.size(); ++i)
        m_ends[i] += entry.size();
}

void EntryList::erase(std::size_t index)
{
    const std::size_t start = index == 0 ? 0 : m_ends[index - 1];
    const std::size_t length = m_ends[index] - start;
    m_bytes.erase(m_bytes.begin() + static_cast<std::ptrdiff_t>(start),
                  m_bytes.begin() + static_cast<std::ptrdiff_t>(start + length));
    m_ends.erase(m_ends.begin() + static_cast<std::ptrdiff_t>(index));
    for (std::size_t i = index; i < m_ends.size(); ++i)
        m_ends[i] -= length;
}

void EntryList::push(ByteView entry)
{
    append(m_bytes, entry);
    m_ends.push_back(m_bytes.size());
}

std::size_t EntryList::prefixLength() const
{
    if (size() < 2)
        return 0;
    // A byte of each entry stays behind.
    const ByteView first = (*this)[0];
    std::size_t length = first.size() - 1;
    for (std::size_t i = 1; i < size() && length > 0; ++i) {
        const ByteView entry = (*this)[i];
        length = std::min(length, entry.size() - 1);
        length = static_cast<std::size_t>(
            std::mismatch(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(length), entry.begin()).first -
            first.begin());
    }
    return length;
}

std::size_t EntryList::storedSize() const
{
    return empty() ? 0 : m_bytes.size() - prefixLength() * (size() - 1);
}

IndexPage IndexPage::read(const PageBytes& page)
{
    IndexPage result;
    result.leaf = isType(page, PageType::IndexLeaf);
    if (!result.leaf && !isType(page, PageType::IndexNode))
        throwDamaged("página de índice");
    result.owner = load32(page.data() + ownerAt);
    result.previous = load32(page.data() + previousAt);
    result.next = load32(page.data() + nextAt);
    result.tail = result.leaf ? 0 : load32(page.data() + tailAt);
    result.level = page[levelAt];
    const std::size_t prefix = load16(page.data() + prefixAt);
    const std::size_t least = result.leaf ? rowBytes + 1 : rowBytes + childBytes + 1;
    Bytes entry;
    std::size_t start = 0;
    for (std::size_t i = 0; i < bitmapLength; ++i) {
        for (unsigned byte = page[bitmapAt + i]; byte != 0; byte &= byte - 1) {
            const std::size_t end = i * 8 + static_cast<unsigned>(std::countr_zero(byte));
            if (end <= start || end > indexEntryArea)
                throwDamaged("registro de índice");
            const ByteView stored = ByteView(page).subspan(entriesAt + start, end - start);
            if (result.entries.empty()) {
                entry.assign(stored.begin(), stored.end());
                if (prefix > entry.size())
                    throwDamaged("registro de índice");
            } else {
                entry.resize(prefix);
                append(entry, stored);
            }
            if (entry.size() < least || entry.size() > indexEntryArea)
                throwDamaged("registro de índice");
            result.entries.push(entry);
            start = end;
        }
    }
    if (!result.leaf && result.tail == 0) {
        if (result.entries.empty())
            throwDamaged("página de índice");
        result.tail = result.child(result.entries.size() - 1);
        result.entries.erase(result.entries.size() - 1);
    }
    return result;
}

void IndexPage::write(PageBytes& page) const
{
    page.fill(0);
    setType(page, leaf ? PageType::IndexLeaf : PageType::IndexNode);
    store32(page.data() + ownerAt, owner);
    store32(page.data() + previousAt, previous);
    store32(page.data() + nextAt, next);
    store32(page.data() + tailAt, tail);
    const std::size_t prefix = entries.prefixLength();
    store16(page.data() + prefixAt, prefix);
    page[levelAt] = leaf ? 0 : level;
    std::size_t at = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const ByteView stored = i == 0 ? entries[i] : entries[i].subspan(prefix);
        std::copy(stored.begin(), stored.end(), page.begin() + static_cast<std::ptrdiff_t>(entriesAt + at));
        at += stored.size();
        page[bitmapAt + at / 8] = static_cast<std::uint8_t>(page[bitmapAt + at / 8] | 1U << (at % 8));
    }
    store16(page.data() + pageFreeAt, indexEntryArea - at);
}

PageNumber IndexPage::child(std::size_t index) const
{
    if (index >= entries.size())
        return tail;
    const ByteView entry = entries[index];
    return childAt(entry.data() + entry.size() - childBytes);
}

ByteView IndexPage::leafPart(std::size_t index) const
{
    const ByteView entry = entries[index];
    return leaf ? entry : entry.first(entry.size() - childBytes);
}

std::size_t IndexPage::lowerBound(ByteView entry) const
{
    std::size_t low = 0;
    std::size_t high = entries.size();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (compareEntries(leafPart(middle), entry) < 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

IndexPageView::IndexPageView(const PageBytes& page)
    : m_page(&page)
    , m_leaf(isType(page, PageType::IndexLeaf))
    , m_prefix(load16(page.data() + prefixAt))
{
    if (!m_leaf && !isType(page, PageType::IndexNode))
        throwDamaged("página de índice");
    const std::size_t least = m_leaf ? rowBytes + 1 : rowBytes + childBytes + 1;
    m_ends.reserve(512);
    std::size_t from = 0;
    for (std::size_t i = 0; i < bitmapLength; i += 8) {
        // The last word reaches into the entries.
        std::uint64_t word = load64(page.data() + bitmapAt + i);
        if (i + 8 > bitmapLength)
            word &= (std::uint64_t{1} << (bitmapLength - i) * 8) - 1;
        for (; word != 0; word &= word - 1) {
            const std::size_t end = i * 8 + static_cast<unsigned>(std::countr_zero(word));
            const std::size_t shared = m_ends.empty() ? 0 : m_prefix;
            const std::size_t length = end - from + shared;
            if (end <= from || end > indexEntryArea || length < least || length > indexEntryArea)
                throwDamaged("registro de índice");
            m_ends.push_back(static_cast<std::uint16_t>(end));
            from = end;
        }
    }
    if (!m_ends.empty() && m_prefix > m_ends.front())
        throwDamaged("registro de índice");
    m_bounds = m_ends.size();
    if (m_leaf)
        return;
    m_tail = load32(page.data() + tailAt);
    if (m_tail == 0) {
        if (m_ends.empty())
            throwDamaged("página de índice");
        m_tail = storedChild(--m_bounds);
    }
}

void IndexPageView::entry(std::size_t index, Bytes& to) const
{
    const std::uint8_t* area = m_page->data() + entriesAt;
    to.clear();
    if (index > 0)
        to.insert(to.end(), area, area + m_prefix);
    to.insert(to.end(), area + start(index), area + m_ends[index]);
}

PageNumber IndexPageView::storedChild(std::size_t index) const
{
    Bytes whole;
    entry(index, whole);
    return childAt(whole.data() + whole.size() - childBytes);
}

PageNumber IndexPageView::child(std::size_t index) const
{
    return index >= m_bounds ? m_tail : storedChild(index);
}

std::size_t IndexPageView::lowerBound(ByteView leafEntry) const
{
    Bytes whole;
    whole.reserve(64);
    std::size_t low = 0;
    std::size_t high = m_bounds;
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        entry(middle, whole);
        if (compareEntries(ByteView(whole).first(whole.size() - (m_leaf ? 0 : childBytes)), leafEntry) < 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

bool IndexPageView::insert(PageBytes& page, std::size_t index, ByteView entry) const
{
    const std::uint8_t* area = m_page->data() + entriesAt;
    // The first entry stands whole, and the others leave out what they share with it.
    if ((index == 0 && m_prefix > 0) || entry.size() <= m_prefix || !std::equal(area, area + m_prefix, entry.begin()))
        return false;
    const ByteView stored = entry.subspan(m_prefix);
    const std::size_t used = m_ends.empty() ? 0 : m_ends.back();
    if (used + stored.size() > indexEntryArea)
        return false;
    const std::size_t at = start(index);
    std::vector<std::uint16_t> ends = m_ends;
    ends.insert(ends.begin() + static_cast<std::ptrdiff_t>(index), static_cast<std::uint16_t>(at));
    for (std::size_t i = index; i < ends.size(); ++i)
        ends[i] = static_cast<std::uint16_t>(ends[i] + stored.size());
    std::uint8_t* to = page.data() + entriesAt;
    std::memmove(to + at + stored.size(), to + at, used - at);
    std::copy(stored.begin(), stored.end(), to + at);
    storeEnds(page, ends);
    return true;
}

bool IndexPageView::erase(PageBytes& page, std::size_t index) const
{
    if (m_prefix > 0 && (index == 0 || size() <= 2))
        return false;
    std::vector<std::uint16_t> ends = m_ends;
    const std::size_t at = start(index);
    const std::size_t length = m_ends[index] - at;
    const std::size_t used = m_ends.back();
    ends.erase(ends.begin() + static_cast<std::ptrdiff_t>(index));
    for (std::size_t i = index; i < ends.size(); ++i)
        ends[i] = static_cast<std::uint16_t>(ends[i] - length);
    std::uint8_t* to = page.data() + entriesAt;
    std::memmove(to + at, to + at + length, used - at - length);
    std::fill_n(to + used - length, length, std::uint8_t{0});
    storeEnds(page, ends);
    return true;
}

Bytes makeEntry(ByteView key, RowId row)
{
    Bytes entry(key.begin(), key.end());
    entry.push_back(static_cast<std::uint8_t>(row.page >> 16 & 0xFF));
    entry.push_back(static_cast<std::uint8_t>(row.page >> 8 & 0xFF));
    entry.push_back(static_cast<std::uint8_t>(row.page & 0xFF));
    entry.push_back(row.slot);
    return entry;
}

RowId rowOf(ByteView leafEntry)
{
    const std::uint8_t* at = leafEntry.data() + leafEntry.size() - rowBytes;
    return {static_cast<PageNumber>(at[0]) << 16 | static_cast<PageNumber>(at[1]) << 8 | at[2], at[3]};
}

int compareKeys(ByteView left, ByteView right)
{
    const std::size_t common = std::min(left.size(), right.size());
    const int order = common == 0 ? 0 : std::memcmp(left.data(), right.data(), common);
    if (order != 0)
        return order;
    return left.size() < right.size() ? -1 : left.size() > right.size() ? 1 : 0;
}

int compareEntries(ByteView left, ByteView right)
{
    const int order = compareKeys(keyOf(left), keyOf(right));
    if (order != 0)
        return order;
    return std::memcmp(left.data() + left.size() - rowBytes, right.data() + right.size() - rowBytes, rowBytes);
}

} // namespace accessfile
