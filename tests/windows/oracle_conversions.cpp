// The program's conversions between texts, numbers and dates against the system's automation library under Brazilian
// settings: random texts and values go both ways, and every answer is compared. usage: oracle_conversions [TEXTS
// [SEED]]
#include "platform/vb/Conversion.h"
#include "platform/vb/Error.h"
#include "platform/vb/Format.h"

#include <QMap>

#include <cmath>
#include <cstdio>
#include <random>

#include <qt_windows.h>

#include <oleauto.h>

namespace {

constexpr LCID Brazil = 0x0416;
constexpr int ShownPerKind = 12;

using Random = std::mt19937;

int number(Random& random, int least, int most)
{
    return std::uniform_int_distribution<int>(least, most)(random);
}

template <typename Choices>
QString pick(Random& random, const Choices& choices)
{
    return QString::fromUtf16(choices[static_cast<std::size_t>(number(random, 0, int(std::size(choices)) - 1))]);
}

QString digits(Random& random, int least, int most)
{
    QString text;
    for (int i = number(random, least, most); i > 0; --i)
        text += QChar(u'0' + number(random, 0, 9));
    return text;
}

QString numberText(Random& random)
{
    static const char16_t* const before[] = {u"",   u"",    u"",  u"",   u"-",  u"+",     u" ",
                                             u"R$", u"R$ ", u"(", u"&H", u"- ", u"\u00A0"};
    static const char16_t* const after[] = {u"",   u"",    u"",   u"",  u"-",  u" ", u")",
                                            u"e3", u"E-2", u"d5", u"%", u"R$", u"+"};
    QString text = pick(random, before) + digits(random, 0, 4);
    for (int i = number(random, 0, 2); i > 0; --i)
        text += u'.' + digits(random, number(random, 0, 3), 3);
    if (number(random, 0, 1) == 1)
        text += u',' + digits(random, 0, 6);
    if (number(random, 0, 60) == 0)
        text += digits(random, 0, 30);
    return text + pick(random, after);
}

QString dateText(Random& random)
{
    static const char16_t* const separators[] = {u"/", u"/", u"/", u"-", u".", u" "};
    static const char16_t* const months[] = {u"jan", u"fevereiro", u"mar", u"Abril", u"mai", u"dez", u"set", u"xyz"};
    static const char16_t* const times[] = {u"",         u"",       u"",          u" 10:30",
                                            u" 1:02:03", u" 25:00", u" 10:30 PM", u" 23:59:59"};
    const QString separator = pick(random, separators);
    QString text = QString::number(number(random, 0, 33));
    text += separator + (number(random, 0, 6) == 0 ? pick(random, months) : QString::number(number(random, 0, 14)));
    if (number(random, 0, 5) > 0)
        text +=
            separator + QString::number(number(random, 0, 3) == 0 ? number(random, 0, 99) : number(random, 1890, 2100));
    if (number(random, 0, 12) == 0)
        text = QString::number(number(random, 0, 24)) + u':' + QString::number(number(random, 0, 60));
    return text + pick(random, times);
}

QString junk(Random& random)
{
    static const char16_t* const pieces[] = {u"1", u"2,", u".", u"-", u"/", u":", u" ",
                                             u"e", u"R$", u"a", u"",  u"(", u"0"};
    QString text;
    for (int i = number(random, 0, 6); i > 0; --i)
        text += pick(random, pieces);
    return text;
}

double randomDouble(Random& random)
{
    const double magnitude = std::pow(10.0, number(random, -6, 17));
    double value = std::uniform_real_distribution<double>(-1, 1)(random) * magnitude;
    if (number(random, 0, 2) == 0) { // as amounts are: few decimals, often a half behind them
        const double scale = std::pow(10.0, number(random, 0, 5));
        value = std::nearbyint(value * scale) / scale;
    }
    return value;
}

/// The library only reads it.
OLECHAR* wide(const QString& text)
{
    return reinterpret_cast<OLECHAR*>(const_cast<ushort*>(text.utf16()));
}

QString errorName(HRESULT result)
{
    if (result == DISP_E_TYPEMISMATCH)
        return QStringLiteral("error 13");
    if (result == DISP_E_OVERFLOW)
        return QStringLiteral("error 6");
    return QStringLiteral("error 0x") + QString::number(static_cast<quint32>(result), 16);
}

template <typename Function>
QString own(Function function)
{
    try {
        return function();
    } catch (const vb::Error& error) {
        return QStringLiteral("error ") + QString::number(error.number());
    }
}

QString exact(double value)
{
    return QString::number(value, 'g', 17);
}

/// The text that the library's function makes, given back to it.
template <typename Function>
QString made(Function function)
{
    BSTR text = nullptr;
    const HRESULT result = function(&text);
    if (FAILED(result))
        return errorName(result);
    const QString copy = QString::fromWCharArray(text, static_cast<qsizetype>(SysStringLen(text)));
    SysFreeString(text);
    return copy;
}

class Comparison
{
public:
    void compare(const char* kind, const QString& input, const QString& mine, const QString& theirs)
    {
        Count& count = m_counts[kind];
        ++count.all;
        if (mine == theirs)
            return;
        if (++count.different <= ShownPerKind) {
            std::printf("%s \"%s\": own %s, system %s\n", kind, qPrintable(input), qPrintable(mine),
                        qPrintable(theirs));
        }
    }
    void summary() const
    {
        for (auto kind = m_counts.begin(); kind != m_counts.end(); ++kind)
            std::printf("%7d of %7d differ: %s\n", kind->different, kind->all, kind.key().constData());
    }

private:
    struct Count
    {
        int all = 0;
        int different = 0;
    };
    QMap<QByteArray, Count> m_counts;
};

void compareText(Comparison& comparison, const QString& text)
{
    double number = 0;
    HRESULT result = VarR8FromStr(wide(text), Brazil, 0, &number);
    comparison.compare("CDbl", text, own([&] { return exact(vb::CDbl(text)); }),
                       SUCCEEDED(result) ? exact(number) : errorName(result));
    LONG whole = 0;
    result = VarI4FromStr(wide(text), Brazil, 0, &whole);
    comparison.compare("CLng", text, own([&] { return QString::number(vb::CLng(text)); }),
                       SUCCEEDED(result) ? QString::number(whole) : errorName(result));
    CY money{};
    result = VarCyFromStr(wide(text), Brazil, 0, &money);
    comparison.compare("CCur", text, own([&] { return QString::number(vb::CCur(text).scaled()); }),
                       SUCCEEDED(result) ? QString::number(money.int64) : errorName(result));
    DATE date = 0;
    result = VarDateFromStr(wide(text), Brazil, 0, &date);
    comparison.compare("CDate", text, own([&] { return exact(vb::CDate(text).serial); }),
                       SUCCEEDED(result) ? exact(date) : errorName(result));
}

void compareFormat(Comparison& comparison, const char* kind, VARIANT& value, const vb::Variant& mine,
                   const QString& pattern)
{
    comparison.compare(kind, mine.textOrEmpty() + u'|' + pattern, vb::Format(mine, pattern),
                       made([&](BSTR* text) { return VarFormat(&value, wide(pattern), 0, 0, 0, text); }));
}

void compareValue(Comparison& comparison, double number)
{
    comparison.compare("CStr of a number", exact(number), vb::CStr(number),
                       made([&](BSTR* text) { return VarBstrFromR8(number, Brazil, 0, text); }));
    CY money{};
    HRESULT result = VarCyFromR8(number, &money);
    comparison.compare("CCur of a number", exact(number),
                       own([&] { return QString::number(vb::CCur(number).scaled()); }),
                       SUCCEEDED(result) ? QString::number(money.int64) : errorName(result));
    if (SUCCEEDED(result)) {
        comparison.compare("CStr of a currency", QString::number(money.int64),
                           vb::CStr(vb::Currency::fromScaled(money.int64)),
                           made([&](BSTR* text) { return VarBstrFromCy(money, Brazil, 0, text); }));
    }
    LONG whole = 0;
    result = VarI4FromR8(number, &whole);
    comparison.compare("CLng of a number", exact(number), own([&] { return QString::number(vb::CLng(number)); }),
                       SUCCEEDED(result) ? QString::number(whole) : errorName(result));
    VARIANT value{};
    value.vt = VT_R8;
    value.dblVal = number;
    for (const QString& pattern : {QStringLiteral("##,#0.00"), QStringLiteral("##,#0.000"), QStringLiteral("000")})
        compareFormat(comparison, "Format of a number", value, number, pattern);
}

void compareDate(Comparison& comparison, double serial)
{
    comparison.compare("CStr of a date", exact(serial), vb::CStr(vb::Date{serial}),
                       made([&](BSTR* text) { return VarBstrFromDate(serial, Brazil, 0, text); }));
    VARIANT value{};
    value.vt = VT_DATE;
    value.date = serial;
    for (const QString& pattern :
         {QStringLiteral("dd/mm/yyyy"), QStringLiteral("mm/dd/yyyy"), QStringLiteral("hh:mm:ss"),
          QStringLiteral("dd/mm/yy"), QStringLiteral("YYYY-MM-DD")})
        compareFormat(comparison, "Format of a date", value, vb::Date{serial}, pattern);
}

} // namespace

int main(int count, char** values)
{
    const int texts = count > 1 ? std::atoi(values[1]) : 10'000;
    Random random(count > 2 ? static_cast<unsigned>(std::atoi(values[2])) : 18U);
    Comparison comparison;
    for (int i = 0; i < texts; ++i) {
        const int kind = number(random, 0, 9);
        compareText(comparison, kind < 5 ? numberText(random) : kind < 9 ? dateText(random) : junk(random));
        compareValue(comparison, randomDouble(random));
        const double second = number(random, 0, 86399) / 86400.0;
        compareDate(comparison, number(random, -20'000, 80'000) + (number(random, 0, 1) == 0 ? 0 : second));
    }
    comparison.summary();
    return 0;
}
