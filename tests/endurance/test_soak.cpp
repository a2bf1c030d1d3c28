// Day after day at the station in one run of the program, through its real windows: forty readings, the closing, the
// list, two readings deleted, a delivery, an item issued, a dip, the sheet printed. Memory stays flat, and the books
// are right at the end. PLANILHA_SOAK_DAYS says how many days (12; a year is 365).

#include "Counter.h"

#include "gauging/frmReguaL.h"
#include "platform/ui/Application.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/ListBox.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "stock/frmControlEstoqueParal.h"
#include "support/BothBackEnds.h"
#include "support/StationSchema.h"

#include <QAbstractButton>
#include <QAction>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include <cmath>
#include <random>

#include <malloc.h>
#ifdef __SANITIZE_ADDRESS__
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // NOLINT: the compiler's; it brings no header
#endif

using namespace Qt::StringLiterals;
using endurance::Counter;
using support::control;

namespace {

constexpr int Pumps = 40;
constexpr int Products = 4;
constexpr int Deleted = 2;
constexpr int FirstStockCode = 101;
constexpr int ItemCode = 5001;
constexpr qint64 OpeningStock = 900'000'000'00; // Hundredths, as everything that is added up here.
const QDate FirstDay(2025, 1, 2);

QString shown(qint64 hundredths)
{
    return vb::Format(vb::Currency::fromScaled(hundredths * 100), u"##,#0.00");
}

/// Hundredths of a number as a table gives it from outside, with comma and points or with a point.
qint64 hundredthsOf(const QString& text)
{
    const double number = text.contains(u',') ? vb::CDbl(text) : text.toDouble();
    return std::llround(number * 100);
}

/// Resident memory; in a build with the address checks, where freed memory stays resident for a while, what is held.
qint64 memoryBytes()
{
#ifdef __SANITIZE_ADDRESS__
    return static_cast<qint64>(__sanitizer_get_current_allocated_bytes());
#else
    malloc_trim(0);
    QFile file(u"/proc/self/statm"_s);
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() * 4096 : 0;
#endif
}

/// What the station's books must say.
struct Books
{
    std::vector<qint64> meters = std::vector<qint64>(Pumps, 1'000'00);
    std::vector<qint64> sold = std::vector<qint64>(Products);
    qint64 litresLeft = 0; ///< Of the readings that were not deleted.
    qint64 credits = 0;
    qint64 debits = 0;
};

} // namespace

class TestSoak : public QObject
{
    Q_OBJECT

private:
    std::mt19937 m_random{20261123}; // NOLINT: the same days every time
    Books m_books;
    QTemporaryDir m_papers;

    static void makeStation(support::BothBackEnds& database)
    {
        support::makeStation(database);
        const auto insert = [&](const QString& table, const QString& columns, const QStringList& rows) {
            database.script(support::inserts(database.isMySql(), table, columns, rows));
        };
        QStringList products;
        QStringList stock;
        for (int code = FirstStockCode; code < FirstStockCode + Products; ++code) {
            products << u"'Combustivel', %1, 5.5, %1"_s.arg(code);
            stock << u"%1, 'Combustivel', %2, 5.5"_s.arg(code).arg(OpeningStock / 100);
        }
        insert(u"CadProdComb"_s, u"Descritivo, codprod, valor, codigoEstoque"_s, products);
        insert(u"Estoque"_s, u"codigo, Discriminacao, quantidade, valorvenda"_s, stock);
        QStringList pumps;
        for (int pump = 0; pump < Pumps; ++pump)
            pumps << u"%1, 'Bomba %1', '1000', %2, 'TANQUE_%3'"_s.arg(pump + 1)
                         .arg(FirstStockCode + pump % Products)
                         .arg(pump % 5 + 1);
        insert(u"PlanilhaPosto"_s, u"numeroDispositivo, Descritivo, Leitura, ProdVinculado, tanq"_s, pumps);
        QStringList gauge;
        for (int line = 1; line <= 100; ++line)
            gauge << u"%1, %1, '%2'"_s.arg(line).arg(line * 37);
        insert(u"TANQUE_1"_s, u"cdI, cmA, ltsA"_s, gauge);
        insert(u"EstoqueDiversos"_s, u"codigo, discriminacao, quantidade"_s,
               {u"%1, 'Aditivo', '90.000,00'"_s.arg(ItemCode)});
        insert(u"Fornece"_s, u"razao"_s, {u"'Distribuidora'"_s});
    }

    qint64 amount(int least, int most) { return std::uniform_int_distribution<int>(least, most)(m_random); }

    void closeTheSheet(Counter& counter, QDate day)
    {
        counter.child<QAction>("recarga").trigger();
        counter.child<platform::DatePicker>("DTP").setValue(day);
        std::vector<qint64> litres;
        for (int pump = 0; pump < Pumps; ++pump) {
            litres.push_back(amount(0, 150'000));
            m_books.meters[static_cast<size_t>(pump)] += litres.back();
            m_books.sold[static_cast<size_t>(pump % Products)] += litres.back();
            const qint64 meter = m_books.meters[static_cast<size_t>(pump)];
            counter.enterReading(pump + 1, u"%1,%2"_s.arg(meter / 100).arg(meter % 100, 2, 10, QChar(u'0')));
        }
        QCOMPARE(counter.grid("flexG").Rows(), Pumps + 1);
        QTest::keyClick(&counter.window(), Qt::Key_F4);
        QCOMPARE(counter.grid("flexG").Rows(), 1);
        QCOMPARE(counter.grid("flex2").Rows(), Pumps + 1); // The day's list.
        qint64 all = 0;
        for (const qint64 one : litres)
            all += one;
        QCOMPARE(counter.child<QLabel>("Label10").text(), shown(all));

        // The first two readings were typed wrong.
        for (int row = 1; row <= Deleted; ++row)
            all -= litres[static_cast<size_t>(row - 1)];
        // The last day first, as the period must not be long in between.
        counter.child<platform::DatePicker>("dtpI_1").setValue(day);
        counter.child<platform::DatePicker>("dtpI_0").setValue(day);
        for (int row = 1; row <= Deleted; ++row)
            support::clickRow(counter.grid("flex2"), row);
        QTest::keyClick(&counter.grid("flex2"), Qt::Key_Delete);
        QCOMPARE(counter.grid("flex2").Rows(), Pumps + 1 - Deleted);
        QCOMPARE(counter.child<QLabel>("Label10").text(), shown(all));
        m_books.litresLeft += all;
    }

    void moveTheStock(Counter& counter)
    {
        const auto ledger = endurance::opened<frmControlEstoqueParal>(counter, PrintListing());
        auto& products = control<platform::ListBox>(*ledger, "List1");
        QCOMPARE(products.count(), Products);
        products.setCurrentRow(0);
        const qint64 delivered = amount(1, 9'999'999);
        control<QLineEdit>(*ledger, "tx_0").setText(shown(delivered));
        control<QAbstractButton>(*ledger, "BTM").click();
        m_books.credits += delivered;
        ledger->close();

        counter.child<QAbstractButton>("Buttom_Mega2").click();
        auto& text2 = counter.child<QLineEdit>("Text2");
        const qint64 issued = amount(1, 2'000);
        text2.setText(shown(issued));
        counter.grid("FlexD").setRow(1);
        QTest::keyClick(&text2, Qt::Key_Return);
        m_books.debits += issued;
    }

    void dip(Counter& counter, QDate day)
    {
        const auto gauging = endurance::opened<frmReguaL>(counter);
        control<platform::DatePicker>(*gauging, "DTP").setValue(day);
        auto& lines = control<QListWidget>(*gauging, "List1");
        QCOMPARE(lines.count(), 100);
        lines.setFocus();
        lines.setCurrentRow(static_cast<int>(day.toJulianDay() % 100));
        control<QAbstractButton>(*gauging, "Command1").click();
        QCOMPARE(control<platform::FlexGrid>(*gauging, "flex").Rows(), 2);
        gauging->close();
    }

    void printTheSheet(Counter& counter)
    {
        const QString paper = m_papers.filePath(u"planilha.pdf"_s);
        QFile::remove(paper);
        counter.chooser.answer.fileName = paper;
        counter.child<QAbstractButton>("Buttom_Mega3").click();
        QFile file(paper);
        QVERIFY(file.open(QIODevice::ReadOnly) && file.read(5) == "%PDF-" && file.size() > 5'000);
    }

    /// The tables from outside the program.
    void compareBooks(const support::BothBackEnds& database, int days) const
    {
        const auto table = [&](const char* name, const char* columns) {
            return database.table(QString::fromLatin1(name), QString::fromLatin1(columns).split(u' '));
        };
        const auto readings = table("Leitura", "Saldo cdgBomba");
        QCOMPARE(readings.size(), days * (Pumps - Deleted));
        qint64 litres = 0;
        for (const QStringList& reading : readings)
            litres += hundredthsOf(reading[0]);
        QCOMPARE(litres, m_books.litresLeft);
        QCOMPARE(table("ExcluidosLeituraBomba", "produto").size(), days * Deleted);
        QCOMPARE(table("tabafer", "cmt").size(), days);

        const auto pumps = table("PlanilhaPosto", "numeroDispositivo Leitura");
        QCOMPARE(pumps.size(), Pumps);
        for (const QStringList& pump : pumps)
            QCOMPARE(hundredthsOf(pump[1]), m_books.meters[static_cast<size_t>(pump[0].toInt() - 1)]);

        for (const QStringList& item : table("Estoque", "codigo quantidade")) {
            const auto product = static_cast<size_t>(item[0].toInt() - FirstStockCode);
            QCOMPARE(hundredthsOf(item[1]), OpeningStock - m_books.sold[product]);
        }
        qint64 credits = 0;
        qint64 debits = 0;
        for (const QStringList& row : table("ControleProdComb", "cred deb")) {
            credits += hundredthsOf(row[0]);
            debits += hundredthsOf(row[1]);
        }
        QCOMPARE(credits, m_books.credits);
        QCOMPARE(debits, m_books.debits);
        QCOMPARE(hundredthsOf(table("EstoqueDiversos", "quantidade").first().first()), 90'000'00 - m_books.debits);
    }

private Q_SLOTS:
    void days_data() { support::BothBackEnds::addRows(); }
    void days()
    {
        FRESH_DATABASE(database);
        const int days =
            qEnvironmentVariableIsSet("PLANILHA_SOAK_DAYS") ? qEnvironmentVariableIntValue("PLANILHA_SOAK_DAYS") : 12;
        QVERIFY2(days > 0, "PLANILHA_SOAK_DAYS is not a number of days");
        m_books = {};
        makeStation(database);
        const QTemporaryDir folder;
        support::writeSettings(folder.path(), database.isMySql(), database.database());
        Counter counter(folder.path(), FirstDay);

        qint64 halfTime = 0;
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < days; ++i) {
            const QDate day = FirstDay.addDays(i);
            counter.clock.set(QDateTime(day, QTime(18, 0)));
            closeTheSheet(counter, day);
            moveTheStock(counter);
            dip(counter, day);
            printTheSheet(counter);
            if (QTest::currentTestFailed())
                return;
            if (i == days / 2)
                halfTime = memoryBytes();
        }
        const qint64 end = memoryBytes();
        for (const QString& said : std::as_const(counter.messages.said))
            QVERIFY2(!said.contains(u"Erro"_s), qPrintable(said));
        compareBooks(database, days);
        qInfo("%d days in %.0f s; memory %.1f MB at half time, %.1f MB at the end", days,
              static_cast<double>(clock.elapsed()) / 1000, static_cast<double>(halfTime) / 1e6,
              static_cast<double>(end) / 1e6);
        // The engine's page cache grows with its file up to 16 MB; nothing else does.
        QVERIFY(end - halfTime < (database.isMySql() ? 4'000'000 : 12'000'000));
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    platform::prepareApplication(application);
    QApplication::setQuitOnLastWindowClosed(false);
    qputenv("QTEST_FUNCTION_TIMEOUT", "7200000"); // A long run is no hang.
    TestSoak test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_soak.moc"
