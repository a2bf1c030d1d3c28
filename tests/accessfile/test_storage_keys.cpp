#include "accessfile/AccessTestTools.h"
#include "accessfile/format/Keys.h"

#include <QTest>

using namespace accessfile;

Q_DECLARE_METATYPE(accessfile::Value)

/// Index keys against keys found in files of Access: a wrong one would make its rows unfindable there.
class TestStorageKeys : public QObject
{
    Q_OBJECT

private slots:
    void keys_data();
    void keys();
    void textOrder();
};

void TestStorageKeys::keys_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<Value>("value");
    QTest::addColumn<bool>("ascending");
    QTest::addColumn<QByteArray>("key");
    const auto row = [](const char* name, ColumnType type, const Value& value, const QByteArray& key,
                        bool ascending = true) {
        QTest::newRow(name) << static_cast<int>(type) << value << ascending << key;
    };
    const auto text = [&](const char* name, const char* value, const QByteArray& key) {
        row(name, ColumnType::Text, std::string(value), "7F" + key);
    };
    text("accents", "ação", "4A4D4A6401021C1900");
    text("accent first", "ÓLEO DIESEL", "645E5164074F59516B515E010E00");
    text("hyphen", "co-op", "4D64646601010101800F068200");
    text("apostrophe and accent", "D'Ávila", "4F4A71595E4A01020E010101800B068000");
    text("two accents", "São José", "6B4A64075B646B5101021902020202020E00");
    text("sharp s", "Straße", "6B6D694A6B6B510100");
    text("empty", "", "0100");
    text("trailing blanks", "abc   ", "4A4C4D0100");
    text("places count characters", "Aß-B", "4A6B6B4C01010101800F068200");
    text("control characters", "\t\r", "080308070100");
    text("digits and signs", "1.234,50", "381C3A3C3E1A40360100");
    text("euro", "€", "35A10100");
    row("text descending", ColumnType::Text, std::string("abc"), "80B5B3B2FEFF00", false);
    row("long", ColumnType::Long, 1, "7F80000001");
    row("long descending", ColumnType::Long, 1, "807FFFFFFE", false);
    row("int", ColumnType::Int, -2, "7F7FFE");
    row("money", ColumnType::Money, Money{123400}, "7F800000000001E208");
    row("date", ColumnType::Date, DateTime{38052.5}, "7FC0E2949000000000");
    row("double", ColumnType::Double, -1.5, "7F4007FFFFFFFFFFFF");
    row("binary", ColumnType::Binary, Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, "7F010203040506070809090A00000000000002");
    row("bool", ColumnType::Bool, true, "7F00");
    row("bool descending", ColumnType::Bool, true, "80FF", false);
    row("null", ColumnType::Long, Null{}, "00");
    row("null descending", ColumnType::Text, Null{}, "FF", false);
}

void TestStorageKeys::keys()
{
    QFETCH(const int, type);
    QFETCH(const Value, value);
    QFETCH(const bool, ascending);
    ColumnDefinition column;
    column.type = static_cast<ColumnType>(type);
    column.length = 510;
    Bytes bytes;
    appendKeyPart(column, value, ascending, bytes);
    QTEST(QByteArrayView(bytes.data(), bytes.size()).toByteArray().toHex().toUpper(), "key");
}

void TestStorageKeys::textOrder()
{
    QCOMPARE(textSortKey("GASOLINA "), textSortKey("gasolina"));
    QVERIFY(textSortKey("acao") != textSortKey("ação"));
    QVERIFY(*textSortKey("coop") < *textSortKey("co-op"));
    QVERIFY(*textSortKey("co-op") < *textSortKey("cooq"));
    QVERIFY(!textSortKey("日本").has_value());
}

QTEST_GUILESS_MAIN(TestStorageKeys)
#include "test_storage_keys.moc"
