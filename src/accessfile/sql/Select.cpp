#include "accessfile/sql/Select.h"

#include "accessfile/sql/Binder.h"
#include "accessfile/sql/Evaluator.h"
#include "accessfile/sql/Lexer.h"
#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Operators.h"
#include "accessfile/sql/Planner.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace accessfile::sql {

namespace {

/// Name of a result column that has none, numbered from 1000.
std::string unnamed(int number)
{
    return "Expr" + std::to_string(1000 + number);
}

/// Sum, count and extremes over the rows; Nulls take no part.
class Accumulator
{
public:
    explicit Accumulator(const Expression& call)
        : m_call(&call)
    {}

    void add(Evaluator& evaluator)
    {
        if (m_call->operands.empty()) {
            ++m_count;
            return;
        }
        Value value = evaluator.value(*m_call->operands[0]);
        if (isNull(value))
            return;
        ++m_count;
        switch (m_call->aggregate) {
        case Aggregate::Count:
            break;
        case Aggregate::Sum:
        case Aggregate::Average:
            if (const Money* money = std::get_if<Money>(&value))
                m_value = calculate(Operator::Add, isNull(m_value) ? Value(Money{}) : m_value, *money, noRegional());
            else
                m_sum += toDouble(value);
            break;
        default: {
            const int relation = isNull(m_value) ? 0 : compareValues(value, m_value).value_or(0);
            if (isNull(m_value) || (m_call->aggregate == Aggregate::Minimum ? relation < 0 : relation > 0))
                m_value = std::move(value);
        }
        }
    }

    [[nodiscard]] Value result() const
    {
        switch (m_call->aggregate) {
        case Aggregate::Count:
            if (m_count > std::numeric_limits<std::int32_t>::max())
                throw overflow();
            return static_cast<std::int32_t>(m_count);
        case Aggregate::Sum:
        case Aggregate::Average: {
            if (m_count == 0)
                return Null{};
            const bool average = m_call->aggregate == Aggregate::Average;
            const double divisor = average ? static_cast<double>(m_count) : 1;
            if (m_call->kind == Kind::Money)
                return average ? Value(toMoney(toDouble(m_value) / divisor)) : m_value;
            return m_sum / divisor;
        }
        default:
            return m_value;
        }
    }

private:
    /// Adding Money to Money converts no text.
    static const RegionalConversions& noRegional();

    const Expression* m_call;
    std::int64_t m_count = 0;
    double m_sum = 0;
    Value m_value;
};

const RegionalConversions& Accumulator::noRegional()
{
    class None : public RegionalConversions
    {
        [[nodiscard]] std::optional<double> toNumber(std::string_view /*utf8*/) const override { return std::nullopt; }
        [[nodiscard]] std::optional<double> toDate(std::string_view /*utf8*/) const override { return std::nullopt; }
        [[nodiscard]] std::string numberToText(double /*number*/) const override { return {}; }
        [[nodiscard]] std::string dateToText(double /*serial*/) const override { return {}; }
    };
    static const None none;
    return none;
}

void appendBigEndian(std::uint64_t bits, std::string& key)
{
    for (int shift = 56; shift >= 0; shift -= 8)
        key += static_cast<char>(static_cast<unsigned char>(bits >> static_cast<unsigned>(shift)));
}

/// Bytes whose order is the order of the values: Null first, then the values; all turned round when descending.
void appendSortKey(const Value& value, bool ascending, std::string& key)
{
    const std::size_t begin = key.size();
    constexpr std::uint64_t top = 1ULL << 63U;
    if (isNull(value)) {
        key += '\0';
    } else {
        key += '\1';
        if (const std::string* text = std::get_if<std::string>(&value); text != nullptr || value.index() == 8) {
            // An end mark below every continuation keeps the next column out of this one's order.
            for (const char c : orderingKey(text != nullptr ? *text : guidText(std::get<Guid>(value)))) {
                key += c;
                if (c == '\0')
                    key += '\xFF';
            }
            key.append(2, '\0');
        } else if (const Money* money = std::get_if<Money>(&value)) {
            appendBigEndian(static_cast<std::uint64_t>(money->scaled) ^ top, key);
        } else {
            const double number = toDouble(value) + 0.0; // -0 and 0 are one value.
            const auto bits = std::bit_cast<std::uint64_t>(number);
            appendBigEndian((bits & top) != 0 ? ~bits : bits | top, key);
        }
    }
    if (!ascending) {
        for (std::size_t i = begin; i < key.size(); ++i)
            key[i] = static_cast<char>(~key[i]);
    }
}

/// Rows that wait for their order: keys and cells as bytes, texts unshared, nothing else kept per cell.
class SortBuffer
{
public:
    void addNull() { m_cells += static_cast<char>(Tag::Null); }

    void addText(std::string_view text)
    {
        m_cells += static_cast<char>(Tag::Text);
        addBytes(text);
    }

    void add(const Value& value)
    {
        if (isNull(value)) {
            addNull();
        } else if (const std::string* text = std::get_if<std::string>(&value)) {
            addText(*text);
        } else if (const std::int32_t* integer = std::get_if<std::int32_t>(&value)) {
            addPlain(Tag::Integer, *integer);
        } else if (const double* number = std::get_if<double>(&value)) {
            addPlain(Tag::Double, *number);
        } else if (const DateTime* date = std::get_if<DateTime>(&value)) {
            addPlain(Tag::Date, date->serial);
        } else {
            // The rare types are kept as they are.
            addPlain(Tag::Other, m_others.size());
            m_others.push_back(value);
        }
    }

    void endRow(std::string_view key, RowId row)
    {
        Row entry;
        entry.row = row;
        entry.key = m_keys.size();
        entry.keySize = static_cast<std::uint32_t>(key.size());
        entry.cells = m_rowBegin;
        for (std::size_t i = 0; i < sizeof entry.prefix; ++i)
            entry.prefix = entry.prefix << 8U | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
        m_keys += key;
        m_rowBegin = m_cells.size();
        m_rows.push_back(entry);
    }

    void sort()
    {
        std::sort(m_rows.begin(), m_rows.end(), [this](const Row& a, const Row& b) {
            if (a.prefix != b.prefix)
                return a.prefix < b.prefix;
            const int order = keyOf(a).compare(keyOf(b));
            return order != 0 ? order < 0 : a.cells < b.cells;
        });
    }

    void emit(RowSink& sink, std::size_t columns) const
    {
        for (const Row& row : m_rows) {
            std::size_t at = row.cells;
            for (std::size_t i = 0; i < columns; ++i)
                emitCell(sink, at);
            sink.endRow(row.row);
        }
    }

private:
    enum class Tag : char { Null, Text, Integer, Double, Date, Other };

    struct Row
    {
        std::uint64_t prefix = 0; ///< First bytes of the key.
        std::size_t key = 0;
        std::size_t cells = 0;
        std::uint32_t keySize = 0;
        RowId row;
    };

    [[nodiscard]] std::string_view keyOf(const Row& row) const
    {
        return std::string_view(m_keys).substr(row.key, row.keySize);
    }

    template <typename T>
    void addPlain(Tag tag, T value)
    {
        m_cells += static_cast<char>(tag);
        addBytes({reinterpret_cast<const char*>(&value), sizeof value}, false);
    }

    void addBytes(std::string_view bytes, bool counted = true)
    {
        if (counted) {
            const auto size = static_cast<std::uint32_t>(bytes.size());
            m_cells.append(reinterpret_cast<const char*>(&size), sizeof size);
        }
        m_cells += bytes;
    }

    template <typename T>
    [[nodiscard]] T plain(std::size_t& at) const
    {
        T value{};
        std::memcpy(&value, m_cells.data() + at, sizeof value);
        at += sizeof value;
        return value;
    }

    void emitCell(RowSink& sink, std::size_t& at) const
    {
        switch (static_cast<Tag>(m_cells[at++])) {
        case Tag::Null:
            sink.cell(Null{});
            break;
        case Tag::Text: {
            const auto size = plain<std::uint32_t>(at);
            sink.textCell(std::string_view(m_cells).substr(at, size));
            at += size;
            break;
        }
        case Tag::Integer:
            sink.cell(plain<std::int32_t>(at));
            break;
        case Tag::Double:
            sink.cell(plain<double>(at));
            break;
        case Tag::Date:
            sink.cell(DateTime{plain<double>(at)});
            break;
        case Tag::Other:
            sink.cell(m_others[plain<std::size_t>(at)]);
            break;
        }
    }

    std::string m_keys;
    std::string m_cells;
    std::size_t m_rowBegin = 0;
    std::vector<Value> m_others;
    std::vector<Row> m_rows;
};

} // namespace

Selection::Selection(SelectStatement& statement, const Table* table, std::string_view source,
                     const RegionalConversions& regional)
    : m_statement(statement)
    , m_table(table)
    , m_source(source)
    , m_regional(regional)
{
    Binder binder(table, statement.alias, source, regional);
    bindItems(binder);
    if (statement.where != nullptr)
        binder.bind(statement.where);
    bindOrder(binder);
    binder.finish();
    for (const Output& output : m_outputs) {
        if (m_aggregates.empty())
            break;
        if (output.expression == nullptr)
            throw notAggregated(m_table->columns()[static_cast<std::size_t>(output.column)].name);
        requireAggregated(*output.expression);
    }
}

void Selection::addColumn(int column)
{
    const Column& definition = m_table->columns()[static_cast<std::size_t>(column)];
    m_columns.push_back({definition.name, definition.type});
    m_outputs.push_back({nullptr, column});
}

void Selection::bindItems(Binder& binder)
{
    for (SelectItem& item : m_statement.items) {
        if (!item.everything) {
            binder.bind(item.expression, &m_aggregates);
            addOutput(*item.expression, item.alias);
            continue;
        }
        if (m_table == nullptr || (!item.qualifier.empty() && !binder.isTable(item.qualifier)))
            throw syntaxError("query");
        for (std::size_t i = 0; i < m_table->columns().size(); ++i)
            addColumn(static_cast<int>(i));
    }
}

void Selection::addOutput(const Expression& expression, const std::string& alias)
{
    if (expression.form == Expression::Form::Name && expression.column >= 0) {
        addColumn(expression.column);
        if (!alias.empty())
            m_columns.back().name = alias;
        return;
    }
    m_columns.push_back({alias.empty() ? unnamed(m_unnamed++) : alias, columnTypeOf(expression.kind)});
    m_outputs.push_back({&expression, -1});
}

/// ORDER BY an alias or a number means that item of the list.
void Selection::bindOrder(Binder& binder)
{
    for (OrderItem& item : m_statement.order) {
        Expression& expression = *item.expression;
        if (expression.form == Expression::Form::Literal) {
            const std::int32_t* position = std::get_if<std::int32_t>(&expression.literal);
            const auto size = static_cast<std::int32_t>(m_outputs.size());
            if (position == nullptr || *position < 1 || *position > size)
                throw syntaxError("ORDER BY clause");
            item.output = *position - 1;
            continue;
        }
        const bool known = expression.form == Expression::Form::Name && m_table != nullptr &&
                           m_table->columnIndex(expression.name) >= 0;
        if (expression.form == Expression::Form::Name && expression.qualifier.empty() && !known) {
            for (std::size_t i = 0; i < m_columns.size() && item.output < 0; ++i) {
                if (sameName(m_columns[i].name, expression.name))
                    item.output = static_cast<int>(i);
            }
            if (item.output >= 0)
                continue;
        }
        binder.bind(item.expression, m_aggregates.empty() ? nullptr : &m_aggregates);
    }
    for (const OrderItem& item : m_statement.order) {
        const Kind kind =
            item.output < 0 ? item.expression->kind : kindOf(m_columns[static_cast<std::size_t>(item.output)].type);
        if (kind == Kind::Binary)
            throw Error(ErrorKind::TypeMismatch, "Cannot sort on Memo or OLE Object.");
    }
}

void Selection::run(RowSink& sink) const
{
    sink.columns(m_columns);
    if (!m_aggregates.empty())
        runAggregates(sink);
    else if (m_table == nullptr)
        runWithoutTable(sink);
    else if (m_statement.order.empty())
        runDirect(sink);
    else
        runSorted(sink);
}

/// The cells of a row, texts without a value of their own; `texts` as textOutputs(), `text` is a buffer to use again.
template <typename TextCell, typename Cell>
void Selection::eachCell(const Cursor& cursor, Evaluator& evaluator, const std::vector<bool>& texts, std::string& text,
                         TextCell textCell, Cell cell) const
{
    for (std::size_t i = 0; i < m_outputs.size(); ++i) {
        const Output& output = m_outputs[i];
        if (!texts[i]) {
            cell(output.expression != nullptr ? evaluator.value(*output.expression) : cursor.value(output.column));
            continue;
        }
        text.clear();
        if (cursor.appendText(output.column, text))
            textCell(text);
        else
            cell(Null{});
    }
}

void Selection::runDirect(RowSink& sink) const
{
    Evaluator evaluator(m_regional);
    const std::vector<bool> texts = textOutputs();
    std::string text;
    forEachRow(*m_table, m_statement.where.get(), evaluator, [&](const Cursor& cursor) {
        eachCell(
            cursor, evaluator, texts, text, [&](std::string_view cell) { sink.textCell(cell); },
            [&](const Value& value) { emitValue(sink, value); });
        sink.endRow(cursor.rowId());
    });
}

void Selection::runSorted(RowSink& sink) const
{
    Evaluator evaluator(m_regional);
    const std::vector<bool> texts = textOutputs();
    SortBuffer buffer;
    std::string text;
    std::string key;
    forEachRow(*m_table, m_statement.where.get(), evaluator, [&](const Cursor& cursor) {
        eachCell(
            cursor, evaluator, texts, text, [&](std::string_view cell) { buffer.addText(cell); },
            [&](const Value& value) { buffer.add(value); });
        key.clear();
        for (const OrderItem& item : m_statement.order) {
            const Output* output = item.output < 0 ? nullptr : &m_outputs[static_cast<std::size_t>(item.output)];
            const Expression* expression = output == nullptr ? item.expression.get() : output->expression;
            appendSortKey(expression != nullptr ? evaluator.value(*expression) : cursor.value(output->column),
                          item.ascending, key);
        }
        buffer.endRow(key, cursor.rowId());
    });
    buffer.sort();
    buffer.emit(sink, m_outputs.size());
}

void Selection::runAggregates(RowSink& sink) const
{
    Evaluator evaluator(m_regional);
    std::vector<Accumulator> accumulators;
    accumulators.reserve(m_aggregates.size());
    for (const Expression* call : m_aggregates)
        accumulators.emplace_back(*call);
    const auto addRow = [&] {
        for (Accumulator& accumulator : accumulators)
            accumulator.add(evaluator);
    };
    if (m_table != nullptr)
        forEachRow(*m_table, m_statement.where.get(), evaluator, [&](const Cursor& /*cursor*/) { addRow(); });
    else
        addRow();
    std::vector<Value> results;
    results.reserve(accumulators.size());
    for (const Accumulator& accumulator : accumulators)
        results.push_back(accumulator.result());
    evaluator.setAggregates(&results);
    for (const Output& output : m_outputs)
        emitValue(sink, evaluator.value(*output.expression));
    sink.endRow(std::nullopt);
}

void Selection::runWithoutTable(RowSink& sink) const
{
    Evaluator evaluator(m_regional);
    if (m_statement.where != nullptr && evaluator.test(*m_statement.where) != Truth::True)
        return;
    for (const Output& output : m_outputs)
        emitValue(sink, evaluator.value(*output.expression));
    sink.endRow(std::nullopt);
}

/// Which outputs go the short way of text columns.
std::vector<bool> Selection::textOutputs() const
{
    std::vector<bool> texts;
    for (const Output& output : m_outputs)
        texts.push_back(output.column >= 0 &&
                        m_table->columns()[static_cast<std::size_t>(output.column)].type == ColumnType::Text);
    return texts;
}

void Selection::emitValue(RowSink& sink, const Value& value)
{
    if (const std::string* text = std::get_if<std::string>(&value))
        sink.textCell(*text);
    else
        sink.cell(value);
}

/// A column outside of sum, count and the like has no single value.
void Selection::requireAggregated(const Expression& expression) const
{
    if (expression.form == Expression::Form::Aggregate)
        return;
    if (expression.form == Expression::Form::Name)
        throw notAggregated(m_source.substr(expression.at, expression.end - expression.at));
    for (const ExpressionPointer& operand : expression.operands)
        requireAggregated(*operand);
}

} // namespace accessfile::sql
