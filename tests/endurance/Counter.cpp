#include "Counter.h"

#include "platform/ui/DatePicker.h"
#include "platform/ui/FlexGrid.h"

#include <QLineEdit>
#include <QTest>

namespace endurance {

platform::MsgBoxResult Agreeing::MsgBox(const QString& prompt, int style, const QString& /*title*/)
{
    said << prompt;
    return (style & 15) == platform::vbYesNo ? platform::MsgBoxResult::Yes : platform::MsgBoxResult::Ok;
}

Counter::Counter(const QString& folder, QDate today)
    : clock(QDateTime(today, QTime(8, 30, 5)))
    , m_gate([this] { m_gate.denied = false; })
    , m_emitente{QStringLiteral("Auto Posto Três Ipês Ltda"), QStringLiteral("000"), QStringLiteral("111"),
                 QStringLiteral("Avenida das Acácias, 1500")}
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

platform::FlexGrid& Counter::grid(const char* name) const
{
    return child<platform::FlexGrid>(name);
}

void Counter::enterReading(int row, const QString& reading) const
{
    platform::FlexGrid& flex = grid("flex");
    flex.setRow(row);
    flex.setFocus();
    QTest::keyClick(&flex, Qt::Key_Return);
    auto& text1 = child<QLineEdit>("Text1");
    QTest::keyClicks(&text1, reading);
    QTest::keyClick(&text1, Qt::Key_Return);
}

void Counter::mark(int row) const
{
    platform::FlexGrid& flex2 = grid("flex2");
    const QModelIndex cell = flex2.model()->index(row - 1, 1);
    flex2.scrollTo(cell);
    QTest::mouseClick(flex2.viewport(), Qt::LeftButton, {}, flex2.visualRect(cell).center());
}

void settle()
{
    QCoreApplication::processEvents();
}

} // namespace endurance
