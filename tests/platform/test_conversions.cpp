#include "platform/vb/Amount.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Error.h"
#include "platform/vb/ExactSum.h"
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

QString q(const char16_t* text)
{
    return QString::fromUtf16(text);
}

QTestData& numberedRow()
{
    static int rows = 0;
    return QTest::addRow("%d", ++rows);
}

} // namespace

class TestConversions : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // Nothing may depend on the machine's settings, not even on a point-decimal or a comma-decimal C library.
        std::setlocale(LC_ALL, "de_DE.UTF-8");
        QLocale::setDefault(QLocale(QLocale::English));
    }

    void textsAsNumbers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("number");
        const auto row = [](const char16_t* text, double number) { numberedRow() << q(text) << number; };
        row(u"1.234,5", 1234.5);
        row(u",5", 0.5);
        row(u"1.2.3", 123);
        row(u"( 1.234,50 )", -1234.5);
        row(u"1,5E-2", 0.015);
        row(u"1e-400", 0);
        row(u"0e999", 0);
        row(u"&H10", 16);
        row(u"&hff", 255);
        row(u"-0", 0);
        row(u"9007199254740993", 9007199254740992.0);
        row(u"123456789012345,678901234567890", 123456789012345.678901234567890);
        row(u"0,000000000000000000000000000001", 1e-30);
        row(u"1,7976931348623157e308", 1.7976931348623157e308);
        for (const char16_t* const text : {u"007", u"  7 ", u"\t7\r\n", u"\u00A07\u00A0"})
            row(text, 7);
        for (const char16_t* const text : {u"5,", u".5", u"R$ 5", u"5 R$", u"+5"})
            row(text, 5);
        for (const char16_t* const text : {u"-R$ 5", u"R$ -5", u"- 5", u"5-", u"(5)", u"(R$ 5)"})
            row(text, -5);
        for (const char16_t* const text : {u"1e3", u"1D3"})
            row(text, 1000);
        for (const char16_t* const text : {u"&O17", u"&17"})
            row(text, 15);
        for (const char16_t* const text :
             {u"",    u" ",     u"-",     u",",     u".",    u"-,",    u"R$",    u"R$ R$ 5", u"()",
              u"(5",  u"5)",    u"(-5)",  u"--5",   u"-5-",  u"1,2,3", u"1,2.3", u"1 000",   u"1e",
              u"1e+", u"e3",    u"1e2,5", u"1e2e3", u"&H",   u"&HG",   u"&O8",   u"12:30",   u"01/02/2024",
              u"abc", u"5 lts", u"$5",    u"5%",    u"True", u"\u0665"})
            row(text, NoNumber);
    }
    void textsAsNumbers()
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

    void leadingParts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("byPoint");
        QTest::addColumn<double>("byComma");
        const auto row = [](const char16_t* text, double byPoint, double byComma) {
            numberedRow() << q(text) << byPoint << byComma;
        };
        row(u"00012 - GASOLINA", 12, 12);
        row(u"1.234,5", 1.234, 1234.5);
        row(u"-3,25x", -3, -3.25);
        row(u" 1 615 198th", 1615198, 1615198);
        row(u",5", 0, 0.5);
        row(u"1.2.3", 1.2, 123);
        row(u"1,2,3", 1, 1.2);
        row(u"1e3", 1000, 1000);
        row(u"1e", 1, 1);
        row(u"7e999", 7, 7);
        row(u"R$ 5", 0, 0);
        row(u"&HFFFF", -1, -1);
        row(u"&HFFFF&", 65535, 65535);
        row(u"&", 0, 0);
    }
    void leadingParts()
    {
        QFETCH(QString, text);
        QTEST(Val(text), "byPoint");
        QTEST(leadingNumber(text), "byComma");
    }

    void wholeNumbersAndMoney_data()
    {
        QTest::addColumn<Variant>("value");
        QTest::addColumn<QString>("asLong");
        QTest::addColumn<QString>("asCurrency");
        const auto row = [](const Variant& value, const char16_t* asLong, const char16_t* asCurrency) {
            numberedRow() << value << q(asLong) << q(asCurrency);
        };
        row(1.5, u"2", u"1,5");
        row(2.5, u"2", u"2,5");
        row(-2.5, u"-2", u"-2,5");
        row(2.5000001, u"3", u"2,5");
        row(q(u"2,5"), u"2", u"2,5");
        row(q(u"2,50000000000000000000001"), u"3", u"2,5");
        row(currency(25'000), u"2", u"2,5");
        row(q(u"0,00015"), u"0", u"0,0002");
        row(q(u"0,00025"), u"0", u"0,0002");
        row(q(u"0,000050001"), u"0", u"0,0001");
        row(q(u"0,000009"), u"0", u"0");
        row(0.03125, u"0", u"0,0312");
        row(0.09375, u"0", u"0,0938");
        row(1.00705, u"1", u"1,007"); // a half only as a product of doubles
        row(32767.4, u"32767", u"32767,4");
        row(32767.5, u"32768", u"32767,5");
        row(-32768.5, u"-32768", u"-32768,5");
        row(q(u"2147483647,4"), u"2147483647", u"2147483647,4");
        row(q(u"-2147483648,5"), u"-2147483648", u"-2147483648,5");
        row(qint64{3'000'000'000}, u"error 6", u"3000000000");
        row(q(u"922337203685477,5807"), u"error 6", u"922337203685477,5807");
        row(q(u"-922337203685477,5808"), u"error 6", u"-922337203685477,5808");
        row(q(u"&HFFFF"), u"65535", u"65535");
        row(q(u"&HFFFFFFFF"), u"-1", u"4294967295");
        row(day(1900, 1, 1, QTime(12, 0)), u"2", u"2,5");
        row(q(u"12:30"), u"error 13", u"error 13");
        row(Variant(), u"error 94", u"error 94");
        for (const Variant& value :
             {Variant(q(u"922337203685477,5808")), Variant(q(u"1e400")), Variant(1e300), Variant(NoNumber)})
            row(value, u"error 6", u"error 6");
    }
    void wholeNumbersAndMoney()
    {
        QFETCH(Variant, value);
        QTEST(outcome([&] { return CLng(value); }), "asLong");
        QTEST(outcome([&] { return CCur(value); }), "asCurrency");
    }

    void plainTexts_data()
    {
        QTest::addColumn<Variant>("value");
        QTest::addColumn<QString>("expected");
        const auto row = [](const Variant& value, const char16_t* expected) { numberedRow() << value << q(expected); };
        row(qint64{1'234'567'890'123}, u"1234567890123");
        row(-0.0, u"0");
        row(0.1 + 0.2, u"0,3");
        row(2.0 / 3.0, u"0,666666666666667");
        row(1.0 / 12.0, u"8,33333333333333E-02");
        row(0.0001, u"0,0001");
        row(0.00001, u"1E-05");
        row(-1.5e-7, u"-1,5E-07");
        row(999999999999999.0, u"999999999999999");
        row(999999999999999.9, u"1E+15");
        row(1.2345e100, u"1,2345E+100");
        row(currency(-1), u"-0,0001");
        row(currency(std::numeric_limits<qint64>::min()), u"-922337203685477,5808");
        row(q(u" como está "), u" como está ");
        row(day(2024, 3, 5), u"05/03/2024");
        row(day(2024, 3, 5, QTime(7, 8, 9)), u"05/03/2024 07:08:09");
        row(day(1899, 12, 30), u"00:00:00");
        row(Date{-1.25}, u"29/12/1899 06:00:00");
        row(Date{-0.25}, u"06:00:00");
        row(day(2024, 2, 29, QTime(23, 59, 59, 700)), u"01/03/2024");
    }
    void plainTexts()
    {
        QFETCH(Variant, value);
        QTEST(CStr(value), "expected");
        QTEST(value.text(), "expected");
        QTEST(value.textOrEmpty(), "expected");
    }

    void textsAsDates_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected"); // empty: no date
        const auto row = [](const char16_t* text, const char16_t* expected) {
            numberedRow() << q(text) << q(expected);
        };
        for (const char16_t* const text :
             {u"05/03/2024", u"5/3/24", u"  05/03/2024  ", u"05-03-2024", u"05.03.2024", u"2024-03-05"})
            row(text, u"05/03/2024");
        row(u"03/15/2024", u"15/03/2024");
        row(u"99/12/31", u"31/12/1999");
        row(u"01/01/29", u"01/01/2029");
        row(u"01/01/30", u"01/01/1930");
        row(u"30/02/24", u"24/02/1930");
        row(u"01/01/0100", u"01/01/0100");
        row(u"31/12/9999", u"31/12/9999");
        row(u"1899-12-30", u"00:00:00");
        row(u"30/12/1899 06:00", u"06:00:00");
        row(u"29/12/1899 06:00", u"29/12/1899 06:00:00");
        row(u"05/2024", u"01/05/2024");
        row(u"12:30", u"12:30:00");
        row(u"12:15 AM", u"00:15:00");
        row(u"3 PM", u"15:00:00");
        row(u"05/03/2024 10:20:30", u"05/03/2024 10:20:30");
        row(u"10:20 05/03/2024", u"05/03/2024 10:20:00");
        row(u"22 de novembro de 2026", u"22/11/2026");
        row(u"22/nov/26", u"22/11/2026");
        row(u"Março 2024", u"01/03/2024");
        numberedRow() << QStringLiteral("25/12")
                      << QStringLiteral("25/12/") + QString::number(QDate::currentDate().year());
        for (const char16_t* const text : {u"",
                                           u"abc",
                                           u"45000",
                                           u"1.234",
                                           u"1,5",
                                           u"-5",
                                           u"25 12 2024",
                                           u"32/13/2024",
                                           u"30/02/2024",
                                           u"29/02/2023",
                                           u"00/01/2024",
                                           u"01/01/0099",
                                           u"01/01/10000",
                                           u"05/03/",
                                           u"/05/03",
                                           u"05//03/2024",
                                           u"01/02/03/04",
                                           u"24:00",
                                           u"12:60",
                                           u"12:30:60",
                                           u"13:00 PM",
                                           u"12:",
                                           u"12:30 12:31",
                                           u"10:20:30,5",
                                           u"05/03/2024T10:20"})
            row(text, u"");
    }
    void textsAsDates()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        const std::optional<Date> date = parseDate(text);
        QCOMPARE(date ? CStr(*date) : QString(), expected);
        if (date)
            QCOMPARE(CDate(text), *date);
    }

    void formats_data()
    {
        QTest::addColumn<Variant>("value");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("expected");
        const char16_t* const money = u"##,#0.00";
        const char16_t* const price = u"##,#0.000";
        const auto row = [](const Variant& value, const char16_t* pattern, const char16_t* expected) {
            numberedRow() << value << q(pattern) << q(expected);
        };
        row(1234567.891, money, u"1.234.567,89");
        row(-999.5, money, u"-999,50");
        row(1.005, money, u"1,01");
        row(0.005, money, u"0,01");
        row(-0.001, money, u"-0,00");
        row(-0.0, money, u"0,00");
        row(0.1 + 0.2 - 0.3, money, u"0,00");
        row(999.999, money, u"1.000,00");
        row(999999999999999.0, money, u"999.999.999.999.999,00");
        row(1e20, money, u"100.000.000.000.000.000.000,00");
        row(qint64{9'223'372'036'854'775'807}, money, u"9.223.372.036.854.775.807,00");
        row(currency(12'345'650), money, u"1.234,57");
        row(currency(-50), money, u"-0,01");
        row(currency(9'223'372'036'854'775'807), money, u"922.337.203.685.477,58");
        row(q(u"1.234,5"), money, u"1.234,50");
        row(q(u"1234,565"), money, u"1.234,57");
        row(q(u"  7 "), money, u"7,00");
        row(q(u"922337203685477,5807"), money, u"922.337.203.685.477,58");
        row(Variant(), money, u"");
        row(NoNumber, money, u"1,#IND");
        row(day(2024, 3, 5, QTime(12, 0)), money, u"45.356,50");
        row(4.5675, price, u"4,568");
        row(q(u"5,4999"), price, u"5,500");
        row(1234, u"000", u"1234");
        row(-7, u"000", u"-007");
        row(q(u"7"), u"00000", u"00007");
        row(2.5, u"0", u"3");
        row(0.4, u"#", u"");
        row(1234.5, u"#.##", u"1234,5");
        row(q(u"abcdefg"), u"@@@@@@", u"abcdefg");
        row(q(u"TotalR$"), u"@@@@@@@@@@@@@", u"      TotalR$");
        row(day(2024, 3, 5), u"@@@@@@@@@@@@", u"  05/03/2024");
        row(q(u""), u"@@@", u"   ");
        row(Variant(), u"@@@", u"");
        row(day(2024, 3, 5), u"dd/mm/yy", u"05/03/24");
        row(day(2024, 3, 5), u"ddmmyy", u"050324");
        row(day(2024, 3, 5), u"d/m/yy", u"5/3/24");
        row(day(2024, 3, 5), u"ddd dddd mmm mmmm", u"ter terça-feira mar março");
        row(day(2026, 11, 22), u"Long Date", u"domingo, 22 de novembro de 2026");
        row(day(2026, 8, 1), u"long date", u"sábado, 1 de agosto de 2026");
        row(day(2024, 3, 5, QTime(7, 8, 9)), u"hh:mm:ss", u"07:08:09");
        row(day(2024, 3, 5, QTime(17, 8, 9)), u"hhmmnn", u"170808");
        row(day(2024, 3, 5, QTime(7, 8, 9)), u"hh dd mm", u"07 05 03");
        row(day(2023, 12, 31, QTime(23, 59, 59, 600)), u"dd/mm/yyyy hh:mm:ss", u"01/01/2024 00:00:00");
        row(Date{0}, u"dd/mm/yyyy", u"30/12/1899");
        row(Date{-1.25}, u"dd/mm/yyyy hh:mm:ss", u"29/12/1899 06:00:00");
        row(q(u"5/3/2024"), u"dd/mm/yy", u"05/03/24");
        row(q(u"1899-12-30"), u"YYYY-MM-DD", u"1899-12-30");
        row(q(u"0,5"), u"hh:mm:ss", u"12:00:00");
        row(currency(453'565'000), u"hh:mm", u"12:00");
        row(1e9, u"dd/mm/yyyy", u"1000000000");
        // What is no number, or no date, comes back as it is.
        for (const char16_t* const text : {u"abc", u"1,2,3", u"-", u" ", u"", u"05/03/2024", u"1e400"})
            row(q(text), money, text);
        for (const char16_t* const text : {u"amanhã", u"31/02/2024", u""})
            row(q(text), u"dd/mm/yy", text);
    }
    void formats()
    {
        QFETCH(Variant, value);
        QFETCH(QString, pattern);
        QTEST(Format(value, pattern), "expected");
    }

    void dateTypeKeepsDayAndTimeApart()
    {
        QCOMPARE(Date::fromQDate(QDate(1899, 12, 30)).serial, 0.0);
        QCOMPARE(Date::fromQDate(QDate(2026, 11, 22)).serial, 46348.0);
        // Every second of a day comes back as it went, before and after day 0.
        for (const QDate date : {QDate(1850, 1, 1), QDate(2024, 2, 29)}) {
            for (int second = 0; second < 86'400; ++second) {
                const QTime time = QTime::fromMSecsSinceStartOfDay(second * 1000);
                const Date back = Date::fromQDateTime(QDateTime(date, time));
                QVERIFY2(back.date() == date && back.time() == time, qPrintable(time.toString()));
            }
        }
        QCOMPARE(shortDate(QDate()), QString());
        QCOMPARE(CDate(45356.5), (Date{45356.5}));
        QCOMPARE(CDate(QStringLiteral("45356,5")), (Date{45356.5}));
        QVERIFY(!Date{1e300}.date().isValid() && !Date{NoNumber}.date().isValid());
        QCOMPARE(CStr(Date{-1e6}), QString());
        QCOMPARE(outcome([] { return CDate(1e7); }), QStringLiteral("error 6"));
        QCOMPARE(outcome([] { return CDate(QStringLiteral("32/13/2024")); }), QStringLiteral("error 13"));
    }

    void currencyArithmetic()
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

    // What a product or a sum has behind the shown decimals takes part in one rounding only.
    void exactArithmetic_data()
    {
        QTest::addColumn<QString>("one");
        QTest::addColumn<QString>("other");
        QTest::addColumn<QString>("product");
        QTest::addColumn<QString>("sum");
        const auto row = [](const char16_t* one, const char16_t* other, const char16_t* product, const char16_t* sum) {
            numberedRow() << q(one) << q(other) << q(product) << q(sum);
        };
        row(u"10,05", u"5,899", u"59,28", u"15,95");
        row(u"-10,05", u"5,9", u"-59,30", u"-4,15");
        row(u"0", u"-7,5", u"0,00", u"-7,50");
        row(u"99999,995", u"0,005", u"500,00", u"100.000,00");
        row(u"5", u"-5", u"-25,00", u"0,00");
        row(u"1000", u"-0,01", u"-10,00", u"999,99");
        row(u"0,00495", u"0,00005", u"0,00", u"0,01");
        row(u"0,004949999", u"0,00005", u"0,00", u"0,00");
        row(u"922.337.203.685.477,58", u"922.337.203.685.477,58", u"850.705.917.302.346.157.182.696.992.682,66",
            u"1.844.674.407.370.955,16");
        row(u"1e30", u"1e-30", u"1,00", u"1.000.000.000.000.000.000.000.000.000.000,00");
        row(u"1e-999999999", u"2", u"0,00", u"2,00");
    }
    void exactArithmetic()
    {
        QFETCH(QString, one);
        QFETCH(QString, other);
        QTEST(Format(CDec(one) * CDec(other), u"##,#0.00"), "product");
        QTEST(Format(CDec(other) * CDec(one), u"##,#0.00"), "product");
        QTEST(Format(CDec(one) + CDec(other), u"##,#0.00"), "sum");
        ExactSum sum{Variant(other)};
        sum += ExactSum(Variant(one));
        std::string text;
        sum.appendTo(text);
        QTEST(QString::fromStdString(text), "sum");
    }

    void nullAndKinds()
    {
        const QString invalidNull = QStringLiteral("error 94");
        QCOMPARE(outcome([] { return CDbl(Variant()); }), invalidNull);
        QCOMPARE(outcome([] { return CDate(Variant()); }), invalidNull);
        QCOMPARE(outcome([] { return Variant().text(); }), invalidNull);
        QVERIFY(!IsNumeric(Variant()));
        QVERIFY(IsNumeric(1) && IsNumeric(1.5) && IsNumeric(currency(1)));
        QVERIFY(!IsNumeric(day(2024, 3, 5)));
        QVERIFY(!IsNumeric(QStringLiteral("1e400")));
        QCOMPARE(plainDecimal(-1234.5), QStringLiteral("-1234.5"));
        QCOMPARE(plainDecimal(1.0 / 12.0), QStringLiteral("0.0833333333333333"));
        QCOMPARE(plainDecimal(1e-7), QStringLiteral("0.0000001"));
        QCOMPARE(plainDecimal(1e15), QStringLiteral("1E+15"));
    }

    // Texts of up to 15 digits become doubles by one operation and are formatted without any: both must equal the way
    // through the library's correctly rounded conversion.
    void shortcutsEqualTheGeneralWay()
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
    void amountsEqualTheGeneralWay()
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
                written[static_cast<qsizetype>(random() % static_cast<quint64>(written.size()))] =
                    "0.,-1"[random() % 5];
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
};

QTEST_GUILESS_MAIN(TestConversions)
#include "test_conversions.moc"
