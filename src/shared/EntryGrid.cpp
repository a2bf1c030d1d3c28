#include "shared/EntryGrid.h"

#include "platform/ui/FlexGrid.h"
#include "shared/Module1.h"

#include <QStringList>

namespace EntryGrid {

void add(platform::FlexGrid& flexG, const Line& line)
{
    const QStringList cells{line.date,  line.pump,  line.previous, line.current,    line.litres,
                            line.price, line.value, line.tank,     line.calibration};
    flexG.AddItem(cells);
}

Line lineAt(const platform::FlexGrid& flexG, int row)
{
    const auto cell = [&](Column column) { return flexG.TextMatrix(row, column); };
    return {cell(Date),  cell(Pump),  cell(Previous), cell(Current),    cell(Litres),
            cell(Price), cell(Value), cell(Tank),     cell(Calibration)};
}

vb::Currency total(const platform::FlexGrid& flexG)
{
    return Module1::soma_totais(flexG, Value);
}

} // namespace EntryGrid

void Module1::formata_flexG(platform::FlexGrid& flexG)
{
    constexpr int widths[EntryGrid::Columns] = {700, 400, 900, 900, 800, 600, 700, 700, 700};
    flexG.clearRows();
    flexG.setCols(EntryGrid::Columns);
    flexG.FormatString(QStringLiteral("Data|CDG_B|Leit_AnT|Leit_At|Sald_Lts|UNT$|Tot$|TNQ|AFER"));
    for (int column = 0; column < EntryGrid::Columns; ++column)
        flexG.setColWidth(column, widths[column]);
}
