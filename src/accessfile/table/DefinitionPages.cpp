#include "accessfile/table/DefinitionPages.h"

#include <algorithm>

namespace accessfile {

namespace {

constexpr std::size_t chainHeader = 8; ///< Of every page; the first page's is the head of the definition itself.
constexpr std::size_t reserve = 8;     ///< Bytes behind the definition that count as used.
constexpr std::size_t longestDefinition = 1 << 20;

} // namespace

TableDefinition readDefinition(const Pager& pager, PageNumber first)
{
    std::vector<PageNumber> pages;
    Bytes buffer;
    std::size_t total = 0;
    for (PageNumber number = first; number != 0;) {
        const PagePointer page = pager.page(number);
        if (!isType(*page, PageType::Definition))
            throwDamaged("página de definição de tabela");
        if (buffer.empty()) {
            total = load32(page->data() + definition::lengthAt);
            if (total < definition::headLength + 2 || total > longestDefinition)
                throwDamaged("tamanho da definição de tabela");
        }
        pages.push_back(number);
        append(buffer, ByteView(*page).subspan(buffer.empty() ? 0 : chainHeader));
        number = load32(page->data() + definition::nextPageAt);
        // The reserve behind the last byte may have a page of its own.
        if (buffer.size() >= total + reserve)
            break;
    }
    if (buffer.size() < total)
        throwDamaged("definição de tabela incompleta");
    buffer.resize(total);
    TableDefinition table = TableDefinition::parse(buffer);
    table.pages = std::move(pages);
    return table;
}

void writeDefinition(TableDefinition& table, Pager& pager, PageAllocator& allocator)
{
    // Rows counted since this copy was read are on the page, not in it.
    if (isType(*pager.page(table.pages.front()), PageType::Definition))
        std::copy_n(pager.page(table.pages.front())->begin() + definition::rowCountAt, definition::numbersLength,
                    table.fixed.begin() + definition::rowCountAt);
    Bytes buffer = table.compose();
    const std::size_t withReserve = buffer.size() + reserve;
    std::size_t needed = 1;
    while (pageSize + (needed - 1) * (pageSize - chainHeader) < withReserve)
        ++needed;
    while (table.pages.size() < needed)
        table.pages.push_back(allocator.allocate());
    while (table.pages.size() > needed) {
        allocator.release(table.pages.back());
        table.pages.pop_back();
    }
    std::size_t at = 0;
    for (std::size_t i = 0; i < table.pages.size(); ++i) {
        PageBytes& page = pager.modify(table.pages[i]);
        page.fill(0);
        const std::size_t head = i == 0 ? 0 : chainHeader;
        const std::size_t room = pageSize - head;
        if (at < buffer.size())
            std::copy_n(buffer.begin() + static_cast<std::ptrdiff_t>(at), std::min(room, buffer.size() - at),
                        page.begin() + static_cast<std::ptrdiff_t>(head));
        const std::size_t used = std::min(room, withReserve - at);
        setType(page, PageType::Definition);
        store16(page.data() + pageFreeAt, room - used);
        store32(page.data() + definition::nextPageAt, i + 1 < table.pages.size() ? table.pages[i + 1] : 0);
        at += used;
    }
}

} // namespace accessfile
