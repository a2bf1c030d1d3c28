#include "platform/print/PrinterObject.h"
#include "support/PdfText.h"
#include "support/PrintDoubles.h"

#include <QTemporaryDir>

using platform::PrinterObject;
using platform::Tab;

class TestPrinterObject : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    support::TestSpooler m_spooler;

    PrinterObject printerToFile() { return {{QStringLiteral("PDF"), file()}, m_spooler, QStringLiteral("Teste")}; }
    QString file() const { return m_folder.filePath(QStringLiteral("teste.pdf")); }
    static support::PdfWord find(const QList<support::PdfWord>& words, const QString& text)
    {
        for (const support::PdfWord& word : words) {
            if (word.text == text)
                return word;
        }
        return {};
    }

private Q_SLOTS:
    void init()
    {
        if (!support::hasPdfTools())
            QSKIP("poppler-utils is not installed");
        m_spooler = {};
        QFile::remove(file());
    }

    void positionsAreTwipsAndColumnsAreDigits()
    {
        PrinterObject printer = printerToFile();
        printer.setMargins(400, 400);
        printer.setFontBold(true);
        printer.setCurrentX(1440);
        printer.setCurrentY(2880);
        printer.Print(QStringLiteral("Nº"), PrinterObject::LineEnd::Open);
        printer.Print(QStringLiteral("R$ação"));
        QCOMPARE(printer.CurrentX(), 0.0);
        QCOMPARE(printer.CurrentY(), 2880 + printer.TextHeight());
        printer.setFontBold(false);
        printer.Print({QStringLiteral("abc"), Tab{10}, QStringLiteral("dez"), Tab{30}, QStringLiteral("trinta")});
        printer.Print({QStringLiteral("123456789"), Tab{10}, QStringLiteral("justo")});
        printer.Print(
            {QStringLiteral("1234567890"), Tab{10}, QStringLiteral("passou"), Tab{0}, QStringLiteral("zero")});
        printer.EndDoc();

        const QList<support::PdfWord> words = support::pdfWords(file());
        support::checkPaper(file(), words);
        const auto left = [&](const char* text) { return find(words, QString::fromUtf8(text)).box.left(); };
        const auto top = [&](const char* text) { return find(words, QString::fromUtf8(text)).box.top(); };
        // One inch and the margin of 20 points; what an open line adds follows at once.
        QVERIFY(qAbs(left("NºR$ação") - 92) < 0.2);
        QVERIFY(qAbs(top("NºR$ação") - 164) < 1);
        QVERIFY(qAbs(left("dez") - (20 + 9 * 4.8)) < 0.2);
        QVERIFY(qAbs(left("trinta") - (20 + 29 * 4.8)) < 0.2);
        QCOMPARE(top("dez"), top("abc"));
        QVERIFY(find(words, QStringLiteral("123456789justo")).page == 1);
        // A column that is already passed is taken on the next line.
        QVERIFY(qAbs(left("passou") - (20 + 9 * 4.8)) < 0.2);
        QVERIFY(top("passou") > top("1234567890") + 8);
        QVERIFY(qAbs(left("zero") - 20) < 0.2);
        QVERIFY(top("zero") > top("passou") + 8);
    }

    void longDocumentsContinueOnFurtherPages()
    {
        PrinterObject printer = printerToFile();
        printer.setMargins(567, 567);
        for (int line = 0; line < 200; ++line)
            printer.Print(QStringLiteral("linha%1").arg(line));
        QCOMPARE(printer.Page(), 3);
        printer.NewPage();
        printer.Print(QStringLiteral("fim"));
        printer.EndDoc();
        const QList<support::PdfWord> words = support::pdfWords(file());
        support::checkPaper(file(), words);
        QCOMPARE(words.size(), 201);
        QCOMPARE(words.last().page, 4);
    }

    void nothingLeavesBeforeTheEnd()
    {
        {
            PrinterObject printer({QStringLiteral("Fila"), {}}, m_spooler, QStringLiteral("Teste"));
            QCOMPARE(printer.DeviceName(), QStringLiteral("Fila"));
            printer.Print(QStringLiteral("abandonado"));
        }
        PrinterObject printer({QStringLiteral("Fila"), {}}, m_spooler, QStringLiteral("Teste"));
        printer.EndDoc();
        printer.Print(QStringLiteral("descartado"));
        printer.KillDoc();
        printer.EndDoc();
        QCOMPARE(m_spooler.documents.size(), 0);
        printer.Line(0, 0, 1440, 1440);
        printer.EndDoc();
        printer.EndDoc();
        QCOMPARE(m_spooler.queues, QStringList{QStringLiteral("Fila")});
        QVERIFY(m_spooler.documents.first().startsWith("%PDF-"));

        m_spooler.refuse = true;
        printer.Print(QStringLiteral("recusado"));
        QVERIFY_THROWS_EXCEPTION(platform::PrintError, printer.EndDoc());
    }

    void errorsAreRaisedAndKeepAnOlderFile()
    {
        PrinterObject printer = printerToFile();
        QVERIFY_THROWS_EXCEPTION(platform::PrintError, printer.setPaperSize(12345));
        printer.setPaperSize(PrinterObject::PaperA4);
        QCOMPARE(qRound(printer.ScaleWidth()), 11906);
        QCOMPARE(qRound(printer.ScaleHeight()), 16838);

        PrinterObject nowhere({QStringLiteral("PDF"), m_folder.filePath(QStringLiteral("falta/teste.pdf"))}, m_spooler,
                              QStringLiteral("Teste"));
        nowhere.Print(QStringLiteral("x"));
        QVERIFY_THROWS_EXCEPTION(platform::PrintError, nowhere.EndDoc());
    }
};

QTEST_MAIN(TestPrinterObject)
#include "test_printer_object.moc"
