#include "accessfile/sql/Messages.h"
#include "accessfile/sql/Parser.h"

#include <algorithm>
#include <array>
#include <charconv>

// The column and index definitions of CREATE TABLE, CREATE INDEX and ALTER TABLE.
namespace accessfile::sql {

namespace {

struct TypeName
{
    std::string_view word;
    ColumnType type;
    int length = 0; ///< Where none is written.
    bool autonumber = false;
};

constexpr int longestText = 255;
constexpr int longestBinary = 510;

constexpr std::array<TypeName, 51> typeNames{{{"TEXT", ColumnType::Text, longestText},
                                              {"VARCHAR", ColumnType::Text, longestText},
                                              {"CHAR", ColumnType::Text, longestText},
                                              {"CHARACTER", ColumnType::Text, longestText},
                                              {"NCHAR", ColumnType::Text, longestText},
                                              {"NVARCHAR", ColumnType::Text, longestText},
                                              {"ALPHANUMERIC", ColumnType::Text, longestText},
                                              {"STRING", ColumnType::Text, longestText},
                                              {"MEMO", ColumnType::Memo},
                                              {"LONGTEXT", ColumnType::Memo},
                                              {"LONGCHAR", ColumnType::Memo},
                                              {"NOTE", ColumnType::Memo},
                                              {"NTEXT", ColumnType::Memo},
                                              {"INTEGER", ColumnType::Long},
                                              {"INT", ColumnType::Long},
                                              {"INTEGER4", ColumnType::Long},
                                              {"LONG", ColumnType::Long},
                                              {"SMALLINT", ColumnType::Int},
                                              {"SHORT", ColumnType::Int},
                                              {"INTEGER2", ColumnType::Int},
                                              {"BYTE", ColumnType::Byte},
                                              {"TINYINT", ColumnType::Byte},
                                              {"INTEGER1", ColumnType::Byte},
                                              {"DOUBLE", ColumnType::Double},
                                              {"FLOAT", ColumnType::Double},
                                              {"FLOAT8", ColumnType::Double},
                                              {"NUMBER", ColumnType::Double},
                                              {"IEEEDOUBLE", ColumnType::Double},
                                              {"REAL", ColumnType::Float},
                                              {"SINGLE", ColumnType::Float},
                                              {"FLOAT4", ColumnType::Float},
                                              {"IEEESINGLE", ColumnType::Float},
                                              {"CURRENCY", ColumnType::Money},
                                              {"MONEY", ColumnType::Money},
                                              {"DECIMAL", ColumnType::Numeric},
                                              {"NUMERIC", ColumnType::Numeric},
                                              {"DEC", ColumnType::Numeric},
                                              {"DATETIME", ColumnType::Date},
                                              {"DATE", ColumnType::Date},
                                              {"TIME", ColumnType::Date},
                                              {"TIMESTAMP", ColumnType::Date},
                                              {"COUNTER", ColumnType::Long, 0, true},
                                              {"AUTOINCREMENT", ColumnType::Long, 0, true},
                                              {"IDENTITY", ColumnType::Long, 0, true},
                                              {"YESNO", ColumnType::Bool},
                                              {"BIT", ColumnType::Bool},
                                              {"LOGICAL", ColumnType::Bool},
                                              {"BOOLEAN", ColumnType::Bool},
                                              {"BINARY", ColumnType::Binary, longestBinary},
                                              {"VARBINARY", ColumnType::Binary, longestBinary},
                                              {"LONGBINARY", ColumnType::Ole}}};

int wholeNumber(const Token& token)
{
    int value = -1;
    const char* const last = token.text.data() + token.text.size();
    const auto read = std::from_chars(token.text.data(), last, value);
    return token.type == Token::Type::Number && read.ec == std::errc() && read.ptr == last ? value : -1;
}

} // namespace

void Parser::columnType(Column& column)
{
    const TypeName* found = nullptr;
    for (const TypeName& candidate : typeNames) {
        if (m_token.isWord(candidate.word))
            found = &candidate;
    }
    if (found == nullptr && m_token.isWord("GUID")) {
        advance();
        column.type = ColumnType::Guid;
        return;
    }
    if (found == nullptr)
        throw Error(ErrorKind::Syntax, "Syntax error in field definition.", -3553);
    advance();
    column.type = found->type;
    column.length = found->length;
    column.autonumber = found->autonumber;
    if (column.type == ColumnType::Numeric)
        column.precision = 18;
    static_cast<void>(acceptWord("VARYING") || (found->word == "DOUBLE" && acceptWord("PRECISION")));
    if (!acceptSymbol("("))
        return;

    std::array<int, 2> sizes{-1, -1};
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        sizes.at(i) = wholeNumber(m_token);
        if (sizes.at(i) < 0)
            throw Error(ErrorKind::Syntax, "Syntax error in field definition.", -3553);
        advance();
        if (!acceptSymbol(","))
            break;
    }
    expectSymbol(")");
    if (column.type == ColumnType::Text || column.type == ColumnType::Binary) {
        if (sizes[0] < 1 || sizes[0] > found->length)
            throw Error(ErrorKind::TooLong, "Size of field '" + column.name + "' is too long.");
        column.length = sizes[0];
    } else if (column.type == ColumnType::Numeric) {
        const int scale = std::max(sizes[1], 0);
        if (sizes[0] < 1 || sizes[0] > 28)
            throw Error(ErrorKind::TypeMismatch, "Invalid precision for decimal data type.");
        if (scale > sizes[0])
            throw Error(ErrorKind::TypeMismatch, "Invalid scale for decimal data type.");
        column.precision = static_cast<std::uint8_t>(sizes[0]);
        column.scale = static_cast<std::uint8_t>(scale);
    } else if (column.autonumber && (sizes[0] != 1 || sizes[1] > 1 || sizes[1] == 0)) {
        throw notServed("COUNTER with another first number or step than 1");
    }
}

ColumnDefinition Parser::columnDefinition()
{
    ColumnDefinition result;
    result.column.name = name();
    columnType(result.column);
    for (;;) {
        std::string constraint;
        if (acceptWord("NOT")) {
            expectWord("NULL");
            result.column.required = true;
            continue;
        }
        if (acceptWord("NULL"))
            continue;
        if (acceptWord("WITH")) {
            if (!acceptWord("COMP"))
                expectWord("COMPRESSION");
            continue;
        }
        if (acceptWord("DEFAULT")) {
            result.column.defaultExpression = defaultExpression();
            continue;
        }
        if (acceptWord("CONSTRAINT"))
            constraint = name();
        IndexDefinition index;
        index.columns.emplace_back(result.column.name, true);
        index.unique = true;
        if (acceptWord("PRIMARY")) {
            expectWord("KEY");
            index.primary = true;
            index.required = true;
            index.name = constraint.empty() ? "PrimaryKey" : constraint;
        } else if (acceptWord("UNIQUE")) {
            index.name = constraint.empty() ? result.column.name : constraint;
        } else if (m_token.isWord("REFERENCES") || m_token.isWord("CHECK")) {
            throw notServed(m_token.text);
        } else if (!constraint.empty()) {
            throw Error(ErrorKind::Syntax, "Syntax error in CONSTRAINT clause.");
        } else {
            return result;
        }
        result.indexes.push_back(std::move(index));
    }
}

/// A literal or a plain call, kept as the text that the file stores: double quotes around a text.
std::string Parser::defaultExpression()
{
    const bool brackets = acceptSymbol("(");
    std::string result;
    if (acceptSymbol("-"))
        result = "-";
    switch (m_token.type) {
    case Token::Type::Text:
        result += '"';
        for (const char c : m_token.text)
            result.append(c == '"' ? 2 : 1, c);
        result += '"';
        break;
    case Token::Type::Date:
        result += '#' + m_token.text + '#';
        break;
    case Token::Type::Number:
    case Token::Type::Name:
        result += m_token.text;
        break;
    default:
        failConstruct();
    }
    const bool callable = m_token.type == Token::Type::Name;
    advance();
    if (callable && acceptSymbol("(")) {
        expectSymbol(")");
        result += "()";
    }
    if (brackets)
        expectSymbol(")");
    return result;
}

std::vector<std::pair<std::string, bool>> Parser::indexColumns()
{
    std::vector<std::pair<std::string, bool>> result;
    expectSymbol("(");
    do {
        std::string column = name();
        const bool descending = acceptWord("DESC");
        if (!descending)
            static_cast<void>(acceptWord("ASC"));
        result.emplace_back(std::move(column), !descending);
    } while (acceptSymbol(","));
    expectSymbol(")");
    return result;
}

void Parser::tableConstraint(CreateTableStatement& statement)
{
    IndexDefinition index;
    if (acceptWord("CONSTRAINT"))
        index.name = name();
    index.unique = true;
    if (acceptWord("PRIMARY")) {
        expectWord("KEY");
        index.primary = true;
        index.required = true;
    } else if (!acceptWord("UNIQUE")) {
        throw notServed("CONSTRAINT " + m_token.text);
    }
    index.columns = indexColumns();
    if (index.name.empty())
        index.name = index.primary ? "PrimaryKey" : index.columns.front().first;
    statement.indexes.push_back(std::move(index));
}

CreateTableStatement Parser::createTable()
{
    m_construct = "CREATE TABLE statement";
    CreateTableStatement result;
    result.table = name();
    expectSymbol("(");
    do {
        const bool constraint = m_token.isWord("CONSTRAINT") || (m_token.isWord("PRIMARY") && peek().isWord("KEY")) ||
                                (m_token.isWord("UNIQUE") && peek().isSymbol("("));
        if ((m_token.isWord("FOREIGN") && peek().isWord("KEY")) || (m_token.isWord("CHECK") && peek().isSymbol("(")))
            throw notServed("CONSTRAINT " + m_token.text);
        if (constraint) {
            tableConstraint(result);
            continue;
        }
        ColumnDefinition definition = columnDefinition();
        result.columns.push_back(std::move(definition.column));
        std::move(definition.indexes.begin(), definition.indexes.end(), std::back_inserter(result.indexes));
    } while (acceptSymbol(","));
    expectSymbol(")");
    return result;
}

CreateIndexStatement Parser::createIndex(bool unique)
{
    m_construct = "CREATE INDEX statement";
    CreateIndexStatement result;
    result.index.name = name();
    result.index.unique = unique;
    expectWord("ON");
    result.table = name();
    result.index.columns = indexColumns();
    if (acceptWord("WITH")) {
        if (acceptWord("PRIMARY")) {
            result.index.primary = true;
            result.index.unique = true;
            result.index.required = true;
        } else if (acceptWord("DISALLOW")) {
            expectWord("NULL");
            result.index.required = true;
        } else {
            expectWord("IGNORE");
            expectWord("NULL");
            result.index.ignoreNulls = true;
        }
    }
    return result;
}

} // namespace accessfile::sql
