// Procedures that several windows use: key filter, list entries, totals, marks, and the stock statements.

#include "platform/ui/Application.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/RealSeams.h"
#include "platform/vb/Error.h"
#include "shared/Emitente.h"
#include "shared/EntryGrid.h"
#include "shared/ListEntry.h"
#include "shared/Module1.h"
#include "shared/StationWindow.h"
#include "shared/StockHelpers.h"
#include "support/WindowTest.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QPointer>

using namespace Qt::StringLiterals;

namespace {

/// A window whose handler lets events run.
class SomeWindow : public StationWindow
{
public:
    using StationWindow::StationWindow;
    void run(const std::function<void()>& work) { handle(work); }
};

} // namespace

class TestShared : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filtra_numero_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QChar>("key");
        QTest::addColumn<QChar>("passed");
        QTest::addColumn<QString>("left");
        const auto add = [](const char* name, const char* text, char16_t key, char16_t passed, const char* left) {
            QTest::newRow(name) << QString::fromLatin1(text) << QChar(key) << QChar(passed)
                                << QString::fromLatin1(left);
        };
        add("digit", "1", u'9', u'9', "1");
        add("point becomes comma", "1", u'.', u',', "1");
        add("second comma", "1,2", u',', u',', "1,2");
        add("leading comma", "", u',', u',', "");
        add("minus goes in front", "150,00", u'-', u'\0', "-150,00");
        add("second minus", "-150,00", u'-', u'\0', "-150,00");
        add("minus in an empty box", "", u'-', u'\0', "");
        add("backspace", "1", 8, 8, "1");
        add("enter", "1", 13, 13, "1");
        add("blank", "1", u' ', u'\0', "1");
    }
    void filtra_numero()
    {
        QFETCH(QString, text);
        QFETCH(QChar, key);
        QFETCH(QChar, passed);
        QLineEdit box(text);
        QCOMPARE(Module1::filtra_numero(box, key.unicode()), passed.unicode());
        QTEST(box.text(), "left");
    }

    void listEntries()
    {
        const QString entry = shared::listEntry(7, u"Óleo - 1 L"_s);
        QCOMPARE(entry, u"00007 - Óleo - 1 L"_s);
        QCOMPARE(shared::entryCode(entry), u"00007"_s);
        QCOMPARE(shared::entryDescription(entry), u"Óleo - 1 L"_s);
        QCOMPARE(shared::entryDescription(u"0000"_s), QString());
    }

    void gridHelpers()
    {
        platform::FlexGrid grid;
        Module1::formata_flexG(grid);
        QCOMPARE(grid.Rows(), 1);
        QCOMPARE(EntryGrid::total(grid), vb::Currency());
        grid.AddItem(u"\t\t\t\t\t\t1.234,50"_s);
        grid.AddItem(u"\t\t\t\t\t\t"_s);
        grid.AddItem(u"\t\t\t\t\t\t-0,25"_s);
        QCOMPARE(EntryGrid::total(grid), vb::Currency::fromScaled(12'342'500));

        grid.setRow(2);
        Module1::marca_linha(grid);
        QCOMPARE(grid.CellBackColor(2, 0), Module1::MarkColour);
        QCOMPARE(grid.CellBackColor(2, 8), Module1::MarkColour);
        QCOMPARE(grid.CellBackColor(1, 0), 0U);
        Module1::marca_linha(grid);
        QCOMPARE(grid.CellBackColor(2, 0), 0U);

        QCOMPARE(Module1::linha_traco(), QString(112, u'-'));
        QCOMPARE(Module1::linha_asterisco(), QString(112, u'*'));
        // Hour, minute and the minute again.
        QCOMPARE(Module1::numero_planilha(QDateTime(QDate(2024, 3, 5), QTime(9, 7, 58))), u"Nº 050324-090707"_s);
    }

    void stockHelpers_data() { support::BothBackEnds::addRows(); }
    void stockHelpers()
    {
        FRESH_DATABASE(database);
        support::WindowTest station(database);
        ado::Connection& connection = database.connection();
        station.script({
            u"Insert into PlanilhaPosto (numeroDispositivo, Descritivo, ProdVinculado) values (7, 'G', 101)"_s,
            u"Insert into PlanilhaPosto (numeroDispositivo) values (8)"_s,
            u"Insert into CadProdComb (Descritivo, valor, codigoEstoque) values ('G', 5.499, 101)"_s,
            u"Insert into CadProdComb (Descritivo, codigoEstoque) values ('H', 102)"_s,
        });
        QCOMPARE(Module1::prod_vinculado(connection, u"007"_s).text(), u"101"_s);
        QVERIFY(Module1::prod_vinculado(connection, u"8"_s).isNull());
        QCOMPARE(Module1::prod_vinculado(connection, u"9"_s).text(), u"0"_s);
        QVERIFY_THROWS_EXCEPTION(vb::Error, static_cast<void>(Module1::prod_vinculado(connection, QString())));
        QCOMPARE(Module1::valor_produto(connection, u"101"_s).text(), u"5,499"_s);
        QCOMPARE(Module1::valor_produto(connection, u"102"_s).text(), u"0"_s);
        QCOMPARE(Module1::valor_produto(connection, u"103"_s).text(), u"0"_s);
        QCOMPARE(Module1::descritivo_bomba(connection, u"7"_s), u"G"_s);
        QCOMPARE(Module1::descritivo_bomba(connection, u"9"_s), QString());

        const auto write = [&](const char* kind, const char* quantity) {
            Module1::lanca_controle(station.services, u"21"_s, u"D'água"_s, QString::fromLatin1(quantity), u"0503"_s,
                                    QString::fromLatin1(kind));
        };
        QCOMPARE(Module1::soma_deb_dia(station.services, u"21"_s).text(), u"0"_s);
        write("deb", "1.002,5");
        write("cred", "3");
        write("deb", "0,25");
        station.trace.clear();
        QCOMPARE(Module1::soma_deb_dia(station.services, u"21"_s).text(), u"1002,75"_s);
        QCOMPARE(station.statements(),
                 QStringList(u"open Select sum(deb) from ControleProdComb where codProd = 21 and dataOP = "_s +
                             (database.isMySql() ? u" ' 2026/03/14 ' "_s : u" # 03/14/2026 # "_s)));
        station.clock.set(QDateTime(QDate(2026, 3, 15), QTime(0, 0)));
        QCOMPARE(Module1::soma_deb_dia(station.services, u"21"_s).text(), u"0"_s);
        const QString today = station.shownDate(QDate(2026, 3, 14));
        QCOMPARE(station.rows(u"ControleProdComb"_s, u"DataOP descritivo fornecedor NumeroNota cred deb"_s),
                 (QStringList{today + u"|D'água|OperEmpresa|0503|0|1002.5"_s, today + u"|D'água|OperEmpresa|0503|3|0"_s,
                              today + u"|D'água|OperEmpresa|0503|0|0.25"_s}));
    }

    void emitente_data() { support::BothBackEnds::addRows(); }
    void emitente()
    {
        FRESH_DATABASE(database);
        Emitente nothing = Module1::carrega_emitente(database.connection()); // No table: no error, no texts.
        QCOMPARE(nothing.RazaoSocial + nothing.endereco, QString());
        support::makeStation(database);
        database.script({u"update DatEmit set IE = null"_s});
        const Emitente read = Module1::carrega_emitente(database.connection());
        QCOMPARE(read.RazaoSocial, u"Auto Posto Três Ipês Ltda"_s);
        QCOMPARE(read.IE, QString());
        QCOMPARE(read.CNPJ, u"00.111.222/0001-33"_s);
        QCOMPARE(read.endereco, u"Avenida das Acácias, 1500, Ipê do Sul, (00) 3000-1234"_s);
    }

    void comingBackSelectsNothing()
    {
        QWidget window;
        QWidget other;
        auto& box = *new QLineEdit(&window);
        auto& next = *new QLineEdit(&window);
        for (QLineEdit* const one : {&box, &next})
            shared::seleciona_ao_focar(*one);
        next.setText(u"12,5"_s);
        support::open(window);
        box.setFocus();
        QTest::keyClicks(&box, u"1234"_s);
        support::open(other);
        support::open(window);
        QVERIFY(box.hasFocus());
        QCOMPARE(box.selectedText(), QString());
        support::open(other);
        next.setFocus(); // by the program, while another window is in front
        support::open(window);
        QCOMPARE(next.selectedText(), u"12,5"_s);
    }

    /// A window that is closed while its handler lets events run lives until the handler has returned.
    void windowClosedInItsHandler()
    {
        support::BothBackEnds database(u"access"_s);
        const support::WindowTest station(database);
        QPointer<SomeWindow> window = new SomeWindow(station.services, nullptr);
        window->deleteWhenClosed();
        window->show();
        window->run([&] {
            window->close();
            for (int round = 0; round < 3; ++round)
                QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QVERIFY(window);
        });
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!window);
    }

    /// Where a window manager holds the window, the slide ends all the same.
    void slidesAwayWithinTwoSeconds()
    {
        struct Held : QWidget
        {
            void moveEvent(QMoveEvent*) override
            {
                QMetaObject::invokeMethod(
                    this, [this] { move(50, 50); }, Qt::QueuedConnection);
            }
        } window;
        platform::ApplicationEvents events;
        window.show();
        QElapsedTimer timer;
        timer.start();
        Module1::fecha_deslizando(window, events);
        QVERIFY(!window.isVisible() && timer.elapsed() < 2000);
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    platform::prepareApplication(application);
    TestShared test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_shared.moc"
