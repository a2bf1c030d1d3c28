#include "accessfile/format/DataPage.h"

#include <algorithm>
#include <vector>

namespace accessfile::datapage {

namespace {

constexpr std::uint16_t offsetMask = 0x1FFF;
constexpr std::uint16_t stubFlag = 0x4000;
constexpr std::uint16_t targetFlag = 0x8000;

std::uint16_t flagsOf(SlotKind kind)
{
    switch (kind) {
    case SlotKind::Live:
        return 0;
    case SlotKind::Stub:
        return stubFlag;
    case SlotKind::Target:
        return targetFlag;
    case SlotKind::Deleted:
        return stubFlag | targetFlag;
    }
    return 0;
}

std::uint16_t word(const PageBytes& page, std::size_t index)
{
    return load16(page.data() + headerLength + slotLength * index);
}

std::size_t lowest(const PageBytes& page, std::size_t count)
{
    return count == 0 ? pageSize : word(page, count - 1) & offsetMask;
}

void storeFree(PageBytes& page)
{
    store16(page.data() + pageFreeAt, freeBytes(page));
}

} // namespace

void initialise(PageBytes& page, std::uint32_t owner)
{
    page.fill(0);
    setType(page, PageType::Data);
    store16(page.data() + pageFreeAt, pageSize - headerLength);
    store32(page.data() + ownerAt, owner);
}

std::size_t slotCount(const PageBytes& page)
{
    const std::size_t count = load16(page.data() + slotCountAt);
    if (headerLength + slotLength * count > pageSize)
        throwDamaged("lista de registros de uma página");
    return count;
}

Slot slot(const PageBytes& page, std::size_t index)
{
    const std::size_t count = slotCount(page);
    if (index >= count)
        throwDamaged("referência a um registro que não existe");
    const std::uint16_t stored = word(page, index);
    const std::size_t end = index == 0 ? pageSize : word(page, index - 1) & offsetMask;
    Slot result;
    result.offset = stored & offsetMask;
    if (end > pageSize || result.offset > end || result.offset < headerLength + slotLength * count)
        throwDamaged("posição de um registro na página");
    result.length = end - result.offset;
    switch (stored & (stubFlag | targetFlag)) {
    case 0:
        result.kind = SlotKind::Live;
        break;
    case stubFlag:
        result.kind = SlotKind::Stub;
        break;
    case targetFlag:
        result.kind = SlotKind::Target;
        break;
    default:
        result.kind = SlotKind::Deleted;
    }
    return result;
}

ByteView row(const PageBytes& page, std::size_t index)
{
    if (!isType(page, PageType::Data))
        throwDamaged("página que não é de registros");
    const Slot found = slot(page, index);
    if (found.kind == SlotKind::Deleted)
        throwDamaged("referência a um registro excluído");
    return bytesOf(page, found);
}

std::size_t freeBytes(const PageBytes& page)
{
    const std::size_t count = slotCount(page);
    const std::size_t start = lowest(page, count);
    const std::size_t used = headerLength + slotLength * count;
    return start > pageSize || start < used ? 0 : start - used;
}

bool hasLiveRow(const PageBytes& page)
{
    const std::size_t count = slotCount(page);
    for (std::size_t i = 0; i < count; ++i) {
        if ((word(page, i) & (stubFlag | targetFlag)) != (stubFlag | targetFlag))
            return true;
    }
    return false;
}

std::optional<std::uint8_t> append(PageBytes& page, ByteView bytes, SlotKind kind)
{
    const std::size_t count = slotCount(page);
    if (count >= mostSlots || freeBytes(page) < bytes.size() + slotLength)
        return std::nullopt;
    const std::size_t offset = lowest(page, count) - bytes.size();
    std::copy(bytes.begin(), bytes.end(), page.begin() + static_cast<std::ptrdiff_t>(offset));
    store16(page.data() + headerLength + slotLength * count, offset | flagsOf(kind));
    store16(page.data() + slotCountAt, count + 1);
    storeFree(page);
    return static_cast<std::uint8_t>(count);
}

bool replace(PageBytes& page, std::size_t index, ByteView bytes, SlotKind kind)
{
    const std::size_t count = slotCount(page);
    const Slot old = slot(page, index);
    if (bytes.size() > old.length + freeBytes(page))
        return false;
    if (bytes.size() == old.length) {
        std::copy(bytes.begin(), bytes.end(), page.begin() + static_cast<std::ptrdiff_t>(old.offset));
        store16(page.data() + headerLength + slotLength * index, old.offset | flagsOf(kind));
        return true;
    }
    // Every slot is read from a copy before any is written, so that a damaged one leaves the page as it was.
    const PageBytes before = page;
    std::vector<Slot> slots(count);
    for (std::size_t i = 0; i < count; ++i)
        slots[i] = slot(before, i);
    std::size_t end = pageSize;
    for (std::size_t i = 0; i < count; ++i) {
        ByteView content = i == index ? bytes : bytesOf(before, slots[i]);
        const SlotKind newKind = i == index ? kind : slots[i].kind;
        if (newKind == SlotKind::Deleted)
            content = {};
        end -= content.size();
        std::copy(content.begin(), content.end(), page.begin() + static_cast<std::ptrdiff_t>(end));
        store16(page.data() + headerLength + slotLength * i, end | flagsOf(newKind));
    }
    storeFree(page);
    return true;
}

void erase(PageBytes& page, std::size_t index)
{
    static_cast<void>(replace(page, index, {}, SlotKind::Deleted));
}

} // namespace accessfile::datapage
