#include "accessfile/Error.h"
#include "accessfile/format/DataPage.h"
#include "accessfile/format/Keys.h"
#include "accessfile/table/DefaultValues.h"
#include "accessfile/table/IndexTree.h"
#include "accessfile/table/TableFile.h"

#include <algorithm>

namespace accessfile {

namespace {

void addToCounter(Pager& pager, PageNumber page, std::size_t at, std::int32_t change)
{
    PageBytes& bytes = pager.modify(page);
    store32(bytes.data() + at, load32(bytes.data() + at) + static_cast<std::uint32_t>(change));
}

} // namespace

std::optional<IndexKey> TableFile::rowKey(std::size_t index, const std::function<Value(std::size_t)>& valueOf) const
{
    const PhysicalIndex& physical = m_definition.physical[index];
    IndexKey key = makeKey(m_definition, physical, valueOf);
    if (physical.required && key.anyNull)
        throw Error(ErrorKind::NullNotAllowed, "A chave primária ou o índice não pode conter um valor Nulo.");
    if (physical.skipNulls && key.allNull)
        return std::nullopt;
    return key;
}

TableFile::StoredKey TableFile::storedKey(std::size_t index, const RowReader& reader) const
{
    try {
        return {rowKey(index, [&](std::size_t i) { return reader.value(static_cast<int>(i)); }), true};
    } catch (const Error& error) {
        if (error.kind() == ErrorKind::Damaged || error.kind() == ErrorKind::IoError)
            throw;
        return {std::nullopt, false};
    }
}

void TableFile::checkUnique(const std::vector<std::optional<IndexKey>>& keys, std::optional<RowId> except) const
{
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const PhysicalIndex& index = m_definition.physical[i];
        if (!index.unique || !keys[i] || keys[i]->anyNull)
            continue;
        if (IndexTree(m_space, m_page, index).rowWithKey(keys[i]->bytes, except))
            throwDuplicateKey();
    }
}

void TableFile::throwDuplicateKey() const
{
    throw Error(ErrorKind::DuplicateKey, "As alterações não foram feitas porque criariam valores duplicados no índice "
                                         "ou na chave primária da tabela '" +
                                             m_name + "'.");
}

void TableFile::checkValue(std::size_t column, const Value& value) const
{
    const Column& declared = m_columns[column];
    if (isNull(value) && declared.required && declared.type != ColumnType::Bool)
        throw Error(ErrorKind::NullNotAllowed, "É preciso informar um valor no campo '" + declared.name + "'.");
    if (!declared.allowZeroLength) {
        if (const auto* text = std::get_if<std::string>(&value); text != nullptr && text->empty())
            throw Error(ErrorKind::NullNotAllowed, "O campo '" + declared.name + "' não pode ser um texto vazio.");
    }
}

void TableFile::indexInsert(std::size_t index, const IndexKey& key, RowId row)
{
    if (IndexTree(m_space, m_page, m_definition.physical[index]).insert(key.bytes, row)) {
        const std::size_t at = definition::headLength + definition::counterLength * index + definition::distinctAt;
        if (at + 4 <= pageSize)
            addToCounter(m_space.pager, m_page, at, 1);
    }
}

void TableFile::indexErase(std::size_t index, const StoredKey& stored, RowId row)
{
    IndexTree tree(m_space, m_page, m_definition.physical[index]);
    if (stored.key)
        tree.erase(stored.key->bytes, row);
    else if (!stored.computable)
        tree.eraseRow(row);
}

RowId TableFile::placeRow(ByteView row, bool asTarget)
{
    const auto kind = asTarget ? datapage::SlotKind::Target : datapage::SlotKind::Live;
    UsageMap owned(m_space.pager, m_definition.ownedMap());
    UsageMap freePages(m_space.pager, m_definition.freeMap());
    while (const auto candidate = freePages.highest()) {
        const PagePointer page = m_space.pager.page(*candidate);
        if (isType(*page, PageType::Data) && datapage::owner(*page) == m_page &&
            datapage::freeBytes(*page) >= row.size() + datapage::slotLength && owned.contains(*candidate)) {
            if (const auto slot = datapage::append(m_space.pager.modify(*candidate), row, kind))
                return {*candidate, *slot};
        }
        freePages.remove(*candidate);
    }
    const PageNumber number = m_space.allocator.allocate();
    PageBytes& page = m_space.pager.modify(number);
    datapage::initialise(page, m_page);
    const auto slot = datapage::append(page, row, kind);
    owned.add(number, m_space.allocator);
    freePages.add(number, m_space.allocator);
    return {number, *slot};
}

void TableFile::removeTarget(RowId place)
{
    datapage::erase(m_space.pager.modify(place.page), place.slot);
    markRoom(place.page);
}

void TableFile::markRoom(PageNumber page)
{
    UsageMap freePages(m_space.pager, m_definition.freeMap());
    if (!freePages.contains(page) && datapage::slotCount(*m_space.pager.page(page)) < datapage::mostSlots)
        freePages.add(page, m_space.allocator);
}

RowReader TableFile::openRow(RowId row) const
{
    const PagePointer page = m_space.pager.page(row.page);
    if (!isType(*page, PageType::Data) || datapage::owner(*page) != m_page)
        throwDamaged("registro em uma página de outra tabela");
    RowReader reader(m_space, m_definition);
    reader.open(page, row);
    return reader;
}

RowId TableFile::insert(std::span<const std::optional<Value>> values)
{
    checkWritable();
    if (values.size() != m_columns.size())
        throw Error(ErrorKind::TypeMismatch, "A quantidade de valores não é a das colunas da tabela.");
    const std::uint8_t* head = m_space.pager.page(m_page)->data();
    auto lastNumber = static_cast<std::int32_t>(load32(head + definition::lastNumberAt));
    const auto increment = static_cast<std::int32_t>(load32(head + definition::incrementAt));
    bool numbered = false;

    std::vector<Value> row(values.size());
    std::vector<std::optional<Bytes>> cells(values.size());
    std::vector<std::optional<LongValues::Prepared>> prepared(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const ColumnDefinition& column = m_definition.columns[i];
        Value& value = row[i];
        if (values[i] && !(isNull(*values[i]) && (column.autonumber || column.autoGuid))) {
            value = *values[i];
            if (const auto* number = std::get_if<std::int32_t>(&value); number != nullptr && column.autonumber) {
                lastNumber = increment < 0 ? std::min(lastNumber, *number) : std::max(lastNumber, *number);
                numbered = true;
            }
        } else if (column.autoGuid) {
            value = randomGuid();
        } else if (column.autonumber && isRandomNumber(m_columns[i])) {
            value = randomNumber();
        } else if (column.autonumber) {
            const std::int32_t step = increment == 0 ? 1 : increment;
            lastNumber =
                static_cast<std::int32_t>(static_cast<std::uint32_t>(lastNumber) + static_cast<std::uint32_t>(step));
            value = lastNumber;
            numbered = true;
        } else if (m_columns[i].defaultExpression) {
            const std::string& expression = *m_columns[i].defaultExpression;
            value = m_space.evaluator ? m_space.evaluator(m_columns[i], expression)
                                      : literalDefault(m_columns[i], expression);
        }
        if (column.type == ColumnType::Bool && isNull(value))
            value = false;
        checkValue(i, value);
        encodeInto(i, value, cells[i], prepared[i]);
    }
    static_cast<void>(encodeRow(m_definition, cells));
    std::vector<std::optional<IndexKey>> keys;
    for (std::size_t i = 0; i < m_definition.physical.size(); ++i)
        keys.push_back(rowKey(i, [&](std::size_t column) { return row[column]; }));
    checkUnique(keys, std::nullopt);

    ChangeGuard change(m_space);
    change.start();
    for (std::size_t i = 0; i < prepared.size(); ++i) {
        if (prepared[i])
            cells[i] = m_space.longValues.write(m_definition.columns[i], *prepared[i]);
    }
    const RowId id = placeRow(encodeRow(m_definition, cells), false);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (keys[i])
            indexInsert(i, *keys[i], id);
    }
    addToCounter(m_space.pager, m_page, definition::rowCountAt, 1);
    if (numbered)
        store(m_space.pager.modify(m_page).data() + definition::lastNumberAt, lastNumber);
    change.finish();
    return id;
}

void TableFile::encodeInto(std::size_t index, const Value& value, std::optional<Bytes>& cell,
                           std::optional<LongValues::Prepared>& prepared) const
{
    const ColumnDefinition& column = m_definition.columns[index];
    cell.reset();
    prepared.reset();
    if (column.type == ColumnType::Bool) {
        const bool* flag = std::get_if<bool>(&value);
        if (flag == nullptr)
            throw Error(ErrorKind::TypeMismatch, "O valor não é do tipo da coluna '" + column.name + "'.");
        if (*flag)
            cell.emplace();
    } else if (!isNull(value)) {
        if (column.isLongValue()) {
            prepared = LongValues::prepare(column, value);
            cell = prepared->placeholder();
        } else {
            cell = encodeCell(column, value);
        }
    }
}

void TableFile::update(RowId row, std::span<const std::pair<int, Value>> changes)
{
    checkWritable();
    const RowReader reader = openRow(row);
    const std::size_t count = m_columns.size();
    std::vector<std::optional<Bytes>> cells(count);
    std::vector<std::optional<Bytes>> oldLong(count);
    std::vector<std::optional<LongValues::Prepared>> prepared(count);
    std::vector<const Value*> changed(count, nullptr);
    for (const auto& [column, value] : changes) {
        if (column < 0 || static_cast<std::size_t>(column) >= count)
            throw Error(ErrorKind::MissingColumn, "Coluna que não existe na tabela '" + m_name + "'.");
        changed[static_cast<std::size_t>(column)] = &value;
    }
    static const Value falseValue = false;
    for (std::size_t i = 0; i < count; ++i) {
        const ColumnDefinition& column = m_definition.columns[i];
        if (column.type == ColumnType::Bool && changed[i] != nullptr && isNull(*changed[i]))
            changed[i] = &falseValue;
        // A long value that stays the same keeps its pages.
        if (changed[i] != nullptr && column.isLongValue() && reader.value(static_cast<int>(i)) == *changed[i])
            changed[i] = nullptr;
        if (changed[i] != nullptr) {
            checkValue(i, *changed[i]);
            encodeInto(i, *changed[i], cells[i], prepared[i]);
        } else if (column.type == ColumnType::Bool) {
            if (reader.layout().present(column.id))
                cells[i].emplace();
            continue;
        }
        const auto stored = column.type == ColumnType::Bool ? std::nullopt : reader.layout().cell(column);
        if (!stored)
            continue;
        if (changed[i] == nullptr)
            cells[i].emplace(stored->begin(), stored->end());
        else if (column.isLongValue())
            oldLong[i].emplace(stored->begin(), stored->end());
    }
    static_cast<void>(encodeRow(m_definition, cells));
    // An index none of whose columns changes keeps its entry, even one that could not be made here.
    std::vector<std::optional<StoredKey>> oldKeys;
    std::vector<std::optional<IndexKey>> newKeys;
    for (std::size_t i = 0; i < m_definition.physical.size(); ++i) {
        const std::vector<KeyColumn>& parts = m_definition.physical[i].columns;
        const bool touched = std::any_of(parts.begin(), parts.end(), [&](const KeyColumn& part) {
            return changed[static_cast<std::size_t>(m_definition.columnById(part.id))] != nullptr;
        });
        oldKeys.push_back(touched ? std::optional(storedKey(i, reader)) : std::nullopt);
        newKeys.push_back(touched ? rowKey(i,
                                           [&](std::size_t column) {
                                               return changed[column] != nullptr
                                                          ? *changed[column]
                                                          : reader.value(static_cast<int>(column));
                                           })
                                  : std::nullopt);
    }
    checkUnique(newKeys, row);

    ChangeGuard change(m_space);
    change.start();
    for (std::size_t i = 0; i < count; ++i) {
        if (oldLong[i])
            m_space.longValues.free(m_definition.columns[i], *oldLong[i]);
        if (prepared[i])
            cells[i] = m_space.longValues.write(m_definition.columns[i], *prepared[i]);
    }
    storeRow(row, reader.place(), encodeRow(m_definition, cells));
    for (std::size_t i = 0; i < newKeys.size(); ++i) {
        if (!oldKeys[i])
            continue;
        const std::optional<IndexKey>& old = oldKeys[i]->key;
        if (oldKeys[i]->computable && old.has_value() == newKeys[i].has_value() &&
            (!old || old->bytes == newKeys[i]->bytes))
            continue;
        indexErase(i, *oldKeys[i], row);
        if (newKeys[i])
            indexInsert(i, *newKeys[i], row);
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (!m_definition.columns[i].autonumber || changed[i] == nullptr)
            continue;
        const auto* number = std::get_if<std::int32_t>(changed[i]);
        PageBytes& head = m_space.pager.modify(m_page);
        const auto last = static_cast<std::int32_t>(load32(head.data() + definition::lastNumberAt));
        if (number != nullptr && *number > last && !isRandomNumber(m_columns[i]))
            store(head.data() + definition::lastNumberAt, *number);
    }
    change.finish();
}

void TableFile::storeRow(RowId row, RowId place, const Bytes& bytes)
{
    Pager& pager = m_space.pager;
    // The row's own page comes first, so that a row that shrinks again comes home.
    if (datapage::replace(pager.modify(row.page), row.slot, bytes, datapage::SlotKind::Live)) {
        if (place != row)
            removeTarget(place);
        return;
    }
    if (place != row && datapage::replace(pager.modify(place.page), place.slot, bytes, datapage::SlotKind::Target))
        return;
    if (place != row)
        removeTarget(place);
    // Room is made before the new place is looked for: a stub never points at its own page's old bytes.
    Bytes stub(datapage::pointerLength, 0);
    if (!datapage::replace(pager.modify(row.page), row.slot, stub, datapage::SlotKind::Stub))
        throw Error(ErrorKind::TooLong, "A página do registro não tem espaço para deslocá-lo.");
    const RowId target = placeRow(bytes, true);
    storeRowId(stub.data(), target);
    static_cast<void>(datapage::replace(pager.modify(row.page), row.slot, stub, datapage::SlotKind::Stub));
}

void TableFile::erase(RowId row)
{
    checkWritable();
    const RowReader reader = openRow(row);
    std::vector<StoredKey> keys;
    for (std::size_t i = 0; i < m_definition.physical.size(); ++i)
        keys.push_back(storedKey(i, reader));

    ChangeGuard change(m_space);
    change.start();
    for (const ColumnDefinition& column : m_definition.columns) {
        if (!column.isLongValue())
            continue;
        if (const auto stored = reader.layout().cell(column))
            m_space.longValues.free(column, *stored);
    }
    if (reader.place() != row)
        removeTarget(reader.place());
    datapage::erase(m_space.pager.modify(row.page), row.slot);
    markRoom(row.page);
    for (std::size_t i = 0; i < keys.size(); ++i)
        indexErase(i, keys[i], row);
    addToCounter(m_space.pager, m_page, definition::rowCountAt, -1);
    change.finish();
}

} // namespace accessfile
