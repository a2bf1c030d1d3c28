#include "station/Measure.h"

#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"

#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <cstdio>

#include <malloc.h>

namespace bench {

namespace {

/// What is on the screen within a frame is on time, whatever its statements alone would take.
constexpr double Frame = 16;

qint64 statusBytes(const QByteArray& key)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(key))
            return line.mid(key.size()).simplified().split(' ').first().toLongLong() * 1024;
    }
    return 0;
}

} // namespace

double millisecondsOf(const std::function<void()>& work)
{
    QElapsedTimer clock;
    clock.start();
    work();
    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

Times timesOf(std::vector<double> milliseconds)
{
    std::sort(milliseconds.begin(), milliseconds.end());
    return milliseconds.empty() ? Times() : Times{milliseconds[milliseconds.size() / 2], milliseconds.front()};
}

qint64 residentBytes()
{
    malloc_trim(0);
    return statusBytes("VmRSS:");
}

qint64 peakBytes()
{
    return statusBytes("VmHWM:");
}

void forgetPeak()
{
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (file.open(QIODevice::WriteOnly))
        file.write("5");
}

void replay(const QStringList& trace, ado::Connection& connection)
{
    for (const QString& line : trace) {
        const QString statement = line.mid(5);
        if (line.startsWith(u"exec ")) {
            connection.Execute(statement);
        } else {
            ado::Recordset rows;
            rows.Open(statement, connection);
        }
    }
}

Figure compare(const QString& name, int turns, const std::function<void()>& window, const std::function<void()>& bare)
{
    Figure figure;
    figure.name = name;
    window();
    if (bare)
        bare();
    std::vector<double> windowTimes;
    std::vector<double> bareTimes;
    double peak = 0;
    for (int turn = 0; turn < turns; ++turn) {
        const qint64 before = residentBytes();
        forgetPeak();
        windowTimes.push_back(millisecondsOf(window));
        peak = std::max(peak, static_cast<double>(peakBytes() - before) / 1e6);
        if (!bare)
            continue;
        (void)residentBytes(); // Both find the same heap: what was freed has been given back.
        bareTimes.push_back(millisecondsOf(bare));
    }
    figure.window = timesOf(windowTimes);
    figure.bare = timesOf(bareTimes);
    figure.peak = peak;
    return figure;
}

bool print(const QString& title, const std::vector<Figure>& figures)
{
    bool kept = true;
    std::printf("\n### %s\n\n", qPrintable(title));
    std::printf("| What | Rows | Window ms | Bare ms | Ratio | of the best turns | Budget | Peak MB | |\n");
    std::printf("|---|---:|---:|---:|---:|---:|---:|---:|---|\n");
    for (const Figure& figure : figures) {
        const bool hasBare = figure.bare.median > 0;
        const double ratio = hasBare ? figure.window.median / figure.bare.median : 0;
        const double best = hasBare ? figure.window.best / figure.bare.best : 0;
        const bool over = figure.budget > 0 && std::min(ratio, best) > figure.budget;
        const double late = figure.window.best - (figure.isAgainstItself ? figure.bare.best : 0);
        const bool missed = over && late > Frame;
        kept = kept && !missed;
        const auto number = [](double value, int decimals) { return QString::number(value, 'f', decimals); };
        const auto time = [&](double value) { return value < 0 ? QString() : number(value, value < 10 ? 2 : 0); };
        QString budget;
        if (figure.budget > 0)
            budget = number(figure.budget, 1);
        if (over)
            budget += missed ? QStringLiteral(" missed") : QStringLiteral(" or a frame");
        const QStringList cells{figure.name,
                                figure.rows > 0 ? QString::number(figure.rows) : QString(),
                                time(figure.window.median),
                                time(figure.bare.median),
                                hasBare ? number(ratio, 2) : QString(),
                                hasBare ? number(best, 2) : QString(),
                                budget,
                                number(figure.peak, 1),
                                figure.remark};
        std::printf("| %s |\n", qPrintable(cells.join(QStringLiteral(" | "))));
    }
    std::fflush(stdout);
    return kept;
}

} // namespace bench
