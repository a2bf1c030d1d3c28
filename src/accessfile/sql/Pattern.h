#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace accessfile::sql {

/// A LIKE pattern of this kind of connection: % any run, _ any one letter, [abc] [a-c] [!abc] one of a set. Case is
/// ignored; accents, trailing blanks and hyphens count. A letter that is spelled out (ß as ss) is still one letter to
/// _.
class Pattern
{
public:
    explicit Pattern(std::string_view pattern);
    [[nodiscard]] bool matches(std::string_view text) const;

private:
    struct Element
    {
        enum class Kind { Unit, AnyLetter, AnyRun, Set, Nothing };
        Kind kind = Kind::Unit;
        char32_t unit = 0;
        bool negated = false;
        std::vector<std::pair<char32_t, char32_t>> ranges;
    };

    std::vector<Element> m_elements;
};

} // namespace accessfile::sql
