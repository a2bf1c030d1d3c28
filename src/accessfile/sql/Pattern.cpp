#include "accessfile/sql/Pattern.h"

#include "accessfile/sql/TextOrdering.h"

namespace accessfile::sql {

namespace {

/// Letters that the comparison spells out.
std::u32string_view spelling(char32_t folded)
{
    switch (folded) {
    case 0xDF:
        return U"ss";
    case 0xE6:
        return U"ae";
    case 0x153:
        return U"oe";
    case 0xFE:
        return U"th";
    default:
        return {};
    }
}

struct Unit
{
    char32_t value = 0;
    char32_t letter = 0; ///< The folded letter that begins here; 0 inside a spelled-out one.
};

std::vector<Unit> units(std::string_view text)
{
    std::vector<Unit> result;
    result.reserve(text.size());
    for (const char32_t c : codePoints(text)) {
        const char32_t folded = foldCase(c);
        const std::u32string_view spelled = spelling(folded);
        if (spelled.empty()) {
            result.push_back({folded, folded});
        } else {
            result.push_back({spelled[0], folded});
            result.push_back({spelled[1], 0});
        }
    }
    return result;
}

} // namespace

Pattern::Pattern(std::string_view pattern)
{
    const std::u32string text = codePoints(pattern);
    for (std::size_t i = 0; i < text.size(); ++i) {
        Element element;
        if (text[i] == U'%') {
            element.kind = Element::Kind::AnyRun;
            // Runs of % would only multiply the work.
            if (!m_elements.empty() && m_elements.back().kind == Element::Kind::AnyRun)
                continue;
        } else if (text[i] == U'_') {
            element.kind = Element::Kind::AnyLetter;
        } else if (text[i] == U'[') {
            const std::size_t close = text.find(U']', i + 1);
            std::u32string_view members = std::u32string_view(text).substr(i + 1);
            members = close == std::u32string::npos ? members : members.substr(0, close - i - 1);
            element.kind =
                close == std::u32string::npos || members.empty() ? Element::Kind::Nothing : Element::Kind::Set;
            if (members.size() > 1 && members[0] == U'!') {
                element.negated = true;
                members.remove_prefix(1);
            }
            for (std::size_t m = 0; m < members.size(); ++m) {
                const bool range = m + 2 < members.size() && members[m + 1] == U'-';
                const char32_t last = range ? members[m + 2] : members[m];
                element.ranges.emplace_back(foldCase(members[m]), foldCase(last));
                if (range)
                    m += 2;
            }
            i = close == std::u32string::npos ? text.size() : close;
        } else {
            const char32_t folded = foldCase(text[i]);
            const std::u32string_view spelled = spelling(folded);
            element.unit = spelled.empty() ? folded : spelled[0];
            if (!spelled.empty()) {
                m_elements.push_back(element);
                element.unit = spelled[1];
            }
        }
        m_elements.push_back(std::move(element));
    }
}

bool Pattern::matches(std::string_view text) const
{
    const std::vector<Unit> subject = units(text);
    const auto letterEnd = [&](std::size_t at) {
        do
            ++at;
        while (at < subject.size() && subject[at].letter == 0);
        return at;
    };
    const auto inSet = [](const Element& set, char32_t letter) {
        for (const auto& [first, last] : set.ranges) {
            if (letter >= first && letter <= last)
                return !set.negated;
        }
        return set.negated;
    };

    // The last % is the only place to come back to: time is the product of both lengths at worst.
    std::size_t at = 0;
    std::size_t element = 0;
    std::size_t retryElement = m_elements.size() + 1;
    std::size_t retryAt = 0;
    for (;;) {
        bool fits = false;
        if (element == m_elements.size()) {
            if (at == subject.size())
                return true;
        } else if (const Element& current = m_elements[element]; current.kind == Element::Kind::AnyRun) {
            retryElement = ++element;
            retryAt = at;
            fits = true;
        } else if (at < subject.size()) {
            switch (current.kind) {
            case Element::Kind::Unit:
                fits = subject[at].value == current.unit;
                at += fits ? 1 : 0;
                break;
            case Element::Kind::AnyLetter:
                fits = true;
                at = letterEnd(at);
                break;
            case Element::Kind::Set:
                fits = subject[at].letter != 0 && inSet(current, subject[at].letter);
                at = fits ? letterEnd(at) : at;
                break;
            default:
                break;
            }
            element += fits ? 1 : 0;
        }
        if (fits)
            continue;
        if (retryElement > m_elements.size() || retryAt >= subject.size())
            return false;
        retryAt = letterEnd(retryAt);
        at = retryAt;
        element = retryElement;
    }
}

} // namespace accessfile::sql
