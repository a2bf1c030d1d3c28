#pragma once

#include "accessfile/Error.h"

#include <string>
#include <string_view>

// The errors of the SQL layer with the wording and the numbers of the driver whose manners it keeps.
namespace accessfile::sql {

[[nodiscard]] Error invalidStatement();
[[nodiscard]] Error syntaxError(std::string_view construct); ///< "INSERT INTO statement", "FROM clause", ...
[[nodiscard]] Error expressionSyntax(std::string_view expression);
[[nodiscard]] Error textSyntax(std::string_view expression);
[[nodiscard]] Error dateSyntax(std::string_view expression);
[[nodiscard]] Error trailingCharacters();
[[nodiscard]] Error tooComplex();
[[nodiscard]] Error notServed(std::string_view what);
[[nodiscard]] Error missingTable(std::string_view name);
[[nodiscard]] Error tooFewParameters(std::size_t expected);
[[nodiscard]] Error unknownInsertField(std::string_view name);
[[nodiscard]] Error unknownField(std::string_view name, std::string_view table);
[[nodiscard]] Error duplicateDestination(std::string_view name);
[[nodiscard]] Error valueCount();
[[nodiscard]] Error undefinedFunction(std::string_view name);
[[nodiscard]] Error notAggregated(std::string_view expression);
[[nodiscard]] Error orderConflict(std::string_view expression);
[[nodiscard]] Error typeMismatch();
[[nodiscard]] Error fieldTooSmall();
[[nodiscard]] Error notUpdatable(std::string_view field);
[[nodiscard]] Error tableExists(std::string_view name);
[[nodiscard]] Error fieldExists(std::string_view field, std::string_view table);
[[nodiscard]] Error indexExists(std::string_view index, std::string_view table);
[[nodiscard]] Error primaryKeyExists();
[[nodiscard]] Error divisionByZero();
[[nodiscard]] Error overflow();

} // namespace accessfile::sql
