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

#include <QAbstractButton>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include <csignal>
#include <cstdio>
#include <map>

namespace endurance {

namespace {

using support::control;

const QDate Today(2024, 3, 15);

/// From here on the statements go to the pipe.
using Begin = std::function<void()>;

template <typename Window, typename... More>
std::unique_ptr<Window> opened(Counter& counter, const More&... more)
{
    auto window = std::make_unique<Window>(*counter.services, more..., &counter.window());
    window->show();
    window->activateWindow();
    settle();
    settle();
    return window;
}

void click(const QWidget& window, const char* button)
{
    control<QAbstractButton>(window, button).click();
}

void set(const QWidget& window, const char* box, const char* text)
{
    control<QLineEdit>(window, box).setText(QString::fromUtf8(text));
}

void closing(Counter& counter, const Begin& begin)
{
    counter.enterReading(1, QStringLiteral("1100,5"));
    counter.enterReading(2, QStringLiteral("12400"));
    begin();
    QTest::keyClick(&counter.window(), Qt::Key_F4);
}

void deletion(Counter& counter, const Begin& begin)
{
    counter.mark(1);
    counter.mark(2);
    begin();
    QTest::keyClick(&counter.grid("flex2"), Qt::Key_Delete);
}

void issue(Counter& counter, const Begin& begin)
{
    counter.grid("FlexD").setRow(1);
    auto& text2 = counter.child<QLineEdit>("Text2");
    text2.setFocus();
    text2.setText(QStringLiteral("2,5"));
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
    click(*window, "Buttom_Mega1");
}

void product(Counter& counter, const Begin& begin)
{
    const auto window = opened<frmCadProd>(counter);
    control<QLabel>(*window, "Label1").setText(QStringLiteral("Etanol"));
    set(*window, "Text1", "00102");
    set(*window, "Text2", "4,25");
    begin();
    click(*window, "Buttom_Mega1");
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
    click(*window, "Command2");
}

void ledger(Counter& counter, const Begin& begin)
{
    const auto window = opened<frmControlEstoqueParal>(counter, PrintListing());
    control<platform::ListBox>(*window, "List1").setCurrentRow(0);
    set(*window, "tx_0", "100");
    begin();
    click(*window, "BTM");
}

void gauging(Counter& counter, const Begin& begin)
{
    const auto window = opened<frmReguaL>(counter);
    auto& lines = control<QListWidget>(*window, "List1");
    lines.setFocus();
    lines.setCurrentRow(1);
    begin();
    click(*window, "Command1");
}

void gaugeTable(Counter& counter, const Begin& begin)
{
    const auto window = opened<frmEditTabTanque>(counter);
    auto& lines = control<platform::FlexGrid>(*window, "flex");
    lines.setRow(1);
    QTest::keyClick(&lines, Qt::Key_Return);
    set(*window, "Text2", "4321");
    begin();
    click(*window, "Command1");
}

const std::map<QString, void (*)(Counter&, const Begin&)>& scenarios()
{
    static const std::map<QString, void (*)(Counter&, const Begin&)> all{
        {QStringLiteral("closing"), closing},   {QStringLiteral("deletion"), deletion},
        {QStringLiteral("issue"), issue},       {QStringLiteral("pump"), pump},
        {QStringLiteral("product"), product},   {QStringLiteral("item"), item},
        {QStringLiteral("itemEdit"), itemEdit}, {QStringLiteral("ledger"), ledger},
        {QStringLiteral("gauging"), gauging},   {QStringLiteral("gaugeTable"), gaugeTable}};
    return all;
}

/// Types the password when its window comes up, and closes the main window when that does.
class Operator : public QObject
{
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::Show)
            return false;
        if (watched->objectName() == u"frmsenha") {
            const auto type = [watched] {
                auto& box = *watched->findChild<QLineEdit*>(QStringLiteral("Text1"));
                box.setText(QStringLiteral("1234"));
                QTest::keyClick(&box, Qt::Key_Return);
                if (watched->property("visible").toBool()) // Refused: there is nothing more to try.
                    QTest::keyClick(&box, Qt::Key_Escape);
            };
            QMetaObject::invokeMethod(watched, type, Qt::QueuedConnection);
        } else if (watched->objectName() == u"frmprincipal") {
            QMetaObject::invokeMethod(watched, "close", Qt::QueuedConnection);
        }
        return false;
    }
};

int startProgram(const QString& folder, Agreeing& messages)
{
    support::TestClock clock{QDateTime(Today, QTime(9, 0))};
    platform::ApplicationEvents events;
    support::TestChooser chooser;
    support::TestDefaultPrinter defaultPrinter;
    support::TestSpooler spooler;
    Operator person;
    qApp->installEventFilter(&person);
    const int result = ModConec::Main({folder, messages, clock, events, {chooser, defaultPrinter, spooler}});
    qApp->removeEventFilter(&person);
    return result;
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
