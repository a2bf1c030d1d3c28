#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace accessfile::sql {

struct Token
{
    enum class Type { End, Name, QuotedName, Text, Number, Date, Symbol };

    Type type = Type::End;
    std::string text;   ///< Name without its brackets, text without its quotes, the symbol, or the digits.
    std::size_t at = 0; ///< Offset of the first byte in the statement.
    std::size_t end = 0;

    [[nodiscard]] bool isSymbol(std::string_view symbol) const { return type == Type::Symbol && text == symbol; }
    /// A word of the language in any case; names in brackets never are one.
    [[nodiscard]] bool isWord(std::string_view upperCase) const;
};

/// Cuts a statement into tokens, one at a time: a hostile statement costs no memory.
class Lexer
{
public:
    explicit Lexer(std::string_view statement);

    [[nodiscard]] Token next();
    [[nodiscard]] std::string_view statement() const { return m_statement; }

private:
    [[nodiscard]] Token name(char closing);
    [[nodiscard]] Token text(char quote);
    [[nodiscard]] Token date();
    [[nodiscard]] Token number();

    std::string_view m_statement;
    std::size_t m_position = 0;
};

/// Equality of names: ASCII and Latin-1 letters in any case.
[[nodiscard]] bool sameName(std::string_view a, std::string_view b);

} // namespace accessfile::sql
