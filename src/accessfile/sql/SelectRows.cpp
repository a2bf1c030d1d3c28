#include "accessfile/sql/Evaluator.h"
#include "accessfile/sql/Grouping.h"
#include "accessfile/sql/Planner.h"
#include "accessfile/sql/RowBuffer.h"
#include "accessfile/sql/Select.h"
#include "accessfile/sql/SortKey.h"

#include <unordered_set>

// How the rows of a SELECT come out.
namespace accessfile::sql {

namespace {

void emitValue(RowSink& sink, const Value& value)
{
    if (const std::string* text = std::get_if<std::string>(&value))
        sink.textCell(*text);
    else
        sink.cell(value);
}

} // namespace

/// Rows that wait in a buffer until it is known which of them come out, and in which order.
struct Selection::Gathering
{
    RowBuffer rows;
    std::unordered_set<std::string> seen; ///< Of the rows that must differ.
    std::string key;                      ///< Kept between rows.
};

void Selection::run(RowSink& sink) const
{
    sink.columns(m_columns);
    const bool straight = m_statement.order.empty() && !m_statement.distinct && !m_statement.top;
    if (straight && m_grouped)
        runGroups([&](Evaluator& evaluator) { emitRow(evaluator, sink); });
    else if (straight && m_table != nullptr)
        runDirect(sink);
    else if (m_grouped)
        runGathered(sink, [&](Gathering& gathered) {
            runGroups([&](Evaluator& evaluator) { gather(nullptr, evaluator, {}, gathered); });
        });
    else if (m_table != nullptr)
        runGathered(sink, [&](Gathering& gathered) { gatherTable(gathered); });
    else if (!m_statement.top || m_statement.top->count > 0)
        runWithoutTable(sink);
}

/// The cells of a row, texts without a value of their own; `texts` as textOutputs(), `text` is a buffer to use again.
template <typename TextCell, typename Cell>
void Selection::eachCell(const Cursor& cursor, Evaluator& evaluator, const std::vector<bool>& texts, std::string& text,
                         TextCell textCell, Cell cell) const
{
    for (std::size_t i = 0; i < m_outputs.size(); ++i) {
        const Output& output = m_outputs[i];
        if (!texts[i]) {
            cell(outputValue(output, &cursor, evaluator));
            continue;
        }
        text.clear();
        if (cursor.appendText(output.column, text))
            textCell(text);
        else
            cell(Null{});
    }
}

Value Selection::outputValue(const Output& output, const Cursor* cursor, Evaluator& evaluator)
{
    return cursor != nullptr && output.column >= 0 ? cursor->value(output.column) : evaluator.value(*output.expression);
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

void Selection::runWithoutTable(RowSink& sink) const
{
    Evaluator evaluator(m_regional);
    if (m_statement.where == nullptr || evaluator.test(*m_statement.where) == Truth::True)
        emitRow(evaluator, sink);
}

/// A row that no cursor stands on.
void Selection::emitRow(Evaluator& evaluator, RowSink& sink) const
{
    for (const Output& output : m_outputs)
        emitValue(sink, evaluator.value(*output.expression));
    sink.endRow(std::nullopt);
}

/// Calls `visit` for each group that HAVING lets pass; the evaluator stands on it.
template <typename Visit>
void Selection::runGroups(Visit visit) const
{
    Evaluator evaluator(m_regional);
    Groups groups(m_statement.group, m_totals, m_regional);
    if (m_table != nullptr)
        forEachRow(*m_table, m_statement.where.get(), evaluator,
                   [&](const Cursor& /*cursor*/) { groups.add(evaluator); });
    else if (m_statement.where == nullptr || evaluator.test(*m_statement.where) == Truth::True)
        groups.add(evaluator);
    for (const std::size_t group : groups.ordered()) {
        const std::vector<Value> results = groups.results(group);
        evaluator.setResults(&results);
        if (m_statement.having == nullptr || evaluator.test(*m_statement.having) == Truth::True)
            visit(evaluator);
    }
}

/// Lets `fill` gather all rows, then gives out the first of them in their order.
template <typename Fill>
void Selection::runGathered(RowSink& sink, Fill fill) const
{
    Gathering gathered;
    fill(gathered);
    if (!m_statement.order.empty())
        gathered.rows.sort();
    if (const std::optional<TopClause>& top = m_statement.top) {
        constexpr std::size_t all = 100;
        const std::size_t size = gathered.rows.size();
        gathered.rows.keepFirst(top->percent ? (size * top->count + all - 1) / all : top->count,
                                !m_statement.order.empty());
    }
    gathered.rows.emit(sink, m_outputs.size());
}

void Selection::gatherTable(Gathering& gathered) const
{
    Evaluator evaluator(m_regional);
    const std::vector<bool> texts = textOutputs();
    std::string text;
    // Without an order the first rows are whichever come first.
    const bool anyWill = m_statement.top && !m_statement.top->percent && m_statement.order.empty();
    forEachRow(*m_table, m_statement.where.get(), evaluator, [&](const Cursor& cursor) {
        if (m_statement.distinct) {
            gather(&cursor, evaluator, {}, gathered);
        } else {
            eachCell(
                cursor, evaluator, texts, text, [&](std::string_view cell) { gathered.rows.addText(cell); },
                [&](const Value& value) { gathered.rows.add(value); });
            endGathered(&cursor, evaluator, cursor.rowId(), gathered);
        }
        return !anyWill || gathered.rows.size() < m_statement.top->count;
    });
}

/// Adds a row, unless it must differ from an earlier one and does not.
void Selection::gather(const Cursor* cursor, Evaluator& evaluator, std::optional<RowId> row, Gathering& gathered) const
{
    if (m_statement.distinct) {
        gathered.key.clear();
        for (const Output& output : m_outputs)
            appendSortKey(outputValue(output, cursor, evaluator), true, gathered.key);
        if (!gathered.seen.insert(gathered.key).second)
            return;
    }
    for (const Output& output : m_outputs)
        gathered.rows.add(outputValue(output, cursor, evaluator));
    endGathered(cursor, evaluator, row, gathered);
}

void Selection::endGathered(const Cursor* cursor, Evaluator& evaluator, std::optional<RowId> row,
                            Gathering& gathered) const
{
    gathered.key.clear();
    for (const OrderItem& item : m_statement.order)
        appendSortKey(item.output < 0
                          ? evaluator.value(*item.expression)
                          : outputValue(m_outputs[static_cast<std::size_t>(item.output)], cursor, evaluator),
                      item.ascending, gathered.key);
    gathered.rows.endRow(gathered.key, row);
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

} // namespace accessfile::sql
