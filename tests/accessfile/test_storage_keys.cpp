#include "accessfile/AccessTestTools.h"
#include "accessfile/Keys.h"

#include <QTest>

using namespace accessfile;

/// Index keys against keys found in files of Access: a wrong one would make its rows unfindable there.
class TestStorageKeys : public QObject
{
    Q_OBJECT

private slots:
    void textKeys_data();
    void textKeys();
    void textOrder();
    void valueKeys_data();
    void valueKeys();

private:
    static QByteArray hexOf(const std::string& key) { return QByteArray::fromStdString(key).toHex().toUpper(); }
};

void TestStorageKeys::textKeys_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("key");
    QTest::newRow("accents") << QByteArray("ação") << QByteArray("4A4D4A6401021C1900");
    QTest::newRow("accent first") << QByteArray("ÓLEO DIESEL") << QByteArray("645E5164074F59516B515E010E00");
    QTest::newRow("hyphen") << QByteArray("co-op") << QByteArray("4D64646601010101800F068200");
    QTest::newRow("apostrophe and accent") << QByteArray("D'Ávila") << QByteArray("4F4A71595E4A01020E010101800B068000");
    QTest::newRow("two accents") << QByteArray("São José") << QByteArray("6B4A64075B646B5101021902020202020E00");
    QTest::newRow("sharp s") << QByteArray("Straße") << QByteArray("6B6D694A6B6B510100");
    QTest::newRow("empty") << QByteArray("") << QByteArray("0100");
    QTest::newRow("trailing blanks") << QByteArray("abc   ") << QByteArray("4A4C4D0100");
    QTest::newRow("places count characters") << QByteArray("Aß-B") << QByteArray("4A6B6B4C01010101800F068200");
    QTest::newRow("control characters") << QByteArray("\t\r") << QByteArray("080308070100");
    QTest::newRow("digits and signs") << QByteArray("1.234,50") << QByteArray("381C3A3C3E1A40360100");
    QTest::newRow("euro") << QByteArray("€") << QByteArray("35A10100");
}

void TestStorageKeys::textKeys()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QByteArray, key);
    const auto computed = textSortKey(text.toStdString());
    QVERIFY(computed.has_value());
    QCOMPARE(hexOf(*computed), key);
}

void TestStorageKeys::textOrder()
{
    QCOMPARE(textSortKey("GASOLINA "), textSortKey("gasolina"));
    QVERIFY(textSortKey("acao") != textSortKey("ação"));
    QVERIFY(*textSortKey("coop") < *textSortKey("co-op"));
    QVERIFY(*textSortKey("co-op") < *textSortKey("cooq"));
    QVERIFY(!textSortKey("日本").has_value());
}

void TestStorageKeys::valueKeys_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("ascending");
    QTest::addColumn<QByteArray>("key");
    const auto row = [](const char* name, ColumnType type, bool ascending, const char* key) {
        QTest::newRow(name) << static_cast<int>(type) << ascending << QByteArray(key);
    };
    row("long", ColumnType::Long, true, "7F80000001");
    row("long descending", ColumnType::Long, false, "807FFFFFFE");
    row("int", ColumnType::Int, true, "7F7FFE");
    row("money", ColumnType::Money, true, "7F800000000001E208");
    row("date", ColumnType::Date, true, "7FC0E2949000000000");
    row("double", ColumnType::Double, true, "7F4007FFFFFFFFFFFF");
    row("binary", ColumnType::Binary, true, "7F010203040506070809090A00000000000002");
    row("bool", ColumnType::Bool, true, "7F00");
    row("bool descending", ColumnType::Bool, false, "80FF");
    row("text descending", ColumnType::Text, false, "80B5B3B2FEFF00");
}

void TestStorageKeys::valueKeys()
{
    QFETCH(const int, type);
    QFETCH(const bool, ascending);
    QFETCH(const QByteArray, key);
    static const std::map<ColumnType, Value> values = {{ColumnType::Long, 1},
                                                       {ColumnType::Int, -2},
                                                       {ColumnType::Money, Money{123400}},
                                                       {ColumnType::Date, DateTime{38052.5}},
                                                       {ColumnType::Double, -1.5},
                                                       {ColumnType::Binary, Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}},
                                                       {ColumnType::Bool, true},
                                                       {ColumnType::Text, std::string("abc")}};
    ColumnDefinition column;
    column.type = static_cast<ColumnType>(type);
    column.length = 510;
    Bytes bytes;
    appendKeyPart(column, values.at(column.type), ascending, bytes);
    QCOMPARE(hexOf({bytes.begin(), bytes.end()}), key);
    Bytes null;
    appendKeyPart(column, Null{}, ascending, null);
    if (column.type != ColumnType::Bool)
        QCOMPARE(null, Bytes{static_cast<std::uint8_t>(ascending ? 0x00 : 0xFF)});
}

QTEST_GUILESS_MAIN(TestStorageKeys)
#include "test_storage_keys.moc"
