#include "Scenarios.h"

#include "Counter.h"
#include "SystemFaults.h"

#include "app/ModConec.h"
#include "gauging/frmEditTabTanque.h"
#include "gauging/frmReguaL.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/ListBox.h"
#include "registers/frmCadBomba.h"
#include "registers/frmCadProd.h"
#include "registers/frmdiversos.h"
#include "stock/frmControlEstoqueParal.h"
#include "support/Operator.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>

#include <csignal>
#include <cstdio>
#include <map>

using namespace Qt::StringLiterals;
using namespace support;

namespace endurance {

namespace {

const QDate Today(2024, 3, 15);

/// From here on the statements go to the pipe.
using Begin = std::function<void()>;

void set(const QWidget& window, const char* box, const char* text)
{
    control<QLineEdit>(window, box).setText(QString::fromUtf8(text));
}

void closing(Counter& counter, const Begin& begin)
{
    counter.enterReading(1, u"1100,5"_s);
    counter.enterReading(2, u"12400"_s);
    begin();
    QTest::keyClick(&counter.window(), Qt::Key_F4);
}

void deletion(Counter& counter, const Begin& begin)
{
    for (const int row : {1, 2})
        clickRow(counter.grid("flex2"), row);
    begin();
    QTest::keyClick(&counter.grid("flex2"), Qt::Key_Delete);
}

void issue(Counter& counter, const Begin& begin)
{
    counter.grid("FlexD").setRow(1);
    auto& text2 = counter.child<QLineEdit>("Text2");
    text2.setFocus();
    text2.setText(u"2,5"_s);
    begin();
    QTest::keyClick(&text2, Qt::Key_Return);
}

void pump(Counter& counter, const Begin& begin)
{
    const auto window = opened<frmCadBomba>(counter);
    set(*window, "tx_2", "2");
    set(*window, "tx_0", "GASOLINA NOVA");
    set(*window, "tx_1", "777,7");
    control<QComboBox>(*window, "Combo2").setCurrentIndex(2);
    begin();
    control<QAbstractButton>(*window, "Buttom_Mega1").click();
}

void product(Counter& counter, const Begin& begin)
{
    const auto window = opened<frmCadProd>(counter);
    control<QLabel>(*window, "Label1").setText(u"Etanol"_s);
    set(*window, "Text1", "00102");
    set(*window, "Text2", "4,25");
    begin();
    control<QAbstractButton>(*window, "Buttom_Mega1").click();
}

void item(Counter& counter, const Begin& begin)
{
    const auto window = opened<frmdiversos>(counter);
    auto& stock = control<platform::FlexGrid>(*window, "flex");
    stock.setRow(1);
    QTest::keyClick(&stock, Qt::Key_Return);
    set(*window, "Text2", "7");
    begin();
    QTest::keyClick(&control<QLineEdit>(*window, "Text2"), Qt::Key_Return);
}

void itemEdit(Counter& counter, const Begin& begin)
{
    const auto window = opened<frmdiversos>(counter);
    auto& items = control<platform::FlexGrid>(*window, "Flex1");
    items.setRow(1);
    QTest::keyClick(&items, Qt::Key_Space);
    set(*window, "Text4", "33,00");
    begin();
    control<QAbstractButton>(*window, "Command2").click();
}

void ledger(Counter& counter, const Begin& begin)
{
    const auto window = opened<frmControlEstoqueParal>(counter, PrintListing());
    control<platform::ListBox>(*window, "List1").setCurrentRow(0);
    set(*window, "tx_0", "100");
    begin();
    control<QAbstractButton>(*window, "BTM").click();
}

void gauging(Counter& counter, const Begin& begin)
{
    const auto window = opened<frmReguaL>(counter);
    auto& lines = control<QListWidget>(*window, "List1");
    lines.setFocus();
    lines.setCurrentRow(1);
    begin();
    control<QAbstractButton>(*window, "Command1").click();
}

void gaugeTable(Counter& counter, const Begin& begin)
{
    const auto window = opened<frmEditTabTanque>(counter);
    auto& lines = control<platform::FlexGrid>(*window, "flex");
    lines.setRow(1);
    QTest::keyClick(&lines, Qt::Key_Return);
    set(*window, "Text2", "4321");
    begin();
    control<QAbstractButton>(*window, "Command1").click();
}

const std::map<QString, void (*)(Counter&, const Begin&)>& scenarios()
{
    static const std::map<QString, void (*)(Counter&, const Begin&)> all{
        {u"closing"_s, closing},   {u"deletion"_s, deletion},
        {u"issue"_s, issue},       {u"pump"_s, pump},
        {u"product"_s, product},   {u"item"_s, item},
        {u"itemEdit"_s, itemEdit}, {u"ledger"_s, ledger},
        {u"gauging"_s, gauging},   {u"gaugeTable"_s, gaugeTable}};
    return all;
}

int startProgram(const QString& folder, Agreeing& messages)
{
    TestClock clock{QDateTime(Today, QTime(9, 0))};
    platform::ApplicationEvents events;
    TestChooser chooser;
    TestDefaultPrinter defaultPrinter;
    TestSpooler spooler;
    Operator person;
    person.when("frmsenha", [](QWidget& prompt) {
        auto& box = control<QLineEdit>(prompt, "Text1");
        box.setText(u"1234"_s);
        QTest::keyClick(&box, Qt::Key_Return);
        if (prompt.isVisible()) // Refused: there is nothing more to try.
            QTest::keyClick(&box, Qt::Key_Escape);
    });
    person.when("frmprincipal", [](QWidget& window) { window.close(); });
    return ModConec::Main({folder, messages, clock, events, {chooser, defaultPrinter, spooler}});
}

void tell(const Agreeing& messages)
{
    for (const QString& text : messages.said)
        std::printf("box: %s\n", qPrintable(QString(text).replace(u'\n', u' ').remove(u'\r')));
    std::fflush(stdout);
}

} // namespace

QStringList scenarioNames()
{
    QStringList names;
    for (const auto& [name, run] : scenarios())
        names << name;
    return names;
}

bool isChild(const QStringList& arguments)
{
    return arguments.value(1) == u"--child";
}

int runChild(const QStringList& arguments)
{
    // A full disk or a reader that is gone is an error of the write, not the end of the process.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    const QString scenario = arguments.value(2);
    const QString folder = arguments.value(3);
    const QByteArray fifo = QFile::encodeName(arguments.value(4));
    const QString fault = arguments.value(5);
    if (scenario == u"start") {
        Agreeing messages;
        armSystemFault(fault);
        const int result = startProgram(folder, messages);
        tell(messages);
        return systemFaultStruck() ? Struck : result;
    }
    {
        Counter counter(folder, Today);
        scenarios().at(scenario)(counter, [&] {
            qputenv("PLANILHA_SQL_TRACE", fifo);
            armSystemFault(fault);
        });
        qunsetenv("PLANILHA_SQL_TRACE");
        settle();
        tell(counter.messages);
    }
    return systemFaultStruck() ? Struck : 0; // The file is closed by now.
}

} // namespace endurance
