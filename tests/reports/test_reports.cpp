#include "platform/ui/FlexGrid.h"
#include "reports/CheckListReport.h"
#include "reports/LedgerReport.h"
#include "reports/SheetReport.h"
#include "shared/Emitente.h"
#include "shared/Module1.h"
#include "support/Doubles.h"
#include "support/PdfText.h"
#include "support/PrintDoubles.h"

#include <QFontDatabase>
#include <QScopeGuard>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using platform::FlexGrid;
using support::PdfWord;

namespace {

const QDate First(2026, 11, 1);
const QDate Last(2026, 11, 22);

QString number(int whole)
{
    return QLocale(QLocale::Portuguese, QLocale::Brazil).toString(whole) + u",00"_s;
}

/// Left edge of a listing's column, counted from 1: 113 columns of 4.8 points stand in the middle of the paper.
double edge(int column)
{
    return (595.276 - 113 * 4.8) / 2 + (column - 1) * 4.8;
}

/// The words of a listing's page, each put where it stands on the grid of columns. A word off the grid is told.
QStringList listingLines(const QList<PdfWord>& words, int page)
{
    QMap<int, QString> lines; // by height in tenths of a point
    for (const PdfWord& word : words) {
        if (word.page != page)
            continue;
        const double column = (word.box.left() - edge(1)) / 4.8;
        if (qAbs(column - qRound(column)) > 0.05)
            return {u"off the columns: "_s + word.text};
        QString& line = lines[qRound(word.box.top() * 10)];
        line = line.leftJustified(qRound(column)) + word.text;
    }
    return lines.values();
}

/// Places of the words that are the text.
QList<PdfWord> find(const QList<PdfWord>& words, const QString& text)
{
    QList<PdfWord> found = words;
    found.removeIf([&](const PdfWord& word) { return word.text != text; });
    return found;
}

/// Place of the first word that contains the text.
QRectF placeOf(const QList<PdfWord>& words, const QString& text)
{
    const auto word = std::ranges::find_if(words, [&](const PdfWord& one) { return one.text.contains(text); });
    return word == words.end() ? QRectF() : word->box;
}

/// Left edges of the sheet's column boxes in points, and the last one's right edge.
constexpr double SheetEdges[] = {28.5, 63, 213, 280.5, 348, 399, 453, 504, 567};

/// First columns of a listing's cells, and the one after the last.
QList<int> stops(const QString& report)
{
    if (report == u"check-list"_s)
        return {1, 10, 45, 62, 82};
    return {1, 9, 18, 27, 48, 61, 74, 87, 113};
}

} // namespace

class TestReports : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    support::TestChooser m_chooser;
    support::TestDefaultPrinter m_default;
    support::TestSpooler m_spooler;
    support::TestPump m_pump;
    support::TestClock m_clock{QDateTime(Last, QTime(22, 5, 9, 999))};
    Emitente m_emitente;
    FlexGrid m_grid;
    FlexGrid m_items;

    /// Prints the report over m_grid (and m_items) as it stands.
    bool print(const QString& report)
    {
        const reports::ReportServices services{m_emitente, m_clock, m_pump, {m_chooser, m_default, m_spooler}};
        if (report == u"sheet"_s)
            return reports::imprime_planilha(m_grid, u"98.765,43"_s, u"4.321,00"_s, services);
        if (report == u"check-list"_s)
            return reports::imprime_conferencia(m_grid, m_items, First, Last, services);
        return reports::imprime_controle(m_grid, u"GASOLINA ADITIVADA"_s, First, Last, u"7.654,32"_s, u"1.234,56"_s,
                                         services);
    }

    QString file() const { return m_folder.filePath(u"papel.pdf"_s); }

    /// Rows whose cells are all different. The columns are those of the window's grid.
    static void fill(FlexGrid& grid, const QString& report, int rows, int offset = 0)
    {
        for (int i = offset + 1; i <= offset + rows; ++i) {
            const QString date = QDate(2020, 1, 1).addDays(i).toString(u"dd/MM/yy"_s);
            const QString name = u"ÁLCOOL-Nº%1"_s.arg(i);
            const QString code = QString::number(300 + i);
            QStringList cells;
            const QString price = number(100'000 + i);
            if (report == u"sheet"_s)
                cells << code << name << price << number(1'200'000 + i) << date << number(3'000 + i) << number(i)
                      << number(50'000 + i) << u"chave%1"_s.arg(i);
            else if (report == u"check-list"_s)
                cells << code << name << price << date << number(i);
            else
                cells << QString::number(i) << QString::number(20'000 + i) << date << name << price
                      << number(20'000 + i) << u"NF%1"_s.arg(i) << u"Refinaria-%1"_s.arg(i);
            grid.AddItem(cells.join(u'\t'));
        }
    }

    /// Every cell of the grid stands once on the sheet, in its box; the rows from top to bottom.
    static void checkSheet(const QList<PdfWord>& words, const FlexGrid& grid)
    {
        double previous = 0;
        for (int row = 1; row < grid.Rows(); ++row) {
            for (int column = 0; column < 8; ++column) {
                const QString text = grid.TextMatrix(row, column);
                const QList<PdfWord> found = find(words, text);
                QVERIFY2(found.size() == 1, qPrintable(u"%1 times %2"_s.arg(found.size()).arg(text)));
                const QRectF box = found.first().box;
                QVERIFY2(box.left() > SheetEdges[column] && box.right() < SheetEdges[column + 1], qPrintable(text));
                const double height = found.first().page * 842 + box.top();
                QVERIFY2(column == 0 ? height > previous : qAbs(height - previous) < 0.1, qPrintable(text));
                previous = height;
            }
        }
    }

    /// Every row of the grid is a line of the listing and each cell stands between its stops, numbers to the right.
    static void checkListing(const QStringList& lines, const FlexGrid& grid, const QString& report)
    {
        const QList<int> from = stops(report);
        const bool ledger = report == u"ledger"_s;
        qsizetype previous = -1;
        for (int row = 1; row < grid.Rows(); ++row) {
            const QString name = u'|' + grid.TextMatrix(row, ledger ? 3 : 1);
            const QStringList found = lines.filter(QRegularExpression(QRegularExpression::escape(name) + u"\\b"_s));
            QVERIFY2(found.size() == 1, qPrintable(name));
            QVERIFY2(lines.indexOf(found.first()) > previous, qPrintable(name));
            previous = lines.indexOf(found.first());
            for (int column = 0; column < from.size() - 1; ++column) {
                const bool right = ledger ? column == 4 || column == 5 : column == 2 || column == 3;
                const int width = from.at(column + 1) - from.at(column);
                QString expected = grid.TextMatrix(row, column);
                if (right)
                    expected = expected.rightJustified(ledger ? 12 : 15);
                if (column > 0)
                    expected.prepend(u'|');
                QCOMPARE(found.first().leftJustified(113).mid(from.at(column) - 1, width),
                         expected.leftJustified(width));
            }
        }
    }

private Q_SLOTS:
    void init()
    {
        if (!support::hasPdfTools())
            QSKIP("poppler-utils is not installed");
        QVERIFY(m_folder.isValid());
        QFile::remove(file());
        m_chooser = {};
        m_chooser.answer.fileName = file();
        m_default = {};
        m_default.printers = QStringList{u"Escritório"_s, u"Pista"_s};
        m_default.current = m_default.printers.first();
        m_spooler = {};
        m_emitente = {u"Auto Posto Três Ipês Ltda"_s, u"000.111.222.333"_s, u"00.111.222/0001-33"_s,
                      u"Rua das Acácias, 15, Conceição, (00) 3900-0000"_s};
        for (FlexGrid* grid : {&m_grid, &m_items}) {
            grid->clearRows();
            grid->setCols(9);
        }
    }

    void everyValueOnceAndInItsColumn_data()
    {
        QTest::addColumn<QString>("report");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("items");
        QTest::addColumn<int>("pages");
        struct Case
        {
            const char* report;
            int rows, items, pages;
        };
        for (const Case& row : {Case{"sheet", 0, 0, 1},
                                {"sheet", 1, 0, 1},
                                {"sheet", 10, 0, 1},
                                {"sheet", 40, 0, 1},
                                {"sheet", 200, 0, 3},
                                {"check-list", 0, 0, 1},
                                {"check-list", 1, 1, 1},
                                {"check-list", 10, 10, 1},
                                {"check-list", 40, 10, 2},
                                {"check-list", 10, 40, 2},
                                {"check-list", 200, 40, 7},
                                {"ledger", 0, 0, 1},
                                {"ledger", 1, 0, 1},
                                {"ledger", 10, 0, 1},
                                {"ledger", 40, 0, 2},
                                {"ledger", 200, 0, 5}})
            QTest::addRow("%s %d+%d", row.report, row.rows, row.items)
                << QString::fromLatin1(row.report) << row.rows << row.items << row.pages;
    }
    void everyValueOnceAndInItsColumn()
    {
        QFETCH(QString, report);
        QFETCH(int, rows);
        QFETCH(int, items);
        fill(m_grid, report, rows);
        fill(m_items, report, items, rows);
        QVERIFY(print(report));
        if (const QString keep = qEnvironmentVariable("PLANILHA_KEEP_PAPERS"); !keep.isEmpty())
            QFile::copy(file(), u"%1/%2.pdf"_s.arg(keep, QString::fromUtf8(QTest::currentDataTag())));

        const QList<PdfWord> words = support::pdfWords(file());
        support::checkPaper(file(), words);
        QFETCH(int, pages);
        QCOMPARE(words.last().page, pages);
        if (report == u"sheet"_s) {
            checkSheet(words, m_grid);
        } else {
            QStringList lines;
            for (int page = 1; page <= pages; ++page)
                lines += listingLines(words, page);
            checkListing(lines, m_grid, report);
            checkListing(lines, m_items, report);
        }
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(find(words, u"Página"_s).size(), pages > 1 ? pages : 0);
        // Captions on every page, and the check-list has two kinds of rows.
        const QString caption = QString::fromLatin1(report == u"sheet"_s ? "LeitAnterior" : "|Descritivo");
        qsizetype captions = 0;
        for (const PdfWord& word : words)
            captions += word.text.contains(caption);
        QVERIFY(captions == pages + (report == u"check-list"_s) || (items == 40 && captions > pages));
        if (report == u"sheet"_s) {
            for (const char* text : {"98.765,43", "4.321,00", "Responsavel", "LTS-TOT"}) {
                const QList<PdfWord> found = find(words, QString::fromUtf8(text));
                QVERIFY2(found.size() == 1 && found.first().page == pages, text);
            }
            QCOMPARE(find(words, u"261122220509"_s).size(), pages);  // the stamp
            QCOMPARE(find(words, u"221126-220505"_s).size(), pages); // hour, minute, minute
        }
    }

    void wholeLines_data()
    {
        QTest::addColumn<QString>("report");
        QTest::addColumn<QString>("expected");
        QTest::newRow("check-list") << u"check-list"_s << QStringLiteral(R"(
                                                                                                Nº 221126-220505
AUTO POSTO TRÊS IPÊS LTDA                                             DOMINGO, 22 DE NOVEMBRO DE 2026 - 22:05:09
Rua das Acácias, 15, Conceição, (00) 3900-0000                  CNPJ: 00.111.222/0001-33 - INSC: 000.111.222.333
****************************************************************************************************************
NºDispos |Descritivo                        |LeituraAnterior |DataUltimaLeitura  |Conferência:
----------------------------------------------------------------------------------------------------------------
301      |ÁLCOOL-Nº1                        |     100.001,00 |       02/01/20    |
----------------------------------------------------------------------------------------------------------------
DIVERSOS: 22/11/2026
****************************************************************************************************************
* Baixas = Saidas no intervalo da data: 01/11/2026<>22/11/2026
CdgProd  |Descritivo                        |SaldAnt         |Baixas*            |Conferência:
----------------------------------------------------------------------------------------------------------------
302      |ÁLCOOL-Nº2                        |     100.002,00 |       03/01/20    |
----------------------------------------------------------------------------------------------------------------
                                                 Responsavel:----------------------------------------------
)");
        QTest::newRow("ledger") << u"ledger"_s << QStringLiteral(R"(
                                                                               Controle Estoque Vinculado Bombas
AUTO POSTO TRÊS IPÊS LTDA                                             DOMINGO, 22 DE NOVEMBRO DE 2026 - 22:05:09
Rua das Acácias, 15, Conceição, (00) 3900-0000                  CNPJ: 00.111.222/0001-33 - INSC: 000.111.222.333
****************************************************************************************************************
Produto: GASOLINA ADITIVADA                                                      Período: 01/11/2026<>22/11/2026
----------------------------------------------------------------------------------------------------------------
        |CodgProd|DatOP   |Descritivo          |Cred        |Deb         |NºNota      |Fornecedor
----------------------------------------------------------------------------------------------------------------
1       |20001   |02/01/20|ÁLCOOL-Nº1          |  100.001,00|   20.001,00|NF1         |Refinaria-1
----------------------------------------------------------------------------------------------------------------
                          |Totais              |    7.654,32|    1.234,56
)");
    }
    void wholeLines()
    {
        QFETCH(QString, report);
        QFETCH(QString, expected);
        fill(m_grid, report, 1);
        fill(m_items, report, 1, 1);
        QVERIFY(print(report));
        const QStringList lines = listingLines(support::pdfWords(file()), 1);
        QCOMPARE(lines, expected.mid(1).chopped(1).split(u'\n'));
    }

    void rightEndsAtColumn112_data()
    {
        QTest::addColumn<int>("addressLength");
        QTest::addColumn<bool>("sameLine");
        // The tax line of this station has 48 characters.
        QTest::newRow("none") << 0 << true;
        QTest::newRow("just fits") << 64 << true;
        QTest::newRow("one too many") << 65 << false;
        QTest::newRow("more than a line") << 150 << false;
    }
    void rightEndsAtColumn112()
    {
        QFETCH(int, addressLength);
        QFETCH(bool, sameLine);
        m_emitente.endereco = QString(addressLength, u'E');
        m_emitente.RazaoSocial = QString(addressLength % 80, u'N');
        QVERIFY(print(u"check-list"_s));
        const QList<PdfWord> words = support::pdfWords(file());
        support::checkPaper(file(), words);
        const double end = edge(113);
        for (const char* text : {"221126-220505", "22:05:09", "000.111.222.333"}) {
            QVERIFY2(qAbs(placeOf(words, QString::fromUtf8(text)).right() - end) < 0.3, text);
        }
        if (addressLength > 0) {
            const QRectF address = placeOf(words, QString(qMin(addressLength, 20), u'E'));
            const double fall = placeOf(words, u"000.111.222.333"_s).top() - address.top();
            QCOMPARE(fall < 1, sameLine);
        }
    }

    void longCells_data()
    {
        QTest::addColumn<QString>("report");
        QTest::addColumn<QString>("font");
        // With every font that may stand in for the one that the papers name.
        for (const QString& font : QFontDatabase::families()) {
            for (const char* report : {"sheet", "check-list", "ledger"}) {
                if (QFontDatabase::isFixedPitch(font) && QFontDatabase::isSmoothlyScalable(font))
                    QTest::addRow("%s, %s", report, qPrintable(font)) << QString::fromLatin1(report) << font;
            }
        }
    }
    /// Cells of 1 to 20 digits and more, and texts of 1 to 255 letters, in every column: a number is whole wherever it
    /// stands, a text that does not fit ends in an ellipsis, and nothing leaves its column or touches its rule.
    void longCells()
    {
        QFETCH(QString, report);
        QFETCH(QString, font);
        QFont::insertSubstitution(u"Courier New"_s, font);
        const auto setBack = qScopeGuard([] { QFont::removeSubstitutions(u"Courier New"_s); });
        const bool sheet = report == u"sheet"_s;
        const int columns = sheet || report == u"ledger"_s ? 8 : 4;
        m_emitente.RazaoSocial = u"Posto "_s + QString(60, u'W');
        m_emitente.endereco = QString(112, u'E');

        QList<QStringList> numbers;
        for (int digits = 1; digits <= 20; ++digits) {
            QStringList cells;
            for (int column = 0; column < columns; ++column)
                cells << QString::number(column + 1) + QString(digits - 1, QChar(u'0' + digits % 10));
            numbers << cells;
        }
        for (const QString& amount :
             {u"1.095.000,00"_s, u"105.000.000,00"_s, u"->21.527.463,43"_s, u"-922.337.203.685.477,58"_s})
            numbers << QStringList{u"1"_s} + QStringList(columns - 1, amount);
        for (const QStringList& cells : std::as_const(numbers))
            m_grid.AddItem(cells.join(u'\t'));
        int letters = 0;
        for (int length = 1; length <= 255; length += length < 40 ? 1 : 43) {
            QStringList cells;
            for (int column = 0; column < columns; ++column)
                cells << QString(length, QChar(u'a' + column));
            letters += length;
            m_grid.AddItem(cells.join(u'\t'));
        }
        QVERIFY(print(report));
        if (const QString keep = qEnvironmentVariable("PLANILHA_KEEP_PAPERS"); !keep.isEmpty())
            QFile::copy(file(), u"%1/%2.pdf"_s.arg(keep, QString::fromUtf8(QTest::currentDataTag())));
        const QList<PdfWord> words = support::pdfWords(file());
        support::checkPaper(file(), words); // nothing over its neighbour or off the paper

        QString all;
        for (const PdfWord& word : words)
            all += word.text + u' ';
        for (const QStringList& cells : std::as_const(numbers)) {
            for (const QString& cell : cells) {
                const QString number = cell == u"1"_s && report != u"ledger"_s ? u"01"_s : cell;
                const QRegularExpression whole(u"(?<![\\d.,])"_s + QRegularExpression::escape(number) +
                                               u"(?![\\d.,])"_s);
                QVERIFY2(all.count(whole) >= cells.count(cell), qPrintable(number));
            }
        }
        for (int column = 0; column < columns; ++column) {
            const QString letter = QChar(u'a' + column);
            if (report != u"ledger"_s || column != 6) {
                QVERIFY2(all.contains(QRegularExpression(letter + u"{3,}…"_s)), qPrintable(letter));
                continue;
            }
            // The invoice number goes on in further lines.
            qsizetype printed = 0;
            for (const PdfWord& word : words)
                printed += QRegularExpression(u"^[|a-h…]+$"_s).match(word.text).hasMatch() ? word.text.count(u'g') : 0;
            QCOMPARE(printed, letters);
        }
        for (const PdfWord& word : words) {
            if (!sheet || word.box.top() < 125 || word.box.top() > 735)
                continue;
            // A point from either rule at least.
            const auto* const edge = std::ranges::upper_bound(SheetEdges, word.box.left());
            QVERIFY2(word.box.right() < *edge - 1.7 && word.box.left() > *(edge - 1) + 1.7, qPrintable(word.text));
        }
        // What has room of its own is all there: the name, smaller, and the address.
        for (const QString& text : {QString(60, u'W'), QString(112, u'E')})
            QVERIFY(!find(words, text).isEmpty());
    }

    void whatTheOperatorDoes_data()
    {
        QTest::addColumn<QString>("report");
        QTest::addColumn<QString>("act");
        for (const char* report : {"sheet", "check-list", "ledger"}) {
            for (const char* act : {"queue", "cancel", "refused", "no folder", "no default"})
                QTest::addRow("%s, %s", report, act) << QString::fromLatin1(report) << QString::fromLatin1(act);
        }
    }
    /// Whatever becomes of the document, the default printer is what it was, although the dialog changed it.
    void whatTheOperatorDoes()
    {
        QFETCH(QString, report);
        QFETCH(QString, act);
        fill(m_grid, report, 1);
        m_chooser.answer = {u"Pista"_s, {}};
        m_chooser.whileOpen = [this] { m_default.current = m_default.printers.last(); };
        const QString before = act == u"no default"_s ? QString() : m_default.current;
        m_default.current = before;
        if (act == u"cancel"_s) {
            m_chooser.cancel = true;
            QVERIFY(!print(report));
        } else if (act == u"refused"_s) {
            m_spooler.refuse = true;
            QVERIFY_THROWS_EXCEPTION(platform::PrintError, print(report));
        } else if (act == u"no folder"_s) {
            m_chooser.answer.fileName = m_folder.filePath(u"falta/papel.pdf"_s);
            QVERIFY_THROWS_EXCEPTION(platform::PrintError, print(report));
        } else {
            QVERIFY(print(report));
            QCOMPARE(m_spooler.queues, QStringList{u"Pista"_s});
        }
        QCOMPARE(m_chooser.asked.size(), 1);
        QCOMPARE(m_spooler.documents.size(), m_spooler.queues.size());
        QVERIFY(!QFile::exists(file()));
        if (!before.isEmpty())
            QCOMPARE(m_default.current, before);
    }
};

QTEST_MAIN(TestReports)
#include "test_reports.moc"
