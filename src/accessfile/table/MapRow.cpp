#include "accessfile/table/MapRow.h"

#include "accessfile/format/DataPage.h"

namespace accessfile::maprow {

View::View(const Pager& pager, RowId where)
    : page(pager.page(where.page))
    , row(datapage::row(*page, where.slot))
    , offset(static_cast<std::size_t>(row.data() - page->data()))
{
    if (row.size() < inlineHeader || row[0] > referenceShape)
        throwDamaged("mapa de páginas");
}

PagePointer bitmapPage(const Pager& pager, PageNumber number)
{
    PagePointer page = pager.page(number);
    if (!isType(*page, PageType::Bitmap))
        throwDamaged("mapa de páginas");
    return page;
}

} // namespace accessfile::maprow
