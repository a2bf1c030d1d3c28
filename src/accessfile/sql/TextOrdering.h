#pragma once

#include <string>
#include <string_view>
#include <vector>

// How texts are compared: by the file's order, case and trailing blanks ignored, accents not.
namespace accessfile::sql {

/// Code points; bytes that are no UTF-8 give U+FFFD.
[[nodiscard]] std::u32string codePoints(std::string_view utf8);
/// Length in UTF-16 units, the measure of a text column.
[[nodiscard]] std::size_t utf16Length(std::string_view utf8);
/// At most `count` UTF-16 units behind the first `begin`; a character of two units that is cut through is left out.
[[nodiscard]] std::string sliceUnits(std::string_view utf8, std::size_t begin, std::size_t count);

[[nodiscard]] char32_t foldCase(char32_t c);
[[nodiscard]] std::string foldCase(std::string_view utf8);

/// Bytes that order texts as the file does. Characters outside the file's order, which no index holds, come last.
[[nodiscard]] std::string orderingKey(std::string_view utf8);

/// -1, 0 or 1.
[[nodiscard]] int compareTexts(std::string_view a, std::string_view b);

/// One side of many comparisons, made ready once.
class ComparedText
{
public:
    ComparedText() = default;
    explicit ComparedText(std::string_view text);
    /// -1, 0 or 1 as `text` stands to this one.
    [[nodiscard]] int order(std::string_view text) const;
    [[nodiscard]] bool equals(std::string_view text) const;

private:
    std::string m_key;
    std::string m_folded; ///< Lower case, without trailing blanks.
    bool m_plain = false; ///< Printable ASCII alone.
};

} // namespace accessfile::sql
