// Filling a grid with 100,000 rows of the history: time with redrawing off and on, and memory per row.
#include "platform/ui/Application.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/RealSeams.h"

#include <QApplication>
#include <QFile>

#include <benchmark/benchmark.h>

namespace {

constexpr int rows = 100'000;
constexpr quint32 paleYellow = 12648447;
constexpr quint32 strongerYellow = 8454143;

void layOut(platform::FlexGrid& grid)
{
    grid.setCols(9);
    grid.FormatString(
        QStringLiteral("NºDispos|Descritivo|LeituraAnterior|LeituraAtual|DatLeitura|LTs Result|R$ UNT|R$ TOT"));
    int column = 0;
    for (const int twips : {400, 1800, 1100, 1100, 950, 900, 800, 900, 0})
        grid.setColWidth(column++, twips);
}

void fill(platform::FlexGrid& grid, bool colours, platform::EventPump& events)
{
    for (int row = 1; row <= rows; ++row) {
        grid.AddItem(
            QStringLiteral("%1\tGASOLINA COMUM\t1.234.567,89\t1.235.067,89\t22/11/26\t500,00\t5,899\t2.949,50\t%2")
                .arg(row % 24)
                .arg(row));
        if (colours) {
            grid.setCellBackColor(grid.Rows() - 1, 5, paleYellow);
            grid.setCellBackColor(grid.Rows() - 1, 7, strongerYellow);
        }
        events.DoEvents();
    }
}

qint64 residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() * 4096 : 0;
}

void fillGrid(benchmark::State& state)
{
    const bool redraw = state.range(0) != 0;
    const bool colours = state.range(1) != 0;
    platform::FlexGrid grid;
    grid.resize(900, 400);
    grid.show();
    platform::ApplicationEvents events;
    QCoreApplication::processEvents();
    for (auto _ : state) {
        grid.setRedraw(redraw);
        grid.clearRows();
        layOut(grid);
        fill(grid, colours, events);
        grid.setRedraw(true);
        QCoreApplication::processEvents();
    }
}
void memoryPerRow(benchmark::State& state)
{
    for (auto _ : state) {
        const qint64 before = residentBytes();
        platform::FlexGrid grid;
        grid.resize(900, 400);
        grid.show();
        platform::ApplicationEvents events;
        grid.setRedraw(false);
        layOut(grid);
        fill(grid, true, events);
        grid.setRedraw(true);
        QCoreApplication::processEvents();
        state.counters["bytes_per_row"] = static_cast<double>(residentBytes() - before) / rows;
    }
}
// Memory first, while nothing freed is there to be used again.
BENCHMARK(memoryPerRow)->Iterations(1);
BENCHMARK(fillGrid)
    ->ArgNames({"redraw", "colours"})
    ->Args({0, 0})
    ->Args({0, 1})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    platform::prepareApplication(application);
    benchmark::Initialize(&argc, argv);
    return benchmark::RunSpecifiedBenchmarks() > 0 ? 0 : 1; // Of a name that there is not, the library has said so.
}
