#pragma once

#include "accessfile/Database.h"
#include "accessfile/sql/Syntax.h"

namespace accessfile::sql {

class Evaluator;

class Binder;

/// Checks the names and kinds of a SELECT on its table (nullptr without FROM) and makes it ready to run.
class Selection
{
public:
    Selection(SelectStatement& statement, const Table* table, std::string_view source,
              const RegionalConversions& regional);

    void run(RowSink& sink) const;

private:
    struct Output
    {
        const Expression* expression = nullptr; ///< nullptr: the column itself.
        int column = -1;
    };

    void bindItems(Binder& binder);
    void bindOrder(Binder& binder);
    void addOutput(const Expression& expression, const std::string& alias);
    void addColumn(int column);
    template <typename TextCell, typename Cell>
    void eachCell(const Cursor& cursor, Evaluator& evaluator, const std::vector<bool>& texts, std::string& text,
                  TextCell textCell, Cell cell) const;
    void runDirect(RowSink& sink) const;
    void runSorted(RowSink& sink) const;
    void runAggregates(RowSink& sink) const;
    void runWithoutTable(RowSink& sink) const;
    [[nodiscard]] std::vector<bool> textOutputs() const;
    static void emitValue(RowSink& sink, const Value& value);
    void requireAggregated(const Expression& expression) const;

    SelectStatement& m_statement;
    const Table* m_table;
    std::string_view m_source;
    const RegionalConversions& m_regional;
    std::vector<ResultColumn> m_columns;
    std::vector<Output> m_outputs;
    std::vector<Expression*> m_aggregates;
    int m_unnamed = 0;
};

} // namespace accessfile::sql
