#include "platform/vb/Amount.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Error.h"
#include "platform/vb/Format.h"

#include <QTest>

#include <charconv>
#include <clocale>
#include <cmath>
#include <limits>
#include <random>

using namespace vb;

namespace {

constexpr auto NoNumber = std::numeric_limits<double>::quiet_NaN();

Variant currency(qint64 scaled)
{
    return Currency::fromScaled(scaled);
}

Variant day(int year, int month, int dayOfMonth, QTime time = QTime(0, 0))
{
    return Date::fromQDateTime(QDateTime(QDate(year, month, dayOfMonth), time));
}

// The text of a result, or "error n".
template <class Function>
QString outcome(Function function)
{
    try {
        return CStr(Variant(function()));
    } catch (const Error& error) {
        return QStringLiteral("error ") + QString::number(error.number());
    }
}

struct TextNumber
{
    const char16_t* text;
    double number;
};

struct TextText
{
    const char16_t* text;
    const char16_t* expected;
};

struct Formatted
{
    Variant value;
    const char16_t* pattern;
    const char16_t* expected;
};

QString q(const char16_t* text)
{
    return QString::fromUtf16(text);
}

Variant t(const char16_t* text)
{
    return q(text);
}

template <class Row, std::size_t Size, class Add>
void addRows(const Row (&rows)[Size], Add add)
{
    for (std::size_t i = 0; i < Size; ++i)
        add(QTest::addRow("%zu", i), rows[i]);
}

} // namespace

class TestConversions : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void textsAsNumbers_data();
    void textsAsNumbers();
    void leadingParts_data();
    void leadingParts();
    void wholeNumbersAndMoney_data();
    void wholeNumbersAndMoney();
    void plainTexts_data();
    void plainTexts();
    void textsAsDates_data();
    void textsAsDates();
    void formats_data();
    void formats();
    void dateTypeKeepsDayAndTimeApart();
    void currencyArithmetic();
    void nullAndKinds();
    void shortcutsEqualTheGeneralWay();
    void amountsEqualTheGeneralWay();
};

void TestConversions::initTestCase()
{
    // Nothing may depend on the machine's settings, not even on a point-decimal or a comma-decimal C library.
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    QLocale::setDefault(QLocale(QLocale::English));
}

void TestConversions::textsAsNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("number");
    const TextNumber rows[] = {
        {u"1.234,5", 1234.5},
        {u"1234,5", 1234.5},
        {u"0", 0},
        {u"007", 7},
        {u",5", 0.5},
        {u"5,", 5},
        {u"  7 ", 7},
        {u"\t7\r\n", 7},
        {u"\u00A07\u00A0", 7},
        {u"1.2.3", 123},
        {u"1..2", 12},
        {u".5", 5},
        {u"10.50", 1050},
        {u"1.5,", 15},
        {u"1.234.567,891", 1234567.891},
        {u"R$ 5", 5},
        {u"R$1.234,56", 1234.56},
        {u"-R$ 5", -5},
        {u"R$ -5", -5},
        {u"5 R$", 5},
        {u"-5", -5},
        {u"+5", 5},
        {u"- 5", -5},
        {u"5-", -5},
        {u"5 -", -5},
        {u"5+", 5},
        {u"(5)", -5},
        {u"( 1.234,50 )", -1234.5},
        {u"(R$ 5)", -5},
        {u"1e3", 1000},
        {u"1D3", 1000},
        {u"1,5e2", 150},
        {u"1,5E-2", 0.015},
        {u"2e+2", 200},
        {u"1e-400", 0},
        {u"0e999", 0},
        {u"&H10", 16},
        {u"&hff", 255},
        {u"&O17", 15},
        {u"&17", 15},
        {u"-0", 0},
        {u"0,1", 0.1},
        {u"9007199254740993", 9007199254740992.0},
        {u"123456789012345,678901234567890", 123456789012345.678901234567890},
        {u"0,000000000000000000000000000001", 1e-30},
        {u"1,7976931348623157e308", 1.7976931348623157e308},
        {u"", NoNumber},
        {u" ", NoNumber},
        {u"-", NoNumber},
        {u",", NoNumber},
        {u".", NoNumber},
        {u"-,", NoNumber},
        {u"R$", NoNumber},
        {u"()", NoNumber},
        {u"(5", NoNumber},
        {u"5)", NoNumber},
        {u"(-5)", NoNumber},
        {u"--5", NoNumber},
        {u"-5-", NoNumber},
        {u"1,2,3", NoNumber},
        {u"1,2.3", NoNumber},
        {u"1 000", NoNumber},
        {u"1e", NoNumber},
        {u"1e+", NoNumber},
        {u"e3", NoNumber},
        {u"1e2,5", NoNumber},
        {u"1e2e3", NoNumber},
        {u"&H", NoNumber},
        {u"&HG", NoNumber},
        {u"&O8", NoNumber},
        {u"12:30", NoNumber},
        {u"01/02/2024", NoNumber},
        {u"abc", NoNumber},
        {u"5 lts", NoNumber},
        {u"$5", NoNumber},
        {u"5%", NoNumber},
        {u"True", NoNumber},
        {u"\u0665", NoNumber},
    };
    addRows(rows, [](QTestData& data, const TextNumber& row) { data << q(row.text) << row.number; });
}

void TestConversions::textsAsNumbers()
{
    QFETCH(QString, text);
    QFETCH(double, number);
    const bool numeric = !std::isnan(number);
    QCOMPARE(IsNumeric(text), numeric);
    QCOMPARE(parseNumber(text).has_value(), numeric);
    if (!numeric) {
        QCOMPARE(outcome([&] { return CDbl(text); }), QStringLiteral("error 13"));
        return;
    }
    QVERIFY2(CDbl(text) == number, qPrintable(QString::number(CDbl(text), 'g', 17)));
}

void TestConversions::leadingParts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("byPoint");
    QTest::addColumn<double>("byComma");
    struct Row
    {
        const char16_t* text;
        double byPoint;
        double byComma;
    };
    const Row rows[] = {
        {u"00012 - GASOLINA", 12, 12},
        {u"12abc", 12, 12},
        {u"", 0, 0},
        {u"-", 0, 0},
        {u"abc", 0, 0},
        {u"1.234,5", 1.234, 1234.5},
        {u"1234,56", 1234, 1234.56},
        {u"-3,25x", -3, -3.25},
        {u"+3.5", 3.5, 35},
        {u" 1 615 198th", 1615198, 1615198},
        {u".5", 0.5, 5},
        {u",5", 0, 0.5},
        {u"1.2.3", 1.2, 123},
        {u"1,2,3", 1, 1.2},
        {u"1,2.3", 1, 1.2},
        {u"1e3", 1000, 1000},
        {u"2d-1", 0.2, 0.2},
        {u"1e", 1, 1},
        {u"7e999", 7, 7},
        {u"R$ 5", 0, 0},
        {u"&H10", 16, 16},
        {u"&HFFFF", -1, -1},
        {u"&HFFFF&", 65535, 65535},
        {u"&HFFFFFFFF", -1, -1},
        {u"&O17", 15, 15},
        {u"&", 0, 0},
        {u"0 - 5", 0, 0},
    };
    addRows(rows, [](QTestData& data, const Row& row) { data << q(row.text) << row.byPoint << row.byComma; });
}

void TestConversions::leadingParts()
{
    QFETCH(QString, text);
    QTEST(Val(text), "byPoint");
    QTEST(leadingNumber(text), "byComma");
}

void TestConversions::wholeNumbersAndMoney_data()
{
    QTest::addColumn<Variant>("value");
    QTest::addColumn<QString>("asInteger");
    QTest::addColumn<QString>("asLong");
    QTest::addColumn<QString>("asCurrency");
    struct Row
    {
        Variant value;
        const char16_t* asInteger;
        const char16_t* asLong;
        const char16_t* asCurrency;
    };
    const Row rows[] = {
        {0.5, u"0", u"0", u"0,5"},
        {1.5, u"2", u"2", u"1,5"},
        {2.5, u"2", u"2", u"2,5"},
        {-0.5, u"0", u"0", u"-0,5"},
        {-1.5, u"-2", u"-2", u"-1,5"},
        {-2.5, u"-2", u"-2", u"-2,5"},
        {2.5000001, u"3", u"3", u"2,5"},
        {t(u"2,5"), u"2", u"2", u"2,5"},
        {t(u"3,5"), u"4", u"4", u"3,5"},
        {t(u"2,50000000000000000000001"), u"3", u"3", u"2,5"},
        {t(u"-0,4"), u"0", u"0", u"-0,4"},
        {currency(25'000), u"2", u"2", u"2,5"},
        {currency(35'001), u"4", u"4", u"3,5001"},
        {t(u"0,00005"), u"0", u"0", u"0"},
        {t(u"0,00015"), u"0", u"0", u"0,0002"},
        {t(u"0,00025"), u"0", u"0", u"0,0002"},
        {t(u"-0,00015"), u"0", u"0", u"-0,0002"},
        {t(u"0,000050001"), u"0", u"0", u"0,0001"},
        {t(u"0,000009"), u"0", u"0", u"0"},
        {0.03125, u"0", u"0", u"0,0312"},
        {0.09375, u"0", u"0", u"0,0938"},
        {1.00705, u"1", u"1", u"1,007"}, // a half only as a product of doubles, which is deliberate
        {1.00005, u"1", u"1", u"1,0001"},
        {1.00015, u"1", u"1", u"1,0002"},
        {1234.56789, u"1235", u"1235", u"1234,5679"},
        {32767.4, u"32767", u"32767", u"32767,4"},
        {32767.5, u"error 6", u"32768", u"32767,5"},
        {-32768.5, u"-32768", u"-32768", u"-32768,5"},
        {2147483647.5, u"error 6", u"error 6", u"2147483647,5"},
        {t(u"2147483647,4"), u"error 6", u"2147483647", u"2147483647,4"},
        {t(u"-2147483648,5"), u"error 6", u"-2147483648", u"-2147483648,5"},
        {qint64{3'000'000'000}, u"error 6", u"error 6", u"3000000000"},
        {t(u"922337203685477,5807"), u"error 6", u"error 6", u"922337203685477,5807"},
        {t(u"-922337203685477,5808"), u"error 6", u"error 6", u"-922337203685477,5808"},
        {t(u"922337203685477,5808"), u"error 6", u"error 6", u"error 6"},
        {t(u"1e400"), u"error 6", u"error 6", u"error 6"},
        {1e300, u"error 6", u"error 6", u"error 6"},
        {NoNumber, u"error 6", u"error 6", u"error 6"},
        {t(u"&HFFFF"), u"-1", u"65535", u"65535"},
        {t(u"&HFFFFFFFF"), u"error 6", u"-1", u"4294967295"},
        {t(u"1.234,50"), u"1234", u"1234", u"1234,5"},
        {day(1900, 1, 1, QTime(12, 0)), u"2", u"2", u"2,5"},
        {t(u""), u"error 13", u"error 13", u"error 13"},
        {t(u"12:30"), u"error 13", u"error 13", u"error 13"},
        {Variant(), u"error 94", u"error 94", u"error 94"},
    };
    addRows(rows, [](QTestData& data, const Row& row) {
        data << row.value << q(row.asInteger) << q(row.asLong) << q(row.asCurrency);
    });
}

void TestConversions::wholeNumbersAndMoney()
{
    QFETCH(Variant, value);
    QTEST(outcome([&] { return CInt(value); }), "asInteger");
    QTEST(outcome([&] { return CLng(value); }), "asLong");
    QTEST(outcome([&] { return CCur(value); }), "asCurrency");
}

void TestConversions::plainTexts_data()
{
    QTest::addColumn<Variant>("value");
    QTest::addColumn<QString>("expected");
    struct Row
    {
        Variant value;
        const char16_t* expected;
    };
    const Row rows[] = {
        {0, u"0"},
        {-42, u"-42"},
        {qint64{1'234'567'890'123}, u"1234567890123"},
        {0.0, u"0"},
        {-0.0, u"0"},
        {0.1, u"0,1"},
        {0.1 + 0.2, u"0,3"},
        {-1234.5, u"-1234,5"},
        {1.0 / 3.0, u"0,333333333333333"},
        {2.0 / 3.0, u"0,666666666666667"},
        {1.0 / 12.0, u"8,33333333333333E-02"},
        {0.0001, u"0,0001"},
        {0.00001, u"1E-05"},
        {-1.5e-7, u"-1,5E-07"},
        {123456789012345.0, u"123456789012345"},
        {999999999999999.0, u"999999999999999"},
        {999999999999999.9, u"1E+15"},
        {1e15, u"1E+15"},
        {1.2345e100, u"1,2345E+100"},
        {currency(0), u"0"},
        {currency(12'345'600), u"1234,56"},
        {currency(-1), u"-0,0001"},
        {currency(std::numeric_limits<qint64>::min()), u"-922337203685477,5808"},
        {t(u" como está "), u" como está "},
        {day(2024, 3, 5), u"05/03/2024"},
        {day(2024, 3, 5, QTime(7, 8, 9)), u"05/03/2024 07:08:09"},
        {day(1899, 12, 30), u"00:00:00"},
        {day(1899, 12, 30, QTime(13, 5)), u"13:05:00"},
        {Date{-1.25}, u"29/12/1899 06:00:00"},
        {Date{-0.25}, u"06:00:00"},
        {day(2024, 2, 29, QTime(23, 59, 59, 700)), u"01/03/2024"},
    };
    addRows(rows, [](QTestData& data, const Row& row) { data << row.value << q(row.expected); });
}

void TestConversions::plainTexts()
{
    QFETCH(Variant, value);
    QTEST(CStr(value), "expected");
    QTEST(value.text(), "expected");
    QTEST(value.textOrEmpty(), "expected");
}

void TestConversions::textsAsDates_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected"); // empty: no date
    const TextText rows[] = {
        {u"05/03/2024", u"05/03/2024"},
        {u"5/3/24", u"05/03/2024"},
        {u"  05/03/2024  ", u"05/03/2024"},
        {u"05-03-2024", u"05/03/2024"},
        {u"05.03.2024", u"05/03/2024"},
        {u"03/15/2024", u"15/03/2024"},
        {u"2024-03-05", u"05/03/2024"},
        {u"2024/03/15", u"15/03/2024"},
        {u"99/12/31", u"31/12/1999"},
        {u"01/01/29", u"01/01/2029"},
        {u"01/01/30", u"01/01/1930"},
        {u"01/01/00", u"01/01/2000"},
        {u"01/01/99", u"01/01/1999"},
        {u"30/02/24", u"24/02/1930"},
        {u"29/02/2024", u"29/02/2024"},
        {u"01/01/0100", u"01/01/0100"},
        {u"31/12/9999", u"31/12/9999"},
        {u"1899-12-30", u"00:00:00"},
        {u"30/12/1899 06:00", u"06:00:00"},
        {u"29/12/1899 06:00", u"29/12/1899 06:00:00"},
        {u"05/2024", u"01/05/2024"},
        {u"12:30", u"12:30:00"},
        {u"7:08:09", u"07:08:09"},
        {u"0:00", u"00:00:00"},
        {u"12:15 AM", u"00:15:00"},
        {u"1:15 pm", u"13:15:00"},
        {u"3 PM", u"15:00:00"},
        {u"05/03/2024 10:20:30", u"05/03/2024 10:20:30"},
        {u"2024-03-05 10:20:30", u"05/03/2024 10:20:30"},
        {u"10:20 05/03/2024", u"05/03/2024 10:20:00"},
        {u"22 de novembro de 2026", u"22/11/2026"},
        {u"22/nov/26", u"22/11/2026"},
        {u"Março 2024", u"01/03/2024"},
        {u"", u""},
        {u"abc", u""},
        {u"45000", u""},
        {u"1.234", u""},
        {u"1,5", u""},
        {u"-5", u""},
        {u"25 12 2024", u""},
        {u"32/13/2024", u""},
        {u"30/02/2024", u""},
        {u"29/02/2023", u""},
        {u"00/01/2024", u""},
        {u"01/01/0099", u""},
        {u"01/01/10000", u""},
        {u"05/03/", u""},
        {u"/05/03", u""},
        {u"05//03/2024", u""},
        {u"01/02/03/04", u""},
        {u"24:00", u""},
        {u"12:60", u""},
        {u"12:30:60", u""},
        {u"13:00 PM", u""},
        {u"12:", u""},
        {u"12:30 12:31", u""},
        {u"10:20:30,5", u""},
        {u"05/03/2024T10:20", u""},
    };
    addRows(rows, [](QTestData& data, const TextText& row) { data << q(row.text) << q(row.expected); });
    QTest::newRow("day and month of this year")
        << QStringLiteral("25/12") << QStringLiteral("25/12/") + QString::number(QDate::currentDate().year());
}

void TestConversions::textsAsDates()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(IsDate(text), !expected.isEmpty());
    const std::optional<Date> date = parseDate(text);
    QCOMPARE(date ? CStr(*date) : QString(), expected);
    if (date)
        QCOMPARE(CDate(text), *date);
}

void TestConversions::formats_data()
{
    QTest::addColumn<Variant>("value");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("expected");
    const char16_t* const money = u"##,#0.00";
    const char16_t* const price = u"##,#0.000";
    const Formatted rows[] = {
        {0, money, u"0,00"},
        {5, money, u"5,00"},
        {999, money, u"999,00"},
        {1000, money, u"1.000,00"},
        {1234567.891, money, u"1.234.567,89"},
        {-1234.5, money, u"-1.234,50"},
        {-999.5, money, u"-999,50"},
        {0.5, money, u"0,50"},
        {0.125, money, u"0,13"},
        {-0.125, money, u"-0,13"},
        {1.005, money, u"1,01"},
        {1.115, money, u"1,12"},
        {2.675, money, u"2,68"},
        {0.004, money, u"0,00"},
        {0.005, money, u"0,01"},
        {-0.001, money, u"-0,00"},
        {-0.0, money, u"0,00"},
        {0.1 + 0.2 - 0.3, money, u"0,00"},
        {99.995, money, u"100,00"},
        {999.999, money, u"1.000,00"},
        {999999999999999.0, money, u"999.999.999.999.999,00"},
        {1e20, money, u"100.000.000.000.000.000.000,00"},
        {1e-300, money, u"0,00"},
        {qint64{9'223'372'036'854'775'807}, money, u"9.223.372.036.854.775.807,00"},
        {currency(12'345'650), money, u"1.234,57"},
        {currency(-50), money, u"-0,01"},
        {currency(9'223'372'036'854'775'807), money, u"922.337.203.685.477,58"},
        {t(u"1.234,5"), money, u"1.234,50"},
        {t(u"1234,565"), money, u"1.234,57"},
        {t(u"  7 "), money, u"7,00"},
        {t(u"R$ 5"), money, u"5,00"},
        {t(u"(5)"), money, u"-5,00"},
        {t(u",5"), money, u"0,50"},
        {t(u"10.50"), money, u"1.050,00"},
        {t(u"12345678901234,567"), money, u"12.345.678.901.234,60"},
        {t(u"abc"), money, u"abc"},
        {t(u"1,2,3"), money, u"1,2,3"},
        {t(u"-"), money, u"-"},
        {t(u" "), money, u" "},
        {t(u""), money, u""},
        {Variant(), money, u""},
        {t(u"05/03/2024"), money, u"05/03/2024"},
        {t(u"1e400"), money, u"1e400"},
        {NoNumber, money, u"1,#IND"},
        {day(2024, 3, 5, QTime(12, 0)), money, u"45.356,50"},
        {4.5, price, u"4,500"},
        {4.5675, price, u"4,568"},
        {t(u"5,4999"), price, u"5,500"},
        {-0.5, price, u"-0,500"},
        {1, u"00", u"01"},
        {1, u"000", u"001"},
        {1234, u"000", u"1234"},
        {2.5, u"000", u"003"},
        {0, u"000", u"000"},
        {-7, u"000", u"-007"},
        {t(u"7"), u"00000", u"00007"},
        {t(u" 12 "), u"00000", u"00012"},
        {t(u"x1"), u"00000", u"x1"},
        {0.4, u"0", u"0"},
        {2.5, u"0", u"3"},
        {3.5, u"0", u"4"},
        {0.4, u"#", u""},
        {1234.5, u"#.##", u"1234,5"},
        {5, u"@@@@@@", u"     5"},
        {1234.5, u"@@@@@@@@", u"  1234,5"},
        {t(u"abc"), u"@@@@@@", u"   abc"},
        {t(u"abcdef"), u"@@@@@@", u"abcdef"},
        {t(u"abcdefg"), u"@@@@@@", u"abcdefg"},
        {t(u"ab "), u"@@@@@@", u"   ab "},
        {t(u"TotalR$"), u"@@@@@@@@@@@@@", u"      TotalR$"},
        {t(u"1.234,50"), u"@@@@@@@@@@@@@@@", u"       1.234,50"},
        {t(u""), u"@@@@@@", u""},
        {Variant(), u"@@@@@@", u""},
        {day(2024, 3, 5), u"@@@@@@@@@@@@", u"  05/03/2024"},
        {day(2024, 3, 5), u"dd/mm/yy", u"05/03/24"},
        {day(2024, 3, 5), u"DD/MM/YY", u"05/03/24"},
        {day(2024, 3, 5), u"DD/mm", u"05/03"},
        {day(2024, 3, 5), u"dd/mm/yyyy", u"05/03/2024"},
        {day(2024, 3, 5), u"mm/dd/yyyy", u"03/05/2024"},
        {day(2024, 3, 5), u"yyyy/mm/dd", u"2024/03/05"},
        {day(2024, 3, 5), u"YYYY-MM-DD", u"2024-03-05"},
        {day(2024, 3, 5), u"mm/yyyy", u"03/2024"},
        {day(2024, 3, 5), u"ddmmyy", u"050324"},
        {day(2024, 3, 5), u"yymmdd", u"240305"},
        {day(2024, 3, 5), u"d/m/yy", u"5/3/24"},
        {day(2024, 3, 5), u"ddd dddd mmm mmmm", u"ter terça-feira mar março"},
        {day(2026, 11, 22), u"Long Date", u"domingo, 22 de novembro de 2026"},
        {day(2026, 8, 1), u"long date", u"sábado, 1 de agosto de 2026"},
        {day(2024, 3, 5, QTime(7, 8, 9)), u"hh:mm:ss", u"07:08:09"},
        {day(2024, 3, 5, QTime(17, 8, 9)), u"hhmmss", u"170809"},
        {day(2024, 3, 5, QTime(17, 8, 9)), u"hhmmnn", u"170808"},
        {day(2024, 3, 5, QTime(7, 8, 9)), u"h:n:s", u"7:8:9"},
        {day(2024, 3, 5, QTime(7, 8, 9)), u"hh dd mm", u"07 05 03"},
        {day(2024, 3, 5), u"hh:mm:ss", u"00:00:00"},
        {day(2023, 12, 31, QTime(23, 59, 59, 600)), u"dd/mm/yyyy hh:mm:ss", u"01/01/2024 00:00:00"},
        {Date{0}, u"dd/mm/yyyy", u"30/12/1899"},
        {Date{-1.25}, u"dd/mm/yyyy hh:mm:ss", u"29/12/1899 06:00:00"},
        {t(u"5/3/2024"), u"dd/mm/yy", u"05/03/24"},
        {t(u"05/03/2024 10:20:30"), u"mm/dd/yyyy", u"03/05/2024"},
        {t(u"2024-03-05"), u"dd/mm/yyyy", u"05/03/2024"},
        {t(u"10:20"), u"hh:mm:ss", u"10:20:00"},
        {t(u"00:00:00"), u"hh:mm:ss", u"00:00:00"},
        {t(u"1899-12-30"), u"YYYY-MM-DD", u"1899-12-30"},
        {t(u"45356"), u"dd/mm/yyyy", u"05/03/2024"},
        {t(u"0,5"), u"hh:mm:ss", u"12:00:00"},
        {45356, u"dd/mm/yyyy", u"05/03/2024"},
        {currency(453'565'000), u"hh:mm", u"12:00"},
        {t(u"amanhã"), u"dd/mm/yy", u"amanhã"},
        {t(u"31/02/2024"), u"dd/mm/yy", u"31/02/2024"},
        {t(u""), u"dd/mm/yyyy", u""},
        {Variant(), u"dd/mm/yyyy", u""},
        {1e9, u"dd/mm/yyyy", u"1000000000"},
    };
    addRows(rows,
            [](QTestData& data, const Formatted& row) { data << row.value << q(row.pattern) << q(row.expected); });
}

void TestConversions::formats()
{
    QFETCH(Variant, value);
    QFETCH(QString, pattern);
    QTEST(Format(value, pattern), "expected");
}

void TestConversions::dateTypeKeepsDayAndTimeApart()
{
    QCOMPARE(Date::fromQDate(QDate(1899, 12, 30)).serial, 0.0);
    QCOMPARE(Date::fromQDate(QDate(2026, 11, 22)).serial, 46348.0);
    QCOMPARE(Date::fromQDate(QDate()).serial, 0.0);
    const QDateTime before(QDate(1899, 12, 29), QTime(6, 0));
    QCOMPARE(Date::fromQDateTime(before).serial, -1.25);
    // Every second of a day comes back as it went, before and after day 0.
    for (const QDate date : {QDate(1850, 1, 1), QDate(2024, 2, 29)}) {
        for (int second = 0; second < 86'400; ++second) {
            const QTime time = QTime::fromMSecsSinceStartOfDay(second * 1000);
            const Date back = Date::fromQDateTime(QDateTime(date, time));
            QVERIFY2(back.date() == date && back.time() == time, qPrintable(time.toString()));
        }
    }
    QCOMPARE(shortDate(QDate(2024, 3, 5)), QStringLiteral("05/03/2024"));
    QCOMPARE(shortDate(QDate()), QString());
    QCOMPARE(CDate(45356.5), (Date{45356.5}));
    QCOMPARE(CDate(QStringLiteral("45356,5")), (Date{45356.5}));
    QVERIFY(!Date{1e300}.date().isValid() && !Date{NoNumber}.date().isValid());
    QCOMPARE(CStr(Date{-1e6}), QString());
    QCOMPARE(outcome([] { return CDate(1e7); }), QStringLiteral("error 6"));
    QCOMPARE(outcome([] { return CDate(QStringLiteral("32/13/2024")); }), QStringLiteral("error 13"));
}

void TestConversions::currencyArithmetic()
{
    const Currency most = Currency::fromScaled(std::numeric_limits<qint64>::max());
    const Currency least = Currency::fromScaled(std::numeric_limits<qint64>::min());
    const Currency one = Currency::fromScaled(1);
    const QString overflow = QStringLiteral("error 6");
    QCOMPARE((CCur(QStringLiteral("1.000,30")) - CCur(QStringLiteral("1.000,20"))).scaled(), 1000);
    QCOMPARE((most - one + one).scaled(), most.scaled());
    QCOMPARE((least + one - one).scaled(), least.scaled());
    QCOMPARE((least - least).scaled(), 0);
    QCOMPARE(outcome([&] { return most + one; }), overflow);
    QCOMPARE(outcome([&] { return least - one; }), overflow);
    QCOMPARE(outcome([&] { return one - least; }), overflow);
    QCOMPARE(outcome([&] { return -least; }), overflow);
    QCOMPARE(Currency::fromScaled(-12'345).toDouble(), -1.2345);
}

void TestConversions::nullAndKinds()
{
    const QString invalidNull = QStringLiteral("error 94");
    QCOMPARE(outcome([] { return CDbl(Variant()); }), invalidNull);
    QCOMPARE(outcome([] { return CDate(Variant()); }), invalidNull);
    QCOMPARE(outcome([] { return Variant().text(); }), invalidNull);
    QCOMPARE(Variant().textOrEmpty(), QString());
    QVERIFY(!IsNumeric(Variant()) && !IsDate(Variant()));
    QVERIFY(IsNumeric(1) && IsNumeric(1.5) && IsNumeric(currency(1)) && !IsDate(1));
    QVERIFY(IsDate(day(2024, 3, 5)) && !IsNumeric(day(2024, 3, 5)));
    QVERIFY(!IsNumeric(QStringLiteral("1e400")));
    QCOMPARE(plainDecimal(-1234.5), QStringLiteral("-1234.5"));
    QCOMPARE(plainDecimal(1.0 / 12.0), QStringLiteral("0.0833333333333333"));
    QCOMPARE(plainDecimal(1e-7), QStringLiteral("0.0000001"));
    QCOMPARE(plainDecimal(7), QStringLiteral("7"));
    QCOMPARE(plainDecimal(1e15), QStringLiteral("1E+15"));
}

// Texts of up to 15 digits become doubles by one operation and are formatted without any: both must equal the way
// through the library's correctly rounded conversion.
void TestConversions::shortcutsEqualTheGeneralWay()
{
    std::mt19937_64 random(20261122); // NOLINT: the same numbers every time
    for (int i = 0; i < 200'000; ++i) {
        const auto whole = static_cast<qint64>(random() % 1'000'000'000'000'000ULL) / (i % 3 == 0 ? 1'000'000 : 1);
        const int decimals = static_cast<int>(random() % 12);
        const QByteArray digits = QByteArray::number(whole).rightJustified(decimals + 1, '0');
        const QByteArray text = digits.chopped(decimals) + '.' + digits.right(decimals);
        double expected = 0;
        std::from_chars(text.data(), text.data() + text.size(), expected);
        const QString typed = QString::fromLatin1(text).replace(u'.', u',');
        QVERIFY2(CDbl(typed) == expected, text.constData());
        const QString formatted = Format(expected, u"##,#0.00");
        QVERIFY2(Format(typed, u"##,#0.00") == formatted, text.constData());
        QVERIFY2(Format(formatted, u"##,#0.00") == formatted, text.constData());
    }
}

// Amounts of long lists are read and written on a way of their own.
void TestConversions::amountsEqualTheGeneralWay()
{
    for (const char* text : {"",        "0",         ",50",     "1,5",     "1,500",
                             "01,50",   "0.001,50",  "1234,50", "1.23,50", "12.34,50",
                             ".123,50", "1..234,50", "-0,00",   "--1,50",  "1,50 ",
                             "+1,50",   "1.234.50",  "1,2,50",  "R$1,50",  "99.999.999.999.999,00",
                             "-.123,00"})
        QVERIFY2(!plainAmount(text), text);
    QCOMPARE(plainAmount("0,00").value_or(-1), 0);
    QCOMPARE(plainAmount("-12.345,67").value_or(0), -1'234'567);
    QCOMPARE(plainAmount("99.999.999.999,99").value_or(0), 0); // Too long by one character.
    QCOMPARE(plainAmount("9.999.999.999,99").value_or(0), 999'999'999'999);

    std::mt19937_64 random(20261123); // NOLINT: the same numbers every time
    int plain = 0;
    for (int i = 0; i < 200'000; ++i) {
        const auto scaled = static_cast<qint64>(random() >> (random() % 64)) * (i % 2 == 0 ? 1 : -1);
        const QString general = Format(currency(scaled), u"#,##0.00"); // Not the pattern with a way of its own.
        std::string amount;
        appendAmount(amount, Currency::fromScaled(scaled));
        QByteArray written = QByteArray::fromStdString(amount);
        QCOMPARE(QString::fromUtf8(written), general);
        if (i % 4 == 3) // What a text may suffer.
            written[static_cast<qsizetype>(random() % static_cast<quint64>(written.size()))] = "0.,-1"[random() % 5];
        const auto hundredths = plainAmount(written);
        if (!hundredths)
            continue;
        ++plain;
        const QString text = QString::fromUtf8(written);
        QCOMPARE(Format(text, u"##,#0.00"), text);
        QVERIFY2(CCur(text).scaled() == *hundredths * 100, written.constData());
        QVERIFY2(CDbl(text) == static_cast<double>(*hundredths) / 100, written.constData());
        QCOMPARE(Format(static_cast<double>(*hundredths) / 100, u"##,#0.000"), text + u'0');
        QCOMPARE(Format(static_cast<double>(*hundredths) / 100, u"##,#0.00"), text);
    }
    QVERIFY(plain > 50'000);
}

QTEST_GUILESS_MAIN(TestConversions)
#include "test_conversions.moc"
