#include "accessfile/format/TextOrder.h"

#include "accessfile/Storage.h"
#include "accessfile/format/Utf8.h"

#include <algorithm>
#include <array>
#include <vector>

namespace accessfile {

namespace {

/// What one character puts into a sort key.
struct Weight
{
    bool known = false;
    std::uint8_t length = 0;
    std::array<std::uint8_t, 2> primary{};
    std::uint8_t accent = 0;
    std::uint8_t ignorable = 0;
};

constexpr std::size_t longestText = 255;
constexpr std::uint8_t placeholder = 0x02;

constexpr std::array<std::uint8_t, 26> letters = {0x4A, 0x4C, 0x4D, 0x4F, 0x51, 0x53, 0x55, 0x57, 0x59,
                                                  0x5B, 0x5C, 0x5E, 0x60, 0x62, 0x64, 0x66, 0x68, 0x69,
                                                  0x6B, 0x6D, 0x6F, 0x71, 0x73, 0x75, 0x76, 0x78};

struct Special
{
    char32_t code;
    std::uint16_t primary; ///< One byte, or two when over FF.
};

constexpr Special specials[] = {
    {U' ', 0x07},     {U'!', 0x09},     {U'"', 0x0A},     {U'#', 0x0C},     {U'$', 0x0E},     {U'%', 0x10},
    {U'&', 0x12},     {U'(', 0x14},     {U')', 0x16},     {U'*', 0x18},     {U',', 0x1A},     {U'.', 0x1C},
    {U'/', 0x1E},     {U':', 0x20},     {U';', 0x22},     {U'?', 0x24},     {U'@', 0x26},     {U'[', 0x27},
    {U'\\', 0x29},    {U']', 0x2A},     {U'+', 0x2C},     {U'<', 0x2E},     {U'=', 0x30},     {U'>', 0x32},
    {U'^', 0x2B02},   {U'_', 0x2B03},   {U'`', 0x2B07},   {U'{', 0x2B09},   {U'|', 0x2B0B},   {U'}', 0x2B0D},
    {U'~', 0x2B0F},   {0x09, 0x0803},   {0x0A, 0x0804},   {0x0B, 0x0805},   {0x0C, 0x0806},   {0x0D, 0x0807},
    {0xA0, 0x0802},   {0xA1, 0x2B10},   {0xA2, 0x34A6},   {0xA3, 0x34A7},   {0xA4, 0x34A8},   {0xA5, 0x34A9},
    {0xA6, 0x2B11},   {0xA7, 0x34AA},   {0xA8, 0x2B12},   {0xA9, 0x34AB},   {0xAB, 0x3305},   {0xAC, 0x34AC},
    {0xAE, 0x34AD},   {0xAF, 0x2B13},   {0xB0, 0x34AE},   {0xB1, 0x3304},   {0xB2, 0x3A},     {0xB3, 0x3C},
    {0xB4, 0x2B14},   {0xB5, 0x34AF},   {0xB6, 0x34B0},   {0xB7, 0x34B1},   {0xB8, 0x2B15},   {0xB9, 0x38},
    {0xBB, 0x3307},   {0xBC, 0x3712},   {0xBD, 0x3716},   {0xBE, 0x371A},   {0xBF, 0x2B16},   {0xD7, 0x3309},
    {0xF7, 0x330A},   {0x20AC, 0x35A1}, {0x201A, 0x2B39}, {0x201E, 0x2B3D}, {0x2026, 0x34B9}, {0x2020, 0x34B3},
    {0x2021, 0x34B4}, {0x2030, 0x34BA}, {0x2039, 0x2B46}, {0x203A, 0x2B47}, {0x2018, 0x2B37}, {0x2019, 0x2B38},
    {0x201C, 0x2B3B}, {0x201D, 0x2B3C}, {0x2022, 0x34B5}, {0x02DC, 0x2B1C}, {0x2122, 0x6E04},
};

struct Expansion
{
    char32_t code;
    std::uint8_t first;
    std::uint8_t second;
};

constexpr Expansion expansions[] = {{0xC6, 0x4A, 0x51}, {0xE6, 0x4A, 0x51},   {0xDE, 0x6D, 0x57},  {0xFE, 0x6D, 0x57},
                                    {0xDF, 0x6B, 0x6B}, {0x0152, 0x64, 0x51}, {0x0153, 0x64, 0x51}};

struct Accented
{
    char32_t code;
    char base;
    std::uint8_t accent;
};

constexpr std::uint8_t grave = 0x0F;
constexpr std::uint8_t acute = 0x0E;
constexpr std::uint8_t circumflex = 0x12;
constexpr std::uint8_t tilde = 0x19;
constexpr std::uint8_t diaeresis = 0x13;
constexpr std::uint8_t caron = 0x14;

/// Capital letters; those of Latin-1 also stand for their small forms, 20 further on.
constexpr Accented accentedLetters[] = {
    {0xC0, 'A', grave},     {0xC1, 'A', acute},      {0xC2, 'A', circumflex}, {0xC3, 'A', tilde},
    {0xC4, 'A', diaeresis}, {0xC5, 'A', 0x1A},       {0xC7, 'C', 0x1C},       {0xC8, 'E', grave},
    {0xC9, 'E', acute},     {0xCA, 'E', circumflex}, {0xCB, 'E', diaeresis},  {0xCC, 'I', grave},
    {0xCD, 'I', acute},     {0xCE, 'I', circumflex}, {0xCF, 'I', diaeresis},  {0xD0, 'D', 0x68},
    {0xD1, 'N', tilde},     {0xD2, 'O', grave},      {0xD3, 'O', acute},      {0xD4, 'O', circumflex},
    {0xD5, 'O', tilde},     {0xD6, 'O', diaeresis},  {0xD8, 'O', 0x21},       {0xD9, 'U', grave},
    {0xDA, 'U', acute},     {0xDB, 'U', circumflex}, {0xDC, 'U', diaeresis},  {0xDD, 'Y', acute},
};

constexpr Accented otherAccented[] = {
    {0xFF, 'Y', diaeresis}, {0xAA, 'A', 0x03},    {0xBA, 'O', 0x03},    {0x0192, 'F', 0x7B},      {0x0160, 'S', caron},
    {0x0161, 'S', caron},   {0x017D, 'Z', caron}, {0x017E, 'Z', caron}, {0x0178, 'Y', diaeresis},
};

class Order
{
public:
    Order()
    {
        for (char32_t i = 0; i < 26; ++i) {
            at(U'A' + i) = single(letters[i]);
            at(U'a' + i) = single(letters[i]);
        }
        for (char32_t i = 0; i < 10; ++i)
            at(U'0' + i) = single(static_cast<std::uint8_t>(0x36 + 2 * i));
        for (const Special& special : specials)
            at(special.code) = single(special.primary);
        for (const Expansion& each : expansions)
            at(each.code) = {true, 2, {each.first, each.second}, 0, 0};
        for (const Accented& each : accentedLetters) {
            at(each.code) = accented(each);
            at(each.code + 0x20) = accented(each);
        }
        for (const Accented& each : otherAccented)
            at(each.code) = accented(each);
        at(0x02C6) = single(0x2B02);
        at(0x02C6).accent = 0x03;

        at(0).known = true;
        for (char32_t code = 0x01; code <= 0x08; ++code)
            ignorable(code, 0x03 + (code - 0x01));
        for (char32_t code = 0x0E; code <= 0x1F; ++code)
            ignorable(code, 0x0B + (code - 0x0E));
        ignorable(0x7F, 0x1D);
        for (char32_t code = 0x80; code <= 0x9F; ++code)
            ignorable(code, 0x1E + (code - 0x80));
        ignorable(U'\'', 0x80);
        ignorable(U'-', 0x82);
        ignorable(0xAD, 0x83);
        ignorable(0x2013, 0x89);
        ignorable(0x2014, 0x8B);
    }
    [[nodiscard]] const Weight* find(char32_t code) const
    {
        if (code < m_latin.size())
            return m_latin[code].known ? &m_latin[code] : nullptr;
        const auto found =
            std::find_if(m_others.begin(), m_others.end(), [code](const auto& each) { return each.first == code; });
        return found == m_others.end() ? nullptr : &found->second;
    }

private:
    static Weight single(std::uint16_t primary)
    {
        Weight weight{true, 1, {static_cast<std::uint8_t>(primary & 0xFF), 0}, 0, 0};
        if (primary > 0xFF) {
            weight.length = 2;
            weight.primary = {static_cast<std::uint8_t>(primary >> 8), static_cast<std::uint8_t>(primary & 0xFF)};
        }
        return weight;
    }
    static Weight accented(const Accented& letter)
    {
        Weight weight = single(letters[static_cast<std::size_t>(letter.base - 'A')]);
        weight.accent = letter.accent;
        return weight;
    }
    Weight& at(char32_t code)
    {
        if (code < m_latin.size())
            return m_latin[code];
        for (auto& each : m_others) {
            if (each.first == code)
                return each.second;
        }
        return m_others.emplace_back(code, Weight{}).second;
    }
    void ignorable(char32_t code, char32_t mark) { at(code) = {true, 0, {}, 0, static_cast<std::uint8_t>(mark)}; }
    std::array<Weight, 256> m_latin{};
    std::vector<std::pair<char32_t, Weight>> m_others;
};

} // namespace

bool appendTextKey(std::string_view utf8, Bytes& key)
{
    static const Order order;
    while (!utf8.empty() && utf8.back() == ' ')
        utf8.remove_suffix(1);
    Bytes extra;
    Bytes ignorables;
    // Places count characters: a letter that expands to two weights is one, as in the files of Access 2003.
    std::size_t characters = 0;
    std::size_t counted = 0; ///< Characters that `extra` has accounted for.
    std::size_t units = 0;
    for (std::size_t at = 0; at < utf8.size() && units < longestText;) {
        const char32_t code = nextCodePoint(utf8, at);
        ++units;
        const Weight* weight = order.find(code);
        if (weight == nullptr)
            return false;
        const std::size_t before = characters;
        key.insert(key.end(), weight->primary.begin(), weight->primary.begin() + weight->length);
        characters += weight->length > 0 ? 1 : 0;
        if (weight->accent != 0) {
            for (; counted < before; ++counted)
                extra.push_back(placeholder);
            extra.push_back(weight->accent);
            ++counted;
        }
        if (weight->ignorable != 0) {
            const std::size_t position = extra.empty() ? before : extra.size() + (before - counted);
            const std::size_t place = 0x8000 | (7 + 4 * position);
            ignorables.push_back(static_cast<std::uint8_t>(place >> 8 & 0xFF));
            ignorables.push_back(static_cast<std::uint8_t>(place & 0xFF));
            ignorables.push_back(0x06);
            ignorables.push_back(weight->ignorable);
        }
    }
    while (!extra.empty() && extra.back() <= placeholder)
        extra.pop_back();
    key.push_back(0x01);
    append(key, extra);
    if (!ignorables.empty()) {
        key.insert(key.end(), 3, std::uint8_t{0x01});
        append(key, ignorables);
    }
    key.push_back(0x00);
    return true;
}

std::optional<std::string> textSortKey(std::string_view utf8)
{
    Bytes key;
    if (!appendTextKey(utf8, key))
        return std::nullopt;
    return std::string(key.begin(), key.end());
}

} // namespace accessfile
