#include "accessfile/format/Utf8.h"

namespace accessfile {

char32_t nextCodePoint(std::string_view utf8, std::size_t& at)
{
    const auto byte = [&](std::size_t i) { return static_cast<char32_t>(static_cast<unsigned char>(utf8[i])); };
    const char32_t lead = byte(at);
    const std::size_t left = utf8.size() - at;
    std::size_t length = 1;
    char32_t code = lead;
    char32_t least = 0;
    if (lead >= 0xF0 && lead < 0xF8) {
        length = 4;
        code = lead & 0x07;
        least = 0x10000;
    } else if (lead >= 0xE0 && lead < 0xF0) {
        length = 3;
        code = lead & 0x0F;
        least = 0x800;
    } else if (lead >= 0xC0 && lead < 0xE0) {
        length = 2;
        code = lead & 0x1F;
        least = 0x80;
    } else if (lead >= 0x80) {
        ++at;
        return replacement;
    }
    if (length > left) {
        ++at;
        return replacement;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80) {
            ++at;
            return replacement;
        }
        code = code << 6 | (byte(at + i) & 0x3F);
    }
    if (code < least || code > 0x10FFFF || isSurrogate(code)) {
        ++at;
        return replacement;
    }
    at += length;
    return code;
}

bool isValidUtf8(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        if (nextCodePoint(text, at) == replacement && at - start == 1)
            return false;
    }
    return true;
}

} // namespace accessfile
