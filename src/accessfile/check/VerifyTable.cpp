#include "accessfile/Error.h"
#include "accessfile/check/Verify.h"
#include "accessfile/format/DataPage.h"
#include "accessfile/format/Keys.h"
#include "accessfile/table/DefaultValues.h"

#include <algorithm>

namespace accessfile {

namespace {

using namespace longvalue;

constexpr std::size_t freeAt = 2;
constexpr std::size_t definitionReserve = 8;
constexpr std::size_t chainHeader = 8;

bool isComputable(const TableDefinition& definition, const PhysicalIndex& index)
{
    return std::all_of(index.columns.begin(), index.columns.end(), [&](const KeyColumn& key) {
        const int position = definition.columnById(key.id);
        if (position < 0)
            return false;
        const ColumnDefinition& column = definition.columns[static_cast<std::size_t>(position)];
        return column.type != ColumnType::Ole && column.type != ColumnType::BigBinary &&
               (column.type != ColumnType::Numeric || key.ascending) && (!column.isText() || column.generalOrder);
    });
}

} // namespace

TableVerifier::TableVerifier(TableSpace& space, VerifyRecord& record, const TableFile& table)
    : m_space(space)
    , m_record(record)
    , m_table(table)
    , m_definition(table.definition())
    , m_name("Tabela '" + table.name() + "'")
    , m_entries(m_definition.physical.size())
    , m_uniqueKeys(m_definition.physical.size())
{
    for (const PhysicalIndex& index : m_definition.physical)
        m_computable.push_back(isComputable(m_definition, index));
}

std::string TableVerifier::at(RowId row) const
{
    return m_name + ", registro " + std::to_string(row.page) + "/" + std::to_string(row.slot);
}

void TableVerifier::run()
{
    checkDefinition();
    m_owned = mapPages(m_definition.ownedMap(), m_name);
    checkFreeMap(m_definition.freeMap(), m_owned, m_name);
    for (std::size_t i = 0; i < m_definition.columns.size(); ++i) {
        const ColumnDefinition& column = m_definition.columns[i];
        if (!column.isLongValue() || column.ownedMap.page == 0)
            continue;
        const std::string owner = m_name + ", coluna '" + column.name + "'";
        m_longColumns[i].owned = mapPages(column.ownedMap, owner);
        if (column.freeMap.page != 0)
            checkFreeMap(column.freeMap, m_longColumns[i].owned, owner);
    }
    checkRows();
    // As a reader meets them: pages that are not there matter where rows are missing.
    m_record.attempt(m_name, [this] {
        for (const auto cursor = m_table.scan(); cursor->next();) {
        }
    });
    checkLongPages();
    checkNumbers();
    checkIndexes();
}

void TableVerifier::checkDefinition()
{
    for (const PageNumber page : m_definition.pages)
        m_record.claim(page, m_name + ", definição");
    std::size_t length = load32(m_space.pager.page(m_table.page())->data() + definition::lengthAt) + definitionReserve;
    for (std::size_t i = 0; i < m_definition.pages.size(); ++i) {
        const std::size_t room = pageSize - (i == 0 ? 0 : chainHeader);
        const std::size_t used = std::min(room, length);
        length -= used;
        if (load16(m_space.pager.page(m_definition.pages[i])->data() + freeAt) != room - used)
            m_record.fault(m_name + ": o espaço livre da definição não confere.");
    }
    if (m_definition.compose().size() != load32(m_space.pager.page(m_table.page())->data() + definition::lengthAt))
        m_record.fault(m_name + ": a definição tem partes que não são dela.");
    if (m_definition.logical.size() > mostLogicalIndexes)
        m_record.fault(m_name + ": há índices demais.");
}

std::set<PageNumber> TableVerifier::mapPages(RowId map, const std::string& owner)
{
    std::set<PageNumber> pages;
    m_record.attempt(owner, [&] {
        m_record.claimMap(map, owner);
        const UsageMap usage(m_space.pager, map);
        for (const PageNumber page : usage.bitmapPages())
            m_record.claim(page, owner + ", mapa");
        for (const PageNumber page : usage.allPages()) {
            if (page >= m_space.pager.pageCount()) {
                m_record.note(owner + ": o mapa cita a página " + std::to_string(page) + ", além do fim.");
                continue;
            }
            m_record.claim(page, owner);
            pages.insert(page);
        }
    });
    return pages;
}

void TableVerifier::checkFreeMap(RowId map, const std::set<PageNumber>& owned, const std::string& owner)
{
    m_record.attempt(owner, [&] {
        m_record.claimMap(map, owner + ", espaço livre");
        const UsageMap usage(m_space.pager, map);
        for (const PageNumber page : usage.bitmapPages())
            m_record.claim(page, owner + ", mapa de espaço livre");
        for (const PageNumber page : usage.allPages()) {
            if (page >= m_space.pager.pageCount())
                m_record.note(owner + ": o mapa cita a página " + std::to_string(page) + ", além do fim.");
            else if (!owned.contains(page))
                m_record.fault(owner + ": a página " + std::to_string(page) + " tem espaço livre e outro dono.");
        }
    });
}

void TableVerifier::checkRows()
{
    for (const PageNumber page : m_owned)
        m_record.attempt(m_name + ", página " + std::to_string(page), [&] { checkDataPage(page); });
    if (m_stubTargets != m_targets)
        m_record.fault(m_name + ": registros deslocados e os avisos deles não se correspondem.");
    if (load32(m_space.pager.page(m_table.page())->data() + definition::rowCountAt) != m_rows)
        m_record.note(m_name + ": a contagem de registros não confere.");
}

void TableVerifier::checkDataPage(PageNumber number)
{
    const PagePointer page = m_space.pager.page(number);
    if (isType(*page, PageType::None) || (isType(*page, PageType::EmptiedData) && !datapage::hasLiveRow(*page))) {
        m_record.note(m_name + ": a página " + std::to_string(number) + " do mapa está vazia.");
        return;
    }
    if (!isType(*page, PageType::Data) || datapage::owner(*page) != m_table.page()) {
        m_record.fault(m_name + ": a página " + std::to_string(number) + " não é de registros dela.");
        return;
    }
    const std::size_t count = datapage::slotCount(*page);
    if (count > datapage::mostSlots)
        m_record.fault(m_name + ": a página " + std::to_string(number) + " tem registros demais.");
    if (load16(page->data() + freeAt) != datapage::freeBytes(*page))
        m_record.fault(m_name + ": o espaço livre da página " + std::to_string(number) + " não confere.");
    for (std::size_t i = 0; i < count && i <= datapage::mostSlots; ++i) {
        const RowId row{number, static_cast<std::uint8_t>(i)};
        const datapage::Slot slot = datapage::slot(*page, i);
        if (slot.kind == datapage::SlotKind::Target)
            m_targets.insert(row);
        if (slot.kind == datapage::SlotKind::Live || slot.kind == datapage::SlotKind::Stub) {
            ++m_rows;
            m_record.attempt(at(row), [&] { checkRow(page, row); });
        }
    }
}

void TableVerifier::checkRow(PagePointer page, RowId row)
{
    RowReader reader(m_space, m_definition);
    reader.open(std::move(page), row);
    if (reader.place() != row) {
        if (!m_owned.contains(reader.place().page))
            m_record.fault(at(row) + ": foi deslocado para uma página que não é da tabela.");
        if (!m_stubTargets.insert(reader.place()).second)
            m_record.fault(at(row) + ": o lugar para onde foi deslocado é de outro registro.");
    }
    if (reader.length() > longestRow)
        m_record.fault(at(row) + ": é grande demais.");
    for (std::size_t i = 0; i < m_definition.columns.size(); ++i) {
        const ColumnDefinition& column = m_definition.columns[i];
        if (column.type == ColumnType::Bool)
            continue;
        const auto stored = reader.layout().cell(column);
        if (!stored)
            continue;
        if (column.isLongValue()) {
            checkLongValue(i, *stored, row);
            continue;
        }
        const Value value = decodeCell(column, *stored);
        const auto* number = std::get_if<std::int32_t>(&value);
        if (number != nullptr && column.autonumber && !isRandomNumber(m_table.columns()[i]))
            m_highestNumber = std::max<std::int64_t>(m_highestNumber, *number);
    }
    for (std::size_t i = 0; i < m_definition.physical.size(); ++i) {
        if (!m_computable[i])
            continue;
        const PhysicalIndex& index = m_definition.physical[i];
        IndexKey key;
        try {
            key = makeKey(m_definition, index,
                          [&](std::size_t column) { return reader.value(static_cast<int>(column)); });
        } catch (const Error& error) {
            if (error.kind() == ErrorKind::Damaged)
                throw;
            // A text outside the order, or a key that is too long: only Access can tell whether the index is right.
            m_computable[i] = false;
            continue;
        }
        if (index.required && key.anyNull)
            m_record.fault(at(row) + ": falta um valor que o índice exige.");
        if (!index.skipNulls || !key.allNull)
            m_entries[i].push_back(makeEntry(key.bytes, row));
        if (index.unique && !key.anyNull)
            m_uniqueKeys[i].push_back(key.bytes);
    }
}

void TableVerifier::checkLongValue(std::size_t column, ByteView descriptor, RowId row)
{
    if (descriptor.empty())
        return;
    if (descriptor.size() < descriptorLength)
        throwDamaged("texto longo");
    const std::uint32_t word = load32(descriptor.data());
    std::size_t length = word & lengthMask;
    if ((word & inlineKind) != 0) {
        if (length > descriptor.size() - descriptorLength)
            m_record.fault(at(row) + ": um texto longo não cabe no registro.");
        return;
    }
    LongColumn& pages = m_longColumns[column];
    const auto take = [&](RowId place) {
        if (!pages.owned.contains(place.page))
            throwDamaged("texto longo em uma página que não é da coluna");
        if (!pages.used.insert(place).second)
            throwDamaged("texto longo que é de dois registros");
        const PagePointer page = m_space.pager.page(place.page);
        return std::pair(page, datapage::row(*page, place.slot));
    };
    RowId place = loadRowId(descriptor.data() + longvalue::rowAt);
    if ((word & rowKind) != 0) {
        if (take(place).second.size() != length)
            m_record.fault(at(row) + ": um texto longo tem outro tamanho.");
        return;
    }
    for (bool first = true; place.page != 0; first = false) {
        const auto [page, bytes] = take(place);
        if (load32(page->data() + datapage::stampAt) != (first ? load32(descriptor.data() + stampAt) : 0))
            m_record.fault(at(row) + ": o selo de um texto longo não confere.");
        if (bytes.size() <= 4 || bytes.size() - 4 > length)
            throwDamaged("texto longo de outro tamanho");
        length -= bytes.size() - 4;
        place = loadRowId(bytes.data());
    }
    if (length != 0)
        m_record.fault(at(row) + ": um texto longo está incompleto.");
}

void TableVerifier::checkLongPages()
{
    for (const auto& [position, column] : m_longColumns) {
        const std::string name = m_name + ", coluna '" + m_definition.columns[position].name + "'";
        for (const PageNumber number : column.owned) {
            m_record.attempt(name, [&, &used = column.used] {
                const PagePointer page = m_space.pager.page(number);
                if (!isType(*page, PageType::Data) || datapage::owner(*page) != datapage::longValueOwner)
                    throwDamaged("a página " + std::to_string(number) + " não é de textos longos");
                if (load16(page->data() + freeAt) != datapage::freeBytes(*page))
                    m_record.fault(name + ": o espaço livre da página " + std::to_string(number) + " não confere.");
                for (std::size_t i = 0; i < datapage::slotCount(*page); ++i) {
                    const bool live = datapage::slot(*page, i).kind != datapage::SlotKind::Deleted;
                    if (live && !used.contains({number, static_cast<std::uint8_t>(i)}))
                        m_record.fault(name + ": há um texto longo sem dono na página " + std::to_string(number) + ".");
                }
            });
        }
    }
}

void TableVerifier::checkNumbers() const
{
    const PagePointer head = m_space.pager.page(m_table.page());
    const auto last = static_cast<std::int32_t>(load32(head->data() + definition::lastNumberAt));
    const auto increment = static_cast<std::int32_t>(load32(head->data() + definition::incrementAt));
    // Past the highest number the count goes on at the lowest.
    const bool wrapped = last < 0 && m_highestNumber > 0;
    if (increment > 0 && m_highestNumber > last && !wrapped)
        m_record.fault(m_name + ": o último número automático é " + std::to_string(last) + ", e há " +
                       std::to_string(m_highestNumber) + ".");
}

void TableVerifier::checkIndexes()
{
    for (std::size_t i = 0; i < m_definition.physical.size(); ++i) {
        std::string name = m_name + ", índice";
        for (const LogicalIndex& logical : m_definition.logical) {
            if (logical.physical == i) {
                name += " '" + logical.name + "'";
                break;
            }
        }
        const PhysicalIndex& index = m_definition.physical[i];
        const std::set<PageNumber> owned = mapPages(index.ownedMap, name);
        std::sort(m_entries[i].begin(), m_entries[i].end(),
                  [](const Bytes& left, const Bytes& right) { return compareEntries(left, right) < 0; });
        m_record.attempt(name, [&] {
            IndexVerifier(m_space, m_record, m_table.page(), index, name)
                .run(owned, m_computable[i] ? &m_entries[i] : nullptr);
        });
        std::vector<Bytes>& keys = m_uniqueKeys[i];
        std::sort(keys.begin(), keys.end());
        if (std::adjacent_find(keys.begin(), keys.end()) != keys.end())
            m_record.fault(name + ": a chave única está repetida.");
    }
}

} // namespace accessfile
