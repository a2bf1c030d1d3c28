#include "Counter.h"

using namespace Qt::StringLiterals;

namespace endurance {

platform::MsgBoxResult Agreeing::MsgBox(const QString& prompt, int style, const QString& /*title*/)
{
    said << prompt;
    return (style & 15) == platform::vbYesNo ? platform::MsgBoxResult::Yes : platform::MsgBoxResult::Ok;
}

Counter::Counter(const QString& folder, QDate today)
    : clock(QDateTime(today, QTime(8, 30, 5)))
    , m_gate([] { return SupervisorAnswer::Granted; })
    , m_emitente{u"Auto Posto Três Ipês Ltda"_s, u"000"_s, u"111"_s, u"Avenida das Acácias, 1500"_s}
{
    database.emplace(folder);
    database->open(messages);
    services.emplace(Services{database->DataConnection(), database->dialect(), messages, clock, events});
    m_window.emplace(*services, *database, m_gate, m_emitente, platform::Printers{chooser, defaultPrinter, spooler});
    m_window->carrega();
    m_window->show();
    m_window->activateWindow();
    settle();
}

void settle()
{
    QCoreApplication::processEvents();
}

} // namespace endurance
