#include "StationFixture.h"

using namespace Qt::StringLiterals;

StationFixture::StationFixture(support::BothBackEnds& used)
    : WindowTest(used)
    , m_emitente{u"Auto Posto Três Ipês Ltda"_s, u"000"_s, u"111"_s, {}}
    , m_gate([this] {
        ++prompts;
        return knowsPassword ? SupervisorAnswer::Granted : SupervisorAnswer::Refused;
    })
    , m_station(folder.path())
{
    clock.set(QDateTime(QDate(2024, 3, 15), QTime(8, 30, 5)));
    insert(u"PlanilhaPosto"_s, u"numeroDispositivo, Descritivo, Leitura, DataInsert, ProdVinculado, tanq"_s,
           {u"7, 'Etanol pátio', '500', @2024-03-12@, 102, 'TANQUE_12'"_s,
            u"1, 'Gasolina A', '1000,5', @2024-03-14@, 101, 'TANQUE_1'"_s,
            u"2, 'Gasolina B', '12345,67', @2024-03-14@, 101, 'TANQUE_1'"_s});
    insert(u"CadProdComb"_s, u"Descritivo, codprod, valor, codigoEstoque"_s,
           {u"'Gasolina', 1, 5.499, 101"_s, u"'Etanol', 2, 3.5, 102"_s});
    insert(u"Estoque"_s, u"codigo, Discriminacao, quantidade, valorvenda"_s,
           {u"101, 'Gasolina comum', 10000.5, 5.5"_s, u"102, 'Etanol', 3000, 3.5"_s});
    insert(u"EstoqueDiversos"_s, u"codigo, discriminacao, quantidade"_s,
           {u"21, 'Óleo 1 L', '10,00'"_s, u"20, 'Aditivo', '5,00'"_s});
    support::writeSettings(folder.path(), database.isMySql(), database.database());
    m_station.open(messages);
    m_services.emplace(Services{m_station.DataConnection(), m_station.dialect(), messages, clock, pump});
}

void StationFixture::open()
{
    m_window.emplace(*m_services, m_station, m_gate, m_emitente, platform::Printers{chooser, defaultPrinter, spooler});
    m_window->carrega();
    support::open(*m_window);
    trace.clear();
}

QColor StationFixture::colour(const char* label) const
{
    return child<QLabel>(label).palette().color(QPalette::Window);
}
