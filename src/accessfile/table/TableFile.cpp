#include "accessfile/table/TableFile.h"

#include "accessfile/Error.h"
#include "accessfile/format/DataPage.h"
#include "accessfile/format/TextCodec.h"
#include "accessfile/table/DefinitionPages.h"

#include <algorithm>

namespace accessfile {

namespace {

class ScanCursor : public Cursor
{
public:
    ScanCursor(TableSpace& space, const TableDefinition& definition, PageNumber owner)
        : m_space(space)
        , m_owner(owner)
        , m_head(definition.pages.front())
        , m_pages(UsageMap(space.pager, definition.ownedMap()).allPages())
        , m_reader(space, definition)
    {}
    bool next() override
    {
        while (true) {
            while (m_slot < m_slots) {
                const std::size_t index = m_slot++;
                const datapage::SlotKind kind = datapage::slot(*m_page, index).kind;
                if (kind == datapage::SlotKind::Live || kind == datapage::SlotKind::Stub) {
                    ++m_rows;
                    m_reader.open(m_page, {m_pages[m_at - 1], static_cast<std::uint8_t>(index)});
                    return true;
                }
            }
            if (m_at >= m_pages.size()) {
                checkMissing();
                return false;
            }
            open(m_pages[m_at++]);
        }
    }
    [[nodiscard]] RowId rowId() const override { return m_reader.rowId(); }
    [[nodiscard]] Value value(int column) const override { return m_reader.value(column); }
    bool appendText(int column, std::string& out) const override { return m_reader.appendText(column, out); }

private:
    void open(PageNumber number)
    {
        m_slot = 0;
        m_slots = 0;
        const bool exists = number < m_space.pager.pageCount();
        if (exists)
            m_page = m_space.pager.page(number);
        if (exists && isType(*m_page, PageType::Data) && datapage::owner(*m_page) == m_owner)
            m_slots = std::min(datapage::slotCount(*m_page), datapage::mostSlots + 1);
        else if (!exists || isType(*m_page, PageType::None))
            m_missing = m_missing == 0 ? number : m_missing;
        else if (!isType(*m_page, PageType::EmptiedData) || datapage::hasLiveRow(*m_page))
            throwDamaged("a página " + std::to_string(number) + " não é da tabela cujo mapa a cita");
    }
    /// A map may name pages that were never written. Where rows are missing too, they stood there.
    void checkMissing() const
    {
        if (m_missing != 0 && m_rows < load32(m_space.pager.page(m_head)->data() + definition::rowCountAt))
            throwDamaged("faltam registros da tabela, que estavam na página " + std::to_string(m_missing));
    }
    TableSpace& m_space;
    PageNumber m_owner;
    PageNumber m_head;
    std::vector<PageNumber> m_pages;
    PageNumber m_missing = 0; ///< The first one that is not there.
    std::uint32_t m_rows = 0;
    RowReader m_reader;
    PagePointer m_page;
    std::size_t m_at = 0;
    std::size_t m_slot = 0;
    std::size_t m_slots = 0;
};

} // namespace

void RowReader::open(PagePointer home, RowId row)
{
    m_row = row;
    m_place = row;
    m_page = std::move(home);
    datapage::Slot slot = datapage::slot(*m_page, row.slot);
    if (slot.kind == datapage::SlotKind::Stub) {
        if (slot.length < datapage::pointerLength)
            throwDamaged("registro deslocado");
        m_pieces.begin(row, -1);
        m_place = loadRowId(m_page->data() + slot.offset);
        m_pieces.claim(m_place);
        m_page = m_space.pager.page(m_place.page);
        if (!isType(*m_page, PageType::Data))
            throwDamaged("registro deslocado");
        slot = datapage::slot(*m_page, m_place.slot);
        if (slot.kind != datapage::SlotKind::Target)
            throwDamaged("registro deslocado");
    } else if (slot.kind != datapage::SlotKind::Live) {
        throwDamaged("referência a um registro excluído");
    }
    m_length = slot.length;
    m_layout = RowLayout(datapage::bytesOf(*m_page, slot), m_definition.variableSlots() > 0);
}

Value RowReader::value(int column) const
{
    const ColumnDefinition& definition = m_definition.columns.at(static_cast<std::size_t>(column));
    if (definition.type == ColumnType::Bool)
        return m_layout.present(definition.id);
    const auto stored = m_layout.cell(definition);
    if (!stored)
        return Null{};
    if (definition.isLongValue()) {
        m_pieces.begin(m_row, column);
        return m_space.longValues.value(definition, *stored, m_pieces);
    }
    return decodeCell(definition, *stored);
}

bool RowReader::appendText(int column, std::string& out) const
{
    const ColumnDefinition& definition = m_definition.columns.at(static_cast<std::size_t>(column));
    if (!definition.isText())
        throw Error(ErrorKind::TypeMismatch, "A coluna '" + definition.name + "' não é de texto.");
    const auto stored = m_layout.cell(definition);
    if (!stored)
        return false;
    if (definition.type == ColumnType::Memo) {
        m_pieces.begin(m_row, column);
        appendStoredText(m_space.longValues.read(*stored, m_pieces), out);
    } else if (definition.fixed)
        appendUtf16(*stored, out);
    else
        appendStoredText(*stored, out);
    return true;
}

TableFile::TableFile(TableSpace& space, PageNumber page, std::string name, Bytes properties)
    : m_space(space)
    , m_page(page)
    , m_name(std::move(name))
    , m_definition(readDefinition(space.pager, page))
    , m_properties(properties)
{
    describe();
}

void TableFile::reload(Bytes properties)
{
    m_definition = readDefinition(m_space.pager, m_page);
    m_properties = Properties(properties);
    describe();
}

void TableFile::describe()
{
    m_columns.clear();
    m_indexes.clear();
    m_physicalOf.clear();
    for (const ColumnDefinition& stored : m_definition.columns) {
        Column column;
        column.name = stored.name;
        column.type = stored.type;
        if (stored.type == ColumnType::Text)
            column.length = stored.length / 2;
        else if (stored.type == ColumnType::Binary || stored.type == ColumnType::BigBinary)
            column.length = stored.length;
        if (stored.type == ColumnType::Numeric) {
            column.precision = stored.precision;
            column.scale = stored.scale;
        }
        column.autonumber = stored.autonumber || stored.autoGuid;
        column.required = m_properties.flag(stored.name, "Required").value_or(false);
        column.allowZeroLength = m_properties.flag(stored.name, "AllowZeroLength").value_or(true);
        column.defaultExpression = m_properties.text(stored.name, "DefaultValue");
        if (column.defaultExpression && column.defaultExpression->empty())
            column.defaultExpression.reset();
        m_columns.push_back(std::move(column));
    }
    for (const LogicalIndex& stored : m_definition.logical) {
        if (stored.kind > 1)
            continue;
        const PhysicalIndex& physical = m_definition.physical[stored.physical];
        Index index;
        index.name = stored.name;
        index.primary = stored.kind == 1;
        index.unique = physical.unique;
        index.required = physical.required;
        index.ignoreNulls = physical.skipNulls;
        for (const KeyColumn& key : physical.columns) {
            const int column = m_definition.columnById(key.id);
            if (column < 0)
                throwDamaged("índice '" + stored.name + "'");
            index.columns.push_back({column, key.ascending});
        }
        m_indexes.push_back(std::move(index));
        m_physicalOf.push_back(stored.physical);
    }
    m_refusal = refusal();
}

std::string TableFile::refusal() const
{
    const std::string table = "A tabela '" + m_name + "' só pode ser lida: ";
    if (m_definition.isSystem() && !m_systemAllowed)
        return table + "é uma tabela do sistema.";
    if (!m_properties.readable())
        return table + "as propriedades dela não são compreendidas.";
    if (m_properties.anyText("ValidationRule"))
        return table + "tem regra de validação, que só o Access verifica.";
    for (const LogicalIndex& index : m_definition.logical) {
        if (index.kind == 2 || index.relation != 0)
            return table + "participa de um relacionamento imposto pelo Access.";
    }
    for (const ColumnDefinition& column : m_definition.columns) {
        if (sameName(column.name, "s_Generation") || sameName(column.name, "s_Lineage"))
            return table + "é uma réplica.";
        switch (column.type) {
        case ColumnType::Bool:
        case ColumnType::Byte:
        case ColumnType::Int:
        case ColumnType::Long:
        case ColumnType::Money:
        case ColumnType::Float:
        case ColumnType::Double:
        case ColumnType::Date:
        case ColumnType::Binary:
        case ColumnType::Text:
        case ColumnType::Ole:
        case ColumnType::Memo:
        case ColumnType::Guid:
        case ColumnType::Numeric:
        case ColumnType::BigBinary:
            break;
        default:
            return table + "a coluna '" + column.name + "' é de um tipo que não é atendido.";
        }
    }
    for (const PhysicalIndex& index : m_definition.physical) {
        for (const KeyColumn& key : index.columns) {
            const int position = m_definition.columnById(key.id);
            if (position < 0)
                return table + "um índice dela não é compreendido.";
            const ColumnDefinition& column = m_definition.columns[static_cast<std::size_t>(position)];
            if (column.isText() && !column.generalOrder)
                return table + "a coluna '" + column.name + "' usa outra ordem de classificação.";
            if ((column.type == ColumnType::Numeric && !key.ascending) || column.type == ColumnType::Ole ||
                column.type == ColumnType::BigBinary)
                return table + "o índice da coluna '" + column.name + "' não é atendido.";
        }
        if (index.columns.empty())
            return table + "um índice dela não é compreendido.";
    }
    return {};
}

void TableFile::checkWritable() const
{
    if (m_space.pager.isReadOnly())
        throw Error(ErrorKind::ReadOnly, m_space.pager.readOnlyReason());
    const std::string& reason = m_refusal;
    if (!reason.empty())
        throw Error(ErrorKind::ReadOnly, reason);
}

int TableFile::columnIndex(std::string_view name) const
{
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (sameName(m_columns[i].name, name))
            return static_cast<int>(i);
    }
    return -1;
}

std::unique_ptr<Cursor> TableFile::scan() const
{
    return std::make_unique<ScanCursor>(m_space, m_definition, m_page);
}

} // namespace accessfile
