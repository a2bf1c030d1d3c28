#include "accessfile/table/DefinitionPages.h"

#include <algorithm>

namespace accessfile {

namespace {

constexpr std::size_t chainHeader = 8;
constexpr std::size_t reserve = 8;
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
            total = load32(page->data() + 8);
            if (total < 65 || total > longestDefinition)
                throwDamaged("tamanho da definição de tabela");
        }
        pages.push_back(number);
        append(buffer, ByteView(*page).subspan(buffer.empty() ? 0 : chainHeader));
        number = load32(page->data() + 4);
        // The reserve behind the last byte may have a page of its own.
        if (buffer.size() >= total + reserve)
            break;
    }
    if (buffer.size() < total)
        throwDamaged("definição de tabela incompleta");
    buffer.resize(total);
    TableDefinition definition = TableDefinition::parse(buffer);
    definition.pages = std::move(pages);
    return definition;
}

void writeDefinition(TableDefinition& definition, Pager& pager, PageAllocator& allocator)
{
    // Rows counted since this copy was read are on the page, not in it.
    if (isType(*pager.page(definition.pages.front()), PageType::Definition))
        std::copy_n(pager.page(definition.pages.front())->begin() + TableDefinition::rowCountAt, 12,
                    definition.fixed.begin() + TableDefinition::rowCountAt);
    Bytes buffer = definition.compose();
    const std::size_t withReserve = buffer.size() + reserve;
    std::size_t needed = 1;
    while (pageSize + (needed - 1) * (pageSize - chainHeader) < withReserve)
        ++needed;
    while (definition.pages.size() < needed)
        definition.pages.push_back(allocator.allocate());
    while (definition.pages.size() > needed) {
        allocator.release(definition.pages.back());
        definition.pages.pop_back();
    }
    std::size_t at = 0;
    for (std::size_t i = 0; i < definition.pages.size(); ++i) {
        PageBytes& page = pager.modify(definition.pages[i]);
        page.fill(0);
        const std::size_t head = i == 0 ? 0 : chainHeader;
        const std::size_t room = pageSize - head;
        if (at < buffer.size())
            std::copy_n(buffer.begin() + static_cast<std::ptrdiff_t>(at), std::min(room, buffer.size() - at),
                        page.begin() + static_cast<std::ptrdiff_t>(head));
        const std::size_t used = std::min(room, withReserve - at);
        page[0] = static_cast<std::uint8_t>(PageType::Definition);
        page[1] = 1;
        store16(page.data() + 2, room - used);
        store32(page.data() + 4, i + 1 < definition.pages.size() ? definition.pages[i + 1] : 0);
        at += used;
    }
}

} // namespace accessfile
