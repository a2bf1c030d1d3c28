#include "platform/vb/NumberText.h"

#include <cmath>
#include <cstring>

namespace vb {

namespace {

constexpr QStringView CurrencySymbol = u"R$";
constexpr int ExponentLimit = 99'999;

// Takes digits one by one; leading zeros never become digits.
class DigitReader
{
public:
    explicit DigitReader(Decimal& decimal)
        : m_decimal(decimal)
    {}

    void take(QChar digit)
    {
        m_any = true;
        if (digit == u'0' && m_decimal.digits.isEmpty()) {
            if (m_behindPoint)
                --m_decimal.point;
            return;
        }
        m_decimal.digits.append(static_cast<char>(digit.unicode()));
        if (!m_behindPoint)
            ++m_decimal.point;
    }
    void takePoint() { m_behindPoint = true; }
    [[nodiscard]] bool behindPoint() const { return m_behindPoint; }
    [[nodiscard]] bool any() const { return m_any; }

private:
    Decimal& m_decimal;
    bool m_behindPoint = false;
    bool m_any = false;
};

bool isExponentMark(QChar character)
{
    return character == u'e' || character == u'E' || character == u'd' || character == u'D';
}

int digitValue(QChar character)
{
    const char16_t code = character.unicode();
    if (code >= u'0' && code <= u'9')
        return code - u'0';
    const char16_t lower = code | 0x20;
    return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : 99;
}

// Behind '&': H and hexadecimal digits, O or nothing and octal digits. False when there is no digit; too many digits
// set `overflow`.
bool readBits(QStringView text, qsizetype& at, quint64& bits, bool& overflow)
{
    int shift = 3;
    qsizetype next = at + 1;
    if (next < text.size() && (text[next] == u'h' || text[next] == u'H')) {
        shift = 4;
        ++next;
    } else if (next < text.size() && (text[next] == u'o' || text[next] == u'O')) {
        ++next;
    }
    const qsizetype first = next;
    for (; next < text.size() && digitValue(text[next]) < (1 << shift); ++next) {
        overflow = overflow || (bits >> (64 - shift)) != 0;
        bits = (bits << shift) | static_cast<quint64>(digitValue(text[next]));
    }
    if (next == first)
        return false;
    at = next;
    return true;
}

// At an exponent mark: reads it with its sign and digits. False, and nothing taken, when there is no digit.
bool readExponent(QStringView text, qsizetype& at, int& exponent)
{
    qsizetype next = at + 1;
    bool negative = false;
    if (next < text.size() && (text[next] == u'+' || text[next] == u'-'))
        negative = text[next++] == u'-';
    const qsizetype first = next;
    int value = 0;
    for (; next < text.size() && isDigit(text[next]); ++next)
        value = qMin(value * 10 + text[next].digitValue(), ExponentLimit);
    if (next == first)
        return false;
    exponent = negative ? -value : value;
    at = next;
    return true;
}

} // namespace

NumberText readNumber(QStringView text)
{
    NumberText result;
    const qsizetype size = text.size();
    qsizetype at = 0;
    bool sign = false;
    bool minus = false;
    bool bracket = false;
    bool currency = false;
    const auto takeAround = [&]() {
        const QChar character = text[at];
        if (isBlank(character)) {
            ++at;
            return true;
        }
        if ((character == u'-' || character == u'+') && !sign && !bracket) {
            sign = true;
            minus = character == u'-';
            ++at;
            return true;
        }
        if (!currency && text.sliced(at).startsWith(CurrencySymbol)) {
            currency = true;
            at += CurrencySymbol.size();
            return true;
        }
        return false;
    };

    while (at < size) {
        if (text[at] == u'(' && !bracket && !sign) {
            bracket = true;
            ++at;
        } else if (!takeAround()) {
            break;
        }
    }

    Decimal& decimal = result.decimal;
    int exponent = 0;
    bool overflow = false;
    if (at < size && text[at] == u'&') {
        quint64 bits = 0;
        if (!readBits(text, at, bits, overflow))
            return result;
        decimal = Decimal::fromUnsigned(bits);
        result.bits = bits;
    } else {
        DigitReader digits(decimal);
        for (; at < size; ++at) {
            const QChar character = text[at];
            if (isDigit(character))
                digits.take(character);
            else if (character == u',' && !digits.behindPoint())
                digits.takePoint();
            else if (character != u'.' || digits.behindPoint())
                break;
        }
        if (!digits.any())
            return result;
        if (at < size && isExponentMark(text[at]) && !readExponent(text, at, exponent))
            return result;
        decimal.dropTrailingZeros();
    }

    bool open = bracket;
    while (at < size) {
        if (text[at] == u')' && open) {
            open = false;
            ++at;
        } else if (!takeAround()) {
            return result;
        }
    }
    if (open)
        return result;

    if (!decimal.isZero()) {
        decimal.negative = minus || bracket;
        decimal.point += exponent;
        // Only a number near the edge of a double needs the conversion to know.
        overflow = overflow || (decimal.point > 308 && std::isinf(decimal.toDouble()));
    }
    result.status = overflow ? NumberStatus::Overflow : NumberStatus::Ok;
    return result;
}

double leadingPart(QStringView text, char16_t decimalPoint, char16_t skipped)
{
    QVarLengthArray<QChar, 64> kept;
    for (const QChar character : text) {
        if (!isBlank(character))
            kept.append(character);
    }
    const QStringView packed(kept.data(), kept.size());
    qsizetype at = 0;
    if (packed.startsWith(u'&')) {
        quint64 bits = 0;
        bool overflow = false;
        if (!readBits(packed, at, bits, overflow) || overflow)
            return 0;
        // Short texts are 16-bit and 32-bit numbers in two's complement; a closing '&' asks for 32 bits.
        const bool wide = at < packed.size() && packed[at] == u'&';
        if (bits <= 0xFFFF && !wide)
            return static_cast<qint16>(bits);
        if (bits <= 0xFFFF'FFFF)
            return static_cast<qint32>(bits);
        return static_cast<double>(bits);
    }

    Decimal decimal;
    if (at < packed.size() && (packed[at] == u'-' || packed[at] == u'+'))
        decimal.negative = packed[at++] == u'-';
    DigitReader digits(decimal);
    for (; at < packed.size(); ++at) {
        const QChar character = packed[at];
        if (isDigit(character))
            digits.take(character);
        else if (character == decimalPoint && !digits.behindPoint())
            digits.takePoint();
        else if (skipped == 0 || character != skipped || digits.behindPoint())
            break;
    }
    decimal.dropTrailingZeros();
    if (!digits.any() || decimal.isZero())
        return 0;
    int exponent = 0;
    if (at < packed.size() && isExponentMark(packed[at]))
        readExponent(packed, at, exponent);
    const double plain = decimal.toDouble();
    decimal.point += exponent;
    const double whole = decimal.toDouble();
    return std::isinf(whole) ? plain : whole; // an exponent beyond any number is no part of one
}

QString fixedText(const Decimal& decimal, char16_t decimalPoint)
{
    if (decimal.isZero())
        return QStringLiteral("0");
    QString text;
    text.reserve(decimal.digits.size() + qAbs(decimal.point) + 4);
    if (decimal.negative)
        text += u'-';
    const auto count = static_cast<int>(decimal.digits.size());
    if (decimal.point <= 0)
        text += u'0';
    for (int i = 0; i < decimal.point; ++i)
        text += i < count ? QLatin1Char(decimal.digits[i]) : QLatin1Char('0');
    if (count > decimal.point) {
        text += QChar(decimalPoint);
        for (int i = decimal.point; i < count; ++i)
            text += i < 0 ? QLatin1Char('0') : QLatin1Char(decimal.digits[i]);
    }
    return text;
}

QString plainText(const Decimal& decimal, char16_t decimalPoint)
{
    constexpr int MostDigits = 15;
    constexpr int LowestExponent = -4;
    const int exponent = decimal.point - 1;
    const auto decimals = static_cast<int>(decimal.digits.size()) - decimal.point;
    // A plain form of more than 15 decimals gives way to the exponent: 1/12 reads 8,33333333333333E-02.
    if (decimal.isZero() || (exponent < MostDigits && exponent >= LowestExponent && decimals <= MostDigits))
        return fixedText(decimal, decimalPoint);
    Decimal mantissa = decimal;
    mantissa.point = 1;
    const QLatin1String mark(exponent < 0 ? "E-" : "E+");
    return fixedText(mantissa, decimalPoint) + mark + QString::number(qAbs(exponent)).rightJustified(2, u'0');
}

} // namespace vb
