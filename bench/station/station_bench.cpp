// A ten-year station on both back ends: what the windows do, against the same statements alone, by turns in one run.
//   station_bench [access|mysql] [filter]
#include "station/Desk.h"
#include "station/Measure.h"

#include "data/Dialect.h"
#include "gauging/frmEditTabTanque.h"
#include "gauging/frmReguaL.h"
#include "platform/ado/Connection.h"
#include "platform/ado/Error.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/Application.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/ListBox.h"
#include "platform/vb/Conversion.h"
#include "registers/frmCadBomba.h"
#include "registers/frmCadProd.h"
#include "registers/frmdiversos.h"
#include "reports/LedgerReport.h"
#include "stock/LedgerListing.h"
#include "stock/frmControlEstoqueParal.h"
#include "support/MariaDbServer.h"
#include "support/StatementTrace.h"

#include <QAbstractButton>
#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

using namespace bench;

constexpr double ListBudget = 2.0; ///< The statements, and as much again.
constexpr double ClosingBudget = 1.2;
constexpr double StartBudget = 1.1;    ///< Ten years against ten days.
constexpr double KeystrokeBudget = 16; ///< Milliseconds.

/// A window whose loading can be asked for again.
template <typename Window>
class Reloadable : public Window
{
public:
    using Window::Window;
    void reload() { this->load(); }
};

class StationBench
{
public:
    StationBench(bool isMySql, QString filter)
        : m_station(isMySql, BenchStation::TenYears)
        , m_filter(std::move(filter))
    {}

    bool run();

    struct Group
    {
        const char* name;
        void (StationBench::*run)();
    };
    static const std::vector<Group>& groups();

private:
    [[nodiscard]] ado::Connection& connection() { return m_desk->services->DataConnection; }
    /// Statements of one run of the work.
    [[nodiscard]] static QStringList traceOf(const std::function<void()>& work)
    {
        const support::StatementTrace trace;
        work();
        return trace.lines();
    }
    /// Median milliseconds of the statements of a start, through a connection alone.
    [[nodiscard]] static double statementsOfAStart(const BenchStation& station)
    {
        const QStringList statements = traceOf([&station] { static_cast<void>(startUp(station)); });
        ado::Connection connection;
        connection.Open(station.connectionString());
        const auto bare = [&] {
            for (const QString& line : statements) {
                try {
                    replay({line}, connection);
                } catch (const ado::Error&) {
                    // The upgrades of a station that has them.
                }
            }
        };
        return compare(QString(), 15, bare).window.median;
    }
    /// A list through its window against the statements that it makes.
    Figure& list(const QString& name, int turns, const std::function<void()>& window, const std::function<int()>& rows)
    {
        const QStringList statements = traceOf(window);
        Figure figure = compare(name, turns, window, [&] { replay(statements, connection()); });
        figure.budget = ListBudget;
        figure.rows = rows();
        m_figures.push_back(figure);
        return m_figures.back();
    }

    void start();
    void pumpGrid();
    void typing();
    void closing();
    void history();
    void memoryOfAList();
    void ledger();
    void registers();
    void gauging();
    void papers();

    BenchStation m_station;
    QString m_filter;
    std::optional<Desk> m_desk;
    std::vector<Figure> m_figures;
    bool m_kept = true;
};

void StationBench::start()
{
    const BenchStation young(m_station.isMySql(), 10);
    Figure figure;
    figure.name = QStringLiteral("Start of the program to the painted main window, against the same on ten days");
    figure.budget = StartBudget;
    std::vector<double> old;
    std::vector<double> fresh;
    double peakWhenYoung = 0;
    for (int turn = -1; turn < 21; ++turn) {
        const Start here = startUp(m_station);
        const Start there = startUp(young);
        if (turn < 0)
            continue; // Into the caches.
        old.push_back(here.milliseconds);
        fresh.push_back(there.milliseconds);
        figure.peak = std::max(figure.peak, static_cast<double>(here.peakBytes) / 1e6);
        peakWhenYoung = std::max(peakWhenYoung, static_cast<double>(there.peakBytes) / 1e6);
    }
    figure.window = timesOf(old);
    figure.bare = timesOf(fresh);
    figure.isAgainstItself = true;
    figure.remark =
        QStringLiteral("its statements alone %1 against %2 ms; memory of the whole process, %3 MB on ten days")
            .arg(statementsOfAStart(m_station), 0, 'f', 1)
            .arg(statementsOfAStart(young), 0, 'f', 1)
            .arg(peakWhenYoung, 0, 'f', 1);
    m_figures.push_back(figure);
}

void StationBench::pumpGrid()
{
    auto& reload = m_desk->child<QAction>("recarga");
    list(
        QStringLiteral("Pump grid"), 15,
        [&] {
            reload.trigger();
            settle();
        },
        [this] { return m_desk->grid("flex").Rows() - 1; });
}

/// Every key of forty readings: from the key to the painted result.
void StationBench::typing()
{
    std::vector<double> keys;
    QStringList statements;
    auto& text1 = m_desk->child<QLineEdit>("Text1");
    platform::FlexGrid& flex = m_desk->grid("flex");
    const qint64 before = residentBytes();
    forgetPeak();
    for (int row = 1; row < flex.Rows(); ++row) {
        flex.setRow(row);
        press(flex, Qt::Key_Return, QStringLiteral("\r"));
        settle();
        const support::StatementTrace trace;
        const QString reading = QStringLiteral("1234567,89");
        for (const QChar character : reading) {
            keys.push_back(millisecondsOf([&] {
                press(text1, character.unicode(), character);
                settle();
            }));
        }
        if (text1.text() != reading || m_desk->child<QLabel>("lb_1").text().isEmpty())
            qFatal("the reading has not been typed");
        statements << trace.lines();
        flex.setFocus();
    }
    Figure figure;
    figure.name = QStringLiteral("Typing a reading: a key to its painted result");
    figure.window = timesOf(keys);
    figure.peak = static_cast<double>(peakBytes() - before) / 1e6;
    const double slowest = *std::max_element(keys.begin(), keys.end());
    figure.remark = QStringLiteral("slowest of %1 keys %2 ms (budget %3 ms); statements while typing: %4")
                        .arg(keys.size())
                        .arg(slowest, 0, 'f', 2)
                        .arg(KeystrokeBudget)
                        .arg(statements.size());
    m_kept = m_kept && slowest <= KeystrokeBudget && statements.isEmpty();
    m_figures.push_back(figure);
}

void StationBench::closing()
{
    m_desk->setPeriod(BenchStation::today(), BenchStation::today());
    m_desk->setSheetDate(BenchStation::today());
    platform::FlexGrid& flex = m_desk->grid("flex");
    const auto forget = [&] {
        connection().Execute(QStringLiteral("Delete from Leitura where DataLT = ") +
                             m_desk->services->dialect.dateLiteral(BenchStation::today()));
    };
    const auto enterAll = [&] {
        for (int row = 1; row < flex.Rows(); ++row) {
            flex.setRow(row);
            flex.setFocus();
            press(flex, Qt::Key_Return, QStringLiteral("\r"));
            auto& text1 = m_desk->child<QLineEdit>("Text1");
            text1.setText(m_desk->child<QLabel>("lb_0").text()); // Nothing sold: the next turn finds the same pumps.
            press(text1, Qt::Key_Return, QStringLiteral("\r"));
        }
        settle();
        if (m_desk->grid("flexG").Rows() != flex.Rows())
            qFatal("the sheet is not full");
    };
    const std::function<void()> close = [&] {
        press(m_desk->window(), Qt::Key_F4);
        settle();
    };
    enterAll();
    const QStringList statements = traceOf(close);
    forget();
    // The stock of a line is changed through its result set, which the trace does not tell.
    const std::function<void()> bare = [&] {
        for (const QString& line : statements) {
            if (!line.startsWith(u"open Select quantidade")) {
                replay({line}, connection());
                continue;
            }
            ado::Recordset stock;
            stock.Open(line.mid(5), connection());
            stock.SetField(u"quantidade", vb::CCur(stock.Fields(u"quantidade")) - vb::CCur(QStringLiteral("0,00")));
            stock.Update();
        }
    };
    std::vector<double> windowTimes;
    std::vector<double> bareTimes;
    double peak = 0;
    // By turns the one and the other comes first after the typing, with the same heap: what was freed is given back.
    for (int turn = 0; turn < 20; ++turn) {
        enterAll();
        for (const bool window : {turn % 2 == 0, turn % 2 != 0}) {
            const qint64 before = residentBytes();
            forgetPeak();
            (window ? windowTimes : bareTimes).push_back(millisecondsOf(window ? close : bare));
            if (window)
                peak = std::max(peak, static_cast<double>(peakBytes() - before) / 1e6);
            forget();
        }
    }
    Figure figure;
    figure.name = QStringLiteral("Closing a sheet");
    figure.rows = flex.Rows() - 1;
    figure.window = timesOf(windowTimes);
    figure.bare = timesOf(bareTimes);
    figure.budget = ClosingBudget;
    figure.peak = peak;
    m_figures.push_back(figure);
}

void StationBench::history()
{
    const QDate last = BenchStation::today().addDays(-1);
    auto& expanded = m_desk->child<QAbstractButton>("opt_0");
    auto& consolidated = m_desk->child<QAbstractButton>("opt_1");
    const auto measure = [&](const char* name, QDate first, QAbstractButton& option, int turns) {
        m_desk->setPeriod(first, last);
        list(
            QString::fromUtf8(name), turns,
            [&] {
                option.click();
                settle();
            },
            [this] { return m_desk->grid("flex2").Rows() - 1; });
    };
    measure("History of a day", last, expanded, 15);
    measure("History of a month", last.addDays(-30), expanded, 15);
    measure("History of ten years", m_station.firstDay(), expanded, 5);
    measure("Consolidated ten years", m_station.firstDay(), consolidated, 5);
    expanded.click();
    m_desk->setPeriod(last, last);
    expanded.click();
}

/// 100,000 rows: what each costs in memory, and how long the window is mute while they come.
void StationBench::memoryOfAList()
{
    constexpr int Days = 100'000 / BenchStation::Pumps;
    const QDate last = BenchStation::today().addDays(-1);
    auto& expanded = m_desk->child<QAbstractButton>("opt_0");
    platform::FlexGrid& flex2 = m_desk->grid("flex2");
    m_desk->setPeriod(last.addDays(1 - Days), last);
    Figure& figure = list(
        QStringLiteral("History of 100,000 readings"), 15,
        [&] {
            expanded.click();
            settle();
        },
        [&flex2] { return flex2.Rows() - 1; });

    const qint64 full = residentBytes();
    m_desk->setPeriod(last, last);
    expanded.click();
    settle();
    const qint64 empty = residentBytes();
    m_desk->setPeriod(last.addDays(1 - Days), last);
    const QStringList statements = traceOf([&] { expanded.click(); });
    m_desk->setPeriod(last, last);
    expanded.click();
    const double fetch = millisecondsOf([&] { replay({statements.first()}, connection()); });

    std::vector<double> pauses;
    QElapsedTimer sinceLast;
    QTimer beat;
    beat.setInterval(0);
    QObject::connect(&beat, &QTimer::timeout, [&] {
        pauses.push_back(static_cast<double>(sinceLast.nsecsElapsed()) / 1e6);
        sinceLast.restart();
    });
    m_desk->setPeriod(last.addDays(1 - Days), last);
    sinceLast.start();
    beat.start();
    expanded.click();
    beat.stop();
    std::sort(pauses.begin(), pauses.end());
    const double first = pauses.empty() ? 0 : pauses.back();
    const double next = pauses.size() < 2 ? 0 : pauses[pauses.size() - 2];
    figure.remark = QStringLiteral("%1 bytes a row kept; events run %2 times while it fills, pause at most %3 ms after "
                                   "the fetch (%4 ms; the fetch alone %5 ms)")
                        .arg(static_cast<double>(full - empty) / figure.rows, 0, 'f', 0)
                        .arg(pauses.size())
                        .arg(next, 0, 'f', 1)
                        .arg(first, 0, 'f', 0)
                        .arg(fetch, 0, 'f', 0);
    m_kept = m_kept && (full - empty) / figure.rows < 300;
    m_desk->setPeriod(last, last);
    expanded.click();
    settle();
}

void StationBench::ledger()
{
    const auto print = [&](const LedgerListing& listing) {
        reports::imprime_controle(listing.grid, listing.product, listing.first, listing.last, listing.totalCredit,
                                  listing.totalDebit, m_desk->reportServices());
    };
    frmControlEstoqueParal window(*m_desk->services, print, &m_desk->window());
    window.show();
    auto& products = *window.findChild<platform::ListBox*>(QStringLiteral("List1"));
    auto& flex = *window.findChild<platform::FlexGrid*>(QStringLiteral("flex"));
    const auto picker = [&](const char* name) -> platform::DatePicker& {
        return *window.findChild<platform::DatePicker*>(QString::fromLatin1(name));
    };
    settleUntil([&] { return products.count() == BenchStation::Products; });
    products.setCurrentRow(0);
    const auto choose = [&] {
        Q_EMIT products.Click();
        settle();
    };
    const auto byPeriod = [&](const char* name, QDate first, int turns) {
        picker("dtp_0").setValue(first);
        list(QString::fromUtf8(name), turns, choose, [&] { return flex.Rows() - 1; });
    };
    byPeriod("Ledger of a product, a month", BenchStation::today().addDays(-30), 15);
    byPeriod("Ledger of a product, ten years", m_station.firstDay(), 9);

    picker("dtp_0").setValue(BenchStation::today());
    auto& litres = *window.findChild<QLineEdit*>(QStringLiteral("tx_0"));
    auto& confirm = *window.findChild<QAbstractButton*>(QStringLiteral("BTM"));
    const auto add = [&] {
        litres.setText(QStringLiteral("100,00"));
        confirm.click();
        settle();
    };
    const QStringList statements = traceOf(add);
    const auto bare = [&] {
        ado::Recordset rows;
        rows.OpenToAdd(statements.first().mid(5), connection());
        rows.AddNew();
        rows.SetField(u"CodProd", 1.0);
        rows.SetField(u"DataOP", vb::Date::fromQDate(BenchStation::today()));
        rows.SetField(u"descritivo", QStringLiteral("Combustível 01"));
        rows.SetField(u"cred", 100.0);
        rows.SetField(u"deb", 0.0);
        rows.SetField(u"fornecedor", QStringLiteral("DISTRIBUIDORA SERRA AZUL LTDA"));
        rows.SetField(u"NumeroNota", QString());
        rows.Update();
        replay(statements.mid(1), connection());
    };
    Figure figure = compare(QStringLiteral("Ledger: a row added, the day listed"), 9, add, bare);
    figure.budget = ListBudget;
    m_figures.push_back(figure);

    picker("dtp_0").setValue(BenchStation::today().addDays(-365));
    choose();
    m_figures.push_back(compare(QStringLiteral("Printing the ledger of a year, as PDF"), 5,
                                [&] { window.findChild<QAbstractButton*>(QStringLiteral("btI"))->click(); }));
    m_figures.back().rows = flex.Rows() - 1;
}

void StationBench::registers()
{
    const Services& services = *m_desk->services;
    const auto measure = [&](const QString& name, auto& window, int turns, const std::function<int()>& rows,
                             int expected) {
        window.show();
        settleUntil([&] { return rows() == expected; });
        list(
            name, turns,
            [&] {
                window.reload();
                settle();
            },
            rows);
        window.close();
        settle();
    };
    const auto count = [](const QWidget& window, const char* name) {
        const auto* const found = window.findChild<QListWidget*>(QString::fromLatin1(name));
        return [found] { return found->count(); };
    };
    {
        Reloadable<frmCadBomba> window(services, &m_desk->window());
        measure(QStringLiteral("Pump register, its lists"), window, 15, count(window, "List1"), BenchStation::Pumps);
    }
    {
        Reloadable<frmCadProd> window(services, &m_desk->window());
        measure(QStringLiteral("Product register, stock and products"), window, 9, count(window, "List2"),
                BenchStation::StockItems);
    }
    {
        Reloadable<frmdiversos> window(services, &m_desk->window());
        const auto* const grid = window.findChild<platform::FlexGrid*>(QStringLiteral("flex"));
        measure(
            QStringLiteral("Miscellaneous items, stock and items"), window, 9, [grid] { return grid->Rows() - 1; },
            BenchStation::StockItems);
    }
    list(
        QStringLiteral("Miscellaneous items of the main window"), 9,
        [&] {
            m_desk->child<QAbstractButton>("Buttom_Mega2").click();
            settle();
        },
        [this] { return m_desk->grid("FlexD").Rows() - 1; });
}

void StationBench::gauging()
{
    const Services& services = *m_desk->services;
    {
        Reloadable<frmReguaL> window(services, &m_desk->window());
        window.show();
        const auto* const table = window.findChild<QListWidget*>(QStringLiteral("List1"));
        settleUntil([&] { return table->count() == BenchStation::GaugeLines; });
        list(
            QStringLiteral("Gauging: a tank's table and the day's readings"), 15,
            [&] {
                window.reload();
                settle();
            },
            [table] { return table->count(); });
        window.close();
    }
    Reloadable<frmEditTabTanque> window(services, &m_desk->window());
    window.show();
    const auto* const grid = window.findChild<platform::FlexGrid*>(QStringLiteral("flex"));
    settleUntil([&] { return grid->Rows() == BenchStation::GaugeLines + 1; });
    list(
        QStringLiteral("Gauge table editor"), 15,
        [&] {
            window.reload();
            settle();
        },
        [grid] { return grid->Rows() - 1; });
    window.close();
    settle();
}

void StationBench::papers()
{
    const QDate last = BenchStation::today().addDays(-1);
    auto& expanded = m_desk->child<QAbstractButton>("opt_0");
    const auto print = [&](const char* name, const char* button, int turns, int rows) {
        m_figures.push_back(
            compare(QString::fromUtf8(name), turns, [&] { m_desk->child<QAbstractButton>(button).click(); }));
        m_figures.back().rows = rows;
    };
    m_desk->setPeriod(last, last);
    expanded.click();
    print("Printing the sheet of a day, as PDF", "Buttom_Mega3", 9, m_desk->grid("flex2").Rows() - 1);
    m_desk->setPeriod(last.addDays(-30), last);
    expanded.click();
    print("Printing the sheet of a month, as PDF", "Buttom_Mega3", 5, m_desk->grid("flex2").Rows() - 1);
    print("Printing the check-list, as PDF", "Buttom_Mega5", 9, m_desk->grid("flex").Rows() - 1);
}

const std::vector<StationBench::Group>& StationBench::groups()
{
    static const std::vector<Group> all = {
        {"start", &StationBench::start},          {"pumps", &StationBench::pumpGrid},
        {"typing", &StationBench::typing},        {"closing", &StationBench::closing},
        {"memory", &StationBench::memoryOfAList}, {"history", &StationBench::history},
        {"ledger", &StationBench::ledger},        {"registers", &StationBench::registers},
        {"gauging", &StationBench::gauging},      {"papers", &StationBench::papers}};
    return all;
}

bool StationBench::run()
{
    for (const Group& group : groups()) {
        if (!m_filter.isEmpty() && m_filter != QLatin1StringView(group.name))
            continue;
        if (group.run != &StationBench::start && !m_desk) // A start is measured without another program beside it.
            m_desk.emplace(m_station);
        (this->*group.run)();
    }
    const bool kept = print(m_station.isMySql() ? QStringLiteral("MariaDB") : QStringLiteral("Access file"), m_figures);
    return kept && m_kept;
}

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("PLANILHA_NO_PLACEMENT", "1");
    qputenv("PLANILHA_SOURCE_DIR", BENCH_SOURCE_DIR); // Where the station's schema lies.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
        // What the offscreen platform says of every window, and every start without a session of its own.
        if (!text.contains(u"propagateSizeHints") && !text.contains(u"XDG_RUNTIME_DIR"))
            std::fprintf(stderr, "%s\n", qPrintable(text));
    });
    QApplication application(argc, argv);
    platform::prepareApplication(application);
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == QLatin1StringView(StartOption))
        return runStart(arguments.value(2));
    const QString only = arguments.value(1, QStringLiteral("all"));
    const QString group = arguments.value(2);
    QStringList groups;
    for (const StationBench::Group& each : StationBench::groups())
        groups << QString::fromLatin1(each.name);
    const QStringList backEnds{QStringLiteral("access"), QStringLiteral("mysql"), QStringLiteral("all")};
    if (!backEnds.contains(only) || (!group.isEmpty() && !groups.contains(group))) {
        std::fprintf(stderr, "usage: station_bench [%s [%s]]\n", qPrintable(backEnds.join(u'|')),
                     qPrintable(groups.join(u'|')));
        return 2;
    }
    support::MariaDbServer::likeAStations();
    bool kept = true;
    for (const bool isMySql : {false, true}) {
        const QString name = isMySql ? QStringLiteral("mysql") : QStringLiteral("access");
        if (only == name || only == u"all")
            kept = StationBench(isMySql, group).run() && kept;
    }
    std::printf("\nRatio is window / bare, both medians of this run; the milliseconds are this machine's.\n%s\n",
                kept ? "Every budget is kept." : "A budget is missed.");
    return kept ? 0 : 1;
}
