#pragma once

#include "accessfile/Database.h"
#include "accessfile/sql/Syntax.h"

namespace accessfile::sql {

class Binder;
class Evaluator;

/// Checks the names and kinds of a SELECT on its table (nullptr without FROM) and makes it ready to run.
class Selection
{
public:
    Selection(SelectStatement& statement, const Table* table, std::string_view source,
              const RegionalConversions& regional);

    [[nodiscard]] std::size_t columnCount() const { return m_columns.size(); }
    void run(RowSink& sink) const;

private:
    struct Output
    {
        const Expression* expression = nullptr; ///< nullptr: the column itself, from *.
        int column = -1;                        ///< -1: no plain column.
    };
    struct Gathering;

    void bindItems(Binder& binder);
    void bindOrder(Binder& binder);
    void bindGroups();
    void requireListedOrder();
    static void requireComparable(Kind kind);
    void addOutput(const Expression& expression, const std::string& alias);
    void addColumn(int column, const Expression* name);

    // SelectRows.cpp
    [[nodiscard]] static Value outputValue(const Output& output, const Cursor* cursor, Evaluator& evaluator);
    template <typename TextCell, typename Cell>
    void eachCell(const Cursor& cursor, Evaluator& evaluator, const std::vector<bool>& texts, std::string& text,
                  TextCell textCell, Cell cell) const;
    template <typename Visit>
    void runGroups(Visit visit) const;
    template <typename Fill>
    void runGathered(RowSink& sink, Fill fill) const;
    void runDirect(RowSink& sink) const;
    void runWithoutTable(RowSink& sink) const;
    void emitRow(Evaluator& evaluator, RowSink& sink) const;
    void gatherTable(Gathering& gathered) const;
    void gather(const Cursor* cursor, Evaluator& evaluator, std::optional<RowId> row, Gathering& gathered) const;
    void endGathered(const Cursor* cursor, Evaluator& evaluator, std::optional<RowId> row, Gathering& gathered) const;
    [[nodiscard]] std::vector<bool> textOutputs() const;

    SelectStatement& m_statement;
    const Table* m_table;
    std::string_view m_source;
    const RegionalConversions& m_regional;
    std::vector<ResultColumn> m_columns;
    std::vector<Output> m_outputs;
    std::vector<Expression*> m_totals;
    bool m_grouped = false;
    int m_unnamed = 0;
};

} // namespace accessfile::sql
