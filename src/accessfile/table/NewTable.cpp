#include "accessfile/table/NewTable.h"

#include "accessfile/Error.h"
#include "accessfile/format/IndexPage.h"
#include "accessfile/format/TextCodec.h"

#include <algorithm>

namespace accessfile {

void checkNewColumn(const TableDefinition& definition, const Column& column)
{
    for (const ColumnDefinition& each : definition.columns) {
        if (sameName(each.name, column.name))
            throw Error(ErrorKind::Duplicate, "A coluna '" + column.name + "' já existe na tabela.");
        if (column.autonumber && column.type == ColumnType::Long && each.autonumber)
            throw Error(ErrorKind::Duplicate, "A tabela já tem uma coluna numerada automaticamente.");
    }
}

void declareIndex(TableDefinition& definition, const Index& index)
{
    std::vector<KeyColumn> keys;
    for (const IndexColumn& part : index.columns) {
        if (part.column < 0 || static_cast<std::size_t>(part.column) >= definition.columns.size())
            throw Error(ErrorKind::MissingColumn, "O índice '" + index.name + "' cita uma coluna que não existe.");
        const ColumnDefinition& column = definition.columns[static_cast<std::size_t>(part.column)];
        const bool computable = column.type != ColumnType::Ole && column.type != ColumnType::BigBinary &&
                                (column.type != ColumnType::Numeric || part.ascending) &&
                                (!column.isText() || column.generalOrder);
        if (!computable)
            throw Error(ErrorKind::TypeMismatch, "A coluna '" + column.name + "' não pode ser indexada assim.");
        if (std::any_of(keys.begin(), keys.end(), [&](const KeyColumn& key) { return key.id == column.id; }))
            throw Error(ErrorKind::Duplicate,
                        "A coluna '" + column.name + "' está duas vezes no índice '" + index.name + "'.");
        keys.push_back({column.id, part.ascending});
    }
    for (const LogicalIndex& each : definition.logical) {
        if (sameName(each.name, index.name))
            throw Error(ErrorKind::Duplicate, "O índice '" + index.name + "' já existe na tabela.");
        if (index.primary && each.kind == 1)
            throw Error(ErrorKind::Duplicate, "A tabela já tem uma chave primária.");
    }
    definition.addIndex(index, keys, {}, 0);
}

TableDefinition declareTable(std::span<const Column> columns, std::span<const Index> indexes, bool system)
{
    if (columns.empty())
        throw Error(ErrorKind::Syntax, "Uma tabela precisa de pelo menos uma coluna.");
    TableDefinition definition = TableDefinition::makeNew(system);
    for (const Column& column : columns) {
        checkNewColumn(definition, column);
        definition.addColumn(column, {}, {}, 0);
    }
    for (const Index& index : indexes)
        declareIndex(definition, index);
    return definition;
}

void giveMaps(TableSpace& space, ColumnDefinition& column, PageNumber& mapPage)
{
    column.ownedMap = makeUsageMap(space.pager, space.allocator, mapPage);
    column.freeMap = makeUsageMap(space.pager, space.allocator, mapPage);
}

void giveRoot(TableSpace& space, PageNumber owner, PhysicalIndex& index, PageNumber& mapPage)
{
    index.ownedMap = makeUsageMap(space.pager, space.allocator, mapPage);
    index.root = space.allocator.allocate();
    IndexPage empty;
    empty.owner = owner;
    empty.write(space.pager.modify(index.root));
    UsageMap(space.pager, index.ownedMap).add(index.root, space.allocator);
    index.storePlaces();
}

void giveTablePages(TableSpace& space, TableDefinition& definition, PageNumber page, PageNumber& mapPage)
{
    definition.pages = {page};
    const RowId owned = makeUsageMap(space.pager, space.allocator, mapPage);
    const RowId free = makeUsageMap(space.pager, space.allocator, mapPage);
    definition.setMaps(owned, free);
    const auto giveAllMaps = [&] {
        for (ColumnDefinition& column : definition.columns) {
            if (column.isLongValue())
                giveMaps(space, column, mapPage);
        }
    };
    // The catalog's own tables have the maps of their columns before those of their indexes.
    if (definition.isSystem())
        giveAllMaps();
    for (PhysicalIndex& index : definition.physical)
        giveRoot(space, page, index, mapPage);
    if (!definition.isSystem())
        giveAllMaps();
}

} // namespace accessfile
