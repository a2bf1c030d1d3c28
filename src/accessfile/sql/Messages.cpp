#include "accessfile/sql/Messages.h"

namespace accessfile::sql {

namespace {

/// A statement can be a megabyte; its quotation in a message cannot.
std::string quoted(std::string_view text)
{
    constexpr std::size_t limit = 200;
    while (!text.empty() && (text.back() == ' ' || text.back() == ';' || text.back() == '\n' || text.back() == '\r'))
        text.remove_suffix(1);
    bool cut = false;
    if (text.size() > limit) {
        std::size_t end = limit;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
            --end;
        text = text.substr(0, end);
        cut = true;
    }
    return "'" + std::string(text) + (cut ? "..." : "") + "'";
}

} // namespace

Error invalidStatement()
{
    return {ErrorKind::Syntax,
            "Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'.", -3500};
}

Error syntaxError(std::string_view construct)
{
    int number = -3500;
    if (construct == "INSERT INTO statement")
        number = -3502;
    else if (construct == "UPDATE statement")
        number = -3503;
    else if (construct == "FROM clause")
        number = -3506;
    else if (construct == "ORDER BY clause")
        number = -3508;
    else if (construct == "CREATE TABLE statement")
        number = -3551;
    return {ErrorKind::Syntax, "Syntax error in " + std::string(construct) + ".", number};
}

Error expressionSyntax(std::string_view expression)
{
    return {ErrorKind::Syntax, "Syntax error (missing operator) in query expression " + quoted(expression) + ".",
            -3100};
}

Error textSyntax(std::string_view expression)
{
    return {ErrorKind::Syntax, "Syntax error in string in query expression " + quoted(expression) + ".", -3100};
}

Error dateSyntax(std::string_view expression)
{
    return {ErrorKind::Syntax, "Syntax error in date in query expression " + quoted(expression) + ".", -3100};
}

Error trailingCharacters()
{
    return {ErrorKind::Syntax, "Characters found after end of SQL statement.", -3516};
}

Error tooComplex()
{
    return {ErrorKind::Syntax, "Query is too complex."};
}

Error notServed(std::string_view what)
{
    return {ErrorKind::Syntax, std::string(what) + " is not supported."};
}

Error missingTable(std::string_view name)
{
    return {ErrorKind::MissingTable, "The Microsoft Jet database engine cannot find the input table or query " +
                                         quoted(name) +
                                         ".  Make sure it exists and that its name is spelled correctly."};
}

Error tooFewParameters(std::size_t expected)
{
    return {ErrorKind::MissingColumn, "Too few parameters. Expected " + std::to_string(expected) + "."};
}

Error unknownInsertField(std::string_view name)
{
    return {ErrorKind::MissingColumn,
            "The INSERT INTO statement contains the following unknown field name: " + quoted(name) +
                ".  Make sure you have typed the name correctly, and try the operation again.",
            -1507};
}

Error unknownField(std::string_view name, std::string_view table)
{
    return {ErrorKind::MissingColumn,
            "Invalid field definition " + quoted(name) + " in definition of index or relationship of " + quoted(table) +
                ".",
            -3055};
}

Error duplicateDestination(std::string_view name)
{
    return {ErrorKind::Duplicate, "Duplicate output destination " + quoted(name) + ".", -3505};
}

Error valueCount()
{
    return {ErrorKind::Syntax, "Number of query values and destination fields are not the same."};
}

Error undefinedFunction(std::string_view name)
{
    return {ErrorKind::Syntax, "Undefined function " + quoted(name) + " in expression.", -3102};
}

Error notAggregated(std::string_view expression)
{
    return {ErrorKind::Syntax, "You tried to execute a query that does not include the specified expression " +
                                   quoted(expression) + " as part of an aggregate function."};
}

Error orderConflict(std::string_view expression)
{
    return {ErrorKind::Syntax, "ORDER BY clause " + quoted(expression) + " conflicts with DISTINCT."};
}

Error typeMismatch()
{
    return {ErrorKind::TypeMismatch, "Data type mismatch in criteria expression."};
}

Error fieldTooSmall()
{
    return {ErrorKind::TooLong, "The field is too small to accept the amount of data you attempted to add.  Try "
                                "inserting or pasting less data."};
}

Error notUpdatable(std::string_view field)
{
    return {ErrorKind::ReadOnly, "Cannot update " + quoted(field) + "; field not updateable.", -1048};
}

Error tableExists(std::string_view name)
{
    return {ErrorKind::Duplicate, "Table " + quoted(name) + " already exists."};
}

Error fieldExists(std::string_view field, std::string_view table)
{
    return {ErrorKind::Duplicate, "Field " + quoted(field) + " already exists in table " + quoted(table) + ".", -1508};
}

Error indexExists(std::string_view index, std::string_view table)
{
    return {ErrorKind::Duplicate, "Table " + quoted(table) + " already has an index named " + quoted(index) + ".",
            -1403};
}

Error primaryKeyExists()
{
    return {ErrorKind::Duplicate, "Primary key already exists.", -1402};
}

Error divisionByZero()
{
    return {ErrorKind::DivisionByZero, "Division by zero."};
}

Error overflow()
{
    return {ErrorKind::Overflow, "Overflow."};
}

} // namespace accessfile::sql
