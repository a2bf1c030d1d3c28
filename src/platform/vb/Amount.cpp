#include "platform/vb/Amount.h"

#include <array>

namespace vb {

std::optional<qint64> plainAmount(QByteArrayView utf8)
{
    constexpr qsizetype Longest = 16; // A sign, 13 digits, points and comma: more is for the general way.
    const char* at = utf8.begin();
    const char* const end = utf8.end();
    if (utf8.size() < 4 || utf8.size() > Longest)
        return std::nullopt;
    const bool negative = *at == '-';
    at += negative ? 1 : 0;
    const char* const comma = end - 3;
    if (*comma != ',' || at >= comma || (*at == '0' && comma - at > 1))
        return std::nullopt;
    qint64 hundredths = 0;
    for (; at != end; ++at) {
        if (*at >= '0' && *at <= '9')
            hundredths = hundredths * 10 + (*at - '0');
        else if (at == comma)
            continue;
        else if (*at != '.' || at > comma || (comma - at) % 4 != 0)
            return std::nullopt;
        // A fourth digit in a row would have a point behind the first one.
        if (at < comma && (comma - at) % 4 == 0 && *at != '.')
            return std::nullopt;
    }
    const char first = utf8.at(negative ? 1 : 0);
    if (first == '.' || (negative && hundredths == 0))
        return std::nullopt;
    return negative ? -hundredths : hundredths;
}

void appendAmount(std::string& utf8, Currency amount)
{
    constexpr quint64 PerHundredth = Currency::Scale / 100;
    const qint64 scaled = amount.scaled();
    const quint64 magnitude = scaled < 0 ? 0 - static_cast<quint64>(scaled) : static_cast<quint64>(scaled);
    quint64 hundredths = magnitude / PerHundredth + (magnitude % PerHundredth >= PerHundredth / 2 ? 1 : 0);

    std::array<char, 40> text{};
    std::size_t begin = text.size();
    const auto put = [&](char character) { text[--begin] = character; };
    const auto putDigit = [&] {
        put(static_cast<char>('0' + hundredths % 10));
        hundredths /= 10;
    };
    putDigit();
    putDigit();
    put(',');
    int wholeDigits = 0;
    do {
        if (wholeDigits > 0 && wholeDigits % 3 == 0)
            put('.');
        putDigit();
        ++wholeDigits;
    } while (hundredths > 0);
    if (scaled < 0) // What rounds to nothing keeps its sign.
        put('-');
    utf8.append(text.data() + begin, text.size() - begin);
}

} // namespace vb
