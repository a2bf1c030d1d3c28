#pragma once

#include "accessfile/Storage.h"
#include "accessfile/sql/Pattern.h"
#include "accessfile/sql/TextOrdering.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

// Statements as trees.
namespace accessfile::sql {

/// Kind of value that an expression gives, known before a row is read.
enum class Kind { Null, Bool, Integer, Float, Double, Money, Date, Text, Guid, Binary };

enum class Operator {
    Add,
    Subtract,
    Multiply,
    Divide,
    IntegerDivide,
    Modulo,
    Power,
    Concatenate,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual
};

enum class Aggregate { Count, Sum, Average, Minimum, Maximum };

struct Expression;
using ExpressionPointer = std::unique_ptr<Expression>;

struct Expression
{
    enum class Form {
        Literal,
        Name,
        Negate,
        Arithmetic,
        Compare,
        And,
        Or,
        Xor,
        Not,
        Like,
        IsNull,
        Between, ///< value, lower, upper
        In,      ///< value, members...
        Call,
        Aggregate,
        GroupKey ///< What binding makes of an expression that a SELECT is grouped by.
    };

    Form form = Form::Literal;
    std::vector<ExpressionPointer> operands;
    Operator operation = Operator::Add;
    Aggregate aggregate = Aggregate::Count;
    bool negated = false;      ///< NOT LIKE, IS NOT NULL, NOT BETWEEN, NOT IN
    bool truthLiteral = false; ///< The words True and False, which compare in a way of their own.
    Value literal;
    std::string name;
    std::string qualifier; ///< Table of a name, when it is given.
    std::size_t at = 0;    ///< Source range, for messages.
    std::size_t end = 0;
    int depth = 1;

    // What binding finds out.
    Kind kind = Kind::Null;
    int column = -1;
    std::size_t slot = 0;                 ///< Place of an aggregate's or a group key's result.
    std::size_t function = 0;             ///< Number of the function that a call means.
    std::optional<ComparedText> compared; ///< The constant side of a text comparison.
    std::optional<Pattern> pattern;       ///< A constant LIKE pattern.
};

struct SelectItem
{
    bool everything = false; ///< * or table.*
    std::string qualifier;
    ExpressionPointer expression;
    std::string alias;
};

struct OrderItem
{
    ExpressionPointer expression;
    bool ascending = true;
    int output = -1; ///< Item of the list that an alias or a number means.
};

/// The first rows only: so many, or so many of a hundred.
struct TopClause
{
    std::size_t count = 0;
    bool percent = false;
};

struct SelectStatement
{
    bool distinct = false;
    std::optional<TopClause> top;
    std::vector<SelectItem> items;
    std::string table; ///< Empty without FROM.
    std::string alias;
    ExpressionPointer where;
    std::vector<ExpressionPointer> group;
    ExpressionPointer having;
    std::vector<OrderItem> order;
};

struct InsertStatement
{
    std::string table;
    std::vector<std::string> columns; ///< Empty: all, in order.
    std::vector<ExpressionPointer> values;
    std::optional<SelectStatement> source; ///< Instead of values.
};

struct UpdateStatement
{
    std::string table;
    std::string alias;
    std::vector<std::pair<ExpressionPointer, ExpressionPointer>> changes; ///< Name and new value.
    ExpressionPointer where;
};

struct DeleteStatement
{
    std::string table;
    ExpressionPointer where;
};

/// Index by column names, as DDL names them.
struct IndexDefinition
{
    std::string name;
    std::vector<std::pair<std::string, bool>> columns; ///< Name, ascending.
    bool unique = false;
    bool primary = false;
    bool required = false;
    bool ignoreNulls = false;
};

struct ColumnDefinition
{
    Column column;
    std::vector<IndexDefinition> indexes; ///< From PRIMARY KEY or UNIQUE at the column.
};

struct CreateTableStatement
{
    std::string table;
    std::vector<Column> columns;
    std::vector<IndexDefinition> indexes;
};

struct AddColumnStatement
{
    std::string table;
    std::vector<ColumnDefinition> columns;
};

struct CreateIndexStatement
{
    std::string table;
    IndexDefinition index;
};

struct DropTableStatement
{
    std::string table;
};

using Statement = std::variant<SelectStatement, InsertStatement, UpdateStatement, DeleteStatement, CreateTableStatement,
                               AddColumnStatement, CreateIndexStatement, DropTableStatement>;

} // namespace accessfile::sql
