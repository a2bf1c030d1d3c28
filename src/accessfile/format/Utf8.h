#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Texts in memory are UTF-8; this is the one place that takes them apart.
namespace accessfile {

/// What stands for a character that cannot be read.
inline constexpr char32_t replacement = 0xFFFD;

[[nodiscard]] inline bool isSurrogate(char32_t code)
{
    return code >= 0xD800 && code <= 0xDFFF;
}

/// Appends one code point as UTF-8.
inline void appendCodePoint(char32_t code, std::string& out)
{
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6);
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3F));
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    }
}

/// Next code point of a UTF-8 text; `at` moves past it. Malformed bytes give U+FFFD and move by one.
[[nodiscard]] char32_t nextCodePoint(std::string_view utf8, std::size_t& at);

[[nodiscard]] bool isValidUtf8(std::string_view text);

} // namespace accessfile
