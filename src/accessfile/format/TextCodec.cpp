#include "accessfile/format/TextCodec.h"

#include "accessfile/Error.h"
#include "accessfile/format/Utf8.h"

#include <algorithm>

namespace accessfile {

namespace {

/// Turns UTF-16 units into UTF-8, one unit at a time; the two modes of compressed text share it.
class Utf16Reader
{
public:
    explicit Utf16Reader(std::string& out)
        : m_out(out)
    {}
    void unit(char32_t code)
    {
        if (m_high != 0) {
            const char32_t high = m_high;
            m_high = 0;
            if (code >= 0xDC00 && code <= 0xDFFF) {
                appendCodePoint(0x10000 + ((high - 0xD800) << 10) + (code - 0xDC00), m_out);
                return;
            }
            appendCodePoint(replacement, m_out);
        }
        if (code >= 0xD800 && code <= 0xDBFF)
            m_high = code;
        else
            appendCodePoint(isSurrogate(code) ? replacement : code, m_out);
    }
    void finish()
    {
        if (m_high != 0)
            appendCodePoint(replacement, m_out);
        m_high = 0;
    }

private:
    std::string& m_out;
    char32_t m_high = 0;
};

} // namespace

void appendUtf16(ByteView bytes, std::string& out)
{
    Utf16Reader reader(out);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        reader.unit(load16(bytes.data() + i));
    reader.finish();
}

Bytes toUtf16(std::string_view utf8)
{
    Bytes out;
    out.reserve(utf8.size() * 2);
    for (std::size_t at = 0; at < utf8.size();) {
        const std::size_t start = at;
        const char32_t code = nextCodePoint(utf8, at);
        if (code == replacement && at - start == 1)
            throw Error(ErrorKind::TypeMismatch, "O texto não está em UTF-8.");
        if (code < 0x10000) {
            append16(out, code);
        } else {
            append16(out, 0xD800 + ((code - 0x10000) >> 10));
            append16(out, 0xDC00 + ((code - 0x10000) & 0x3FF));
        }
    }
    return out;
}

void appendStoredText(ByteView stored, std::string& out)
{
    if (stored.size() < 2 || stored[0] != 0xFF || stored[1] != 0xFE) {
        appendUtf16(stored, out);
        return;
    }
    Utf16Reader reader(out);
    bool narrow = true;
    for (std::size_t i = 2; i < stored.size();) {
        if (stored[i] == 0) {
            narrow = !narrow;
            ++i;
        } else if (narrow) {
            reader.unit(stored[i]);
            ++i;
        } else if (i + 1 < stored.size()) {
            reader.unit(load16(stored.data() + i));
            i += 2;
        } else {
            break;
        }
    }
    reader.finish();
}

Bytes toStoredText(std::string_view utf8, bool compress)
{
    Bytes plain = toUtf16(utf8);
    if (plain.size() >= 2 && load16(plain.data()) == 0xFEFF)
        throw Error(ErrorKind::TypeMismatch, "O texto começa com um caractere que o formato não distingue.");
    if (!compress || plain.size() < 6)
        return plain;
    for (std::size_t i = 0; i < plain.size(); i += 2) {
        if (plain[i + 1] != 0 || plain[i] == 0)
            return plain;
    }
    Bytes packed = {0xFF, 0xFE};
    packed.reserve(2 + plain.size() / 2);
    for (std::size_t i = 0; i < plain.size(); i += 2)
        packed.push_back(plain[i]);
    return packed;
}

std::string foldName(std::string_view utf8)
{
    std::string folded;
    folded.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        char32_t code = nextCodePoint(utf8, at);
        if ((code >= U'A' && code <= U'Z') || (code >= 0xC0 && code <= 0xDE && code != 0xD7))
            code += 0x20;
        appendCodePoint(code, folded);
    }
    return folded;
}

bool sameName(std::string_view left, std::string_view right)
{
    return foldName(left) == foldName(right);
}

} // namespace accessfile
