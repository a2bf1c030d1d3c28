#include "StationFixture.h"

#include "platform/ui/DatePicker.h"
#include "platform/ui/FlexGrid.h"

void writeSettings(const QString& folder, const support::BothBackEnds& database)
{
    support::writeSettings(folder, database.isMySql(), database.database());
}

StationFixture::StationFixture(support::BothBackEnds& anyDatabase)
    : database(anyDatabase)
{
    support::makeStation(database);
    const auto dates = [&](const char* text) {
        // Month first in a literal of Access, year first in one of MySQL.
        const QDate date = QDate::fromString(QString::fromLatin1(text), Qt::ISODate);
        return database.isMySql() ? QStringLiteral("'%1'").arg(date.toString(Qt::ISODate))
                                  : QStringLiteral("#%1#").arg(date.toString(QStringLiteral("MM/dd/yyyy")));
    };
    const QString pumps = QStringLiteral("Insert into PlanilhaPosto (numeroDispositivo, Descritivo, Leitura, "
                                         "DataInsert, ProdVinculado, tanq) values (");
    const QString products =
        QStringLiteral("Insert into CadProdComb (Descritivo, codprod, valor, codigoEstoque) values (");
    const QString stock =
        QStringLiteral("Insert into Estoque (codigo, Discriminacao, quantidade, valorvenda) values (");
    const QString items = QStringLiteral("Insert into EstoqueDiversos (codigo, discriminacao, quantidade) values (");
    database.script({
        pumps + QStringLiteral("7, 'Etanol pátio', '500', ") + dates("2024-03-12") +
            QStringLiteral(", 102, 'TANQUE_12')"),
        pumps + QStringLiteral("1, 'Gasolina A', '1000,5', ") + dates("2024-03-14") +
            QStringLiteral(", 101, 'TANQUE_1')"),
        pumps + QStringLiteral("2, 'Gasolina B', '12345,67', ") + dates("2024-03-14") +
            QStringLiteral(", 101, 'TANQUE_1')"),
        products + QStringLiteral("'Gasolina', 1, 5.499, 101)"),
        products + QStringLiteral("'Etanol', 2, 3.5, 102)"),
        stock + QStringLiteral("101, 'Gasolina comum', 10000.5, 5.5)"),
        stock + QStringLiteral("102, 'Etanol', 3000, 3.5)"),
        items + QStringLiteral("21, 'Óleo 1 L', '10,00')"),
        items + QStringLiteral("20, 'Aditivo', '5,00')"),
    });
    writeSettings(folder.path(), database);
    emitente = {QStringLiteral("Auto Posto Três Ipês Ltda"), QStringLiteral("000"), QStringLiteral("111"), {}};
    gate.setPrompt([this] {
        ++prompts;
        if (knowsPassword)
            gate.denied = false;
    });
    station.emplace(folder.path());
    station->open(messages);
    services.emplace(Services{station->DataConnection(), station->dialect(), messages, clock, pump});
}

frmprincipal& StationFixture::open()
{
    m_window.emplace(*services, *station, gate, emitente, platform::Printers{chooser, defaultPrinter, spooler});
    m_window->carrega();
    m_window->show();
    m_window->activateWindow();
    if (!QTest::qWaitForWindowActive(&*m_window))
        qFatal("the window does not become active");
    return *m_window;
}

platform::FlexGrid& StationFixture::grid(const char* name) const
{
    return child<platform::FlexGrid>(name);
}

platform::DatePicker& StationFixture::date(const char* name) const
{
    return child<platform::DatePicker>(name);
}

QString StationFixture::label(const char* name) const
{
    return child<QLabel>(name).text();
}

void StationFixture::key(Qt::Key key, QWidget* target) const
{
    QTest::keyClick(target ? target : QApplication::focusWidget(), key);
}

void StationFixture::enterReading(int row, const QString& reading)
{
    platform::FlexGrid& flex = grid("flex");
    flex.setRow(row);
    flex.setFocus();
    key(Qt::Key_Return, &flex);
    QTest::keyClicks(&child<QLineEdit>("Text1"), reading);
    key(Qt::Key_Return, &child<QLineEdit>("Text1"));
}

QStringList StationFixture::rows(const char* name) const
{
    const platform::FlexGrid& flex = grid(name);
    QStringList result;
    for (int row = 1; row < flex.Rows(); ++row) {
        QStringList cells;
        for (int column = 0; column < flex.Cols(); ++column)
            cells << flex.TextMatrix(row, column);
        result << cells.join(u'|');
    }
    return result;
}
