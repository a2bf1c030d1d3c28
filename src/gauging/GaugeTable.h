#pragma once

#include "platform/vb/Variant.h"

#include <QString>
#include <QStringList>

// What a tank's gauge table and its list lines mean. A list line is the centimetres, a blank and the litres,
// right-aligned in six characters; its first three characters are read back as the centimetres and the rest as the
// litres.
namespace GaugeTable {

/// The five tanks that are gauged; the pump register knows a sixth.
[[nodiscard]] QStringList tankNames();

/// Counts the changes that this program has made to a tank's table; a list that was read at another count is old.
[[nodiscard]] int& changesOf(const QString& tank);

/// Litres as they are shown: without thousands points, right-aligned in six characters; a longer text is kept whole.
[[nodiscard]] QString litresText(const vb::Variant& litres);
[[nodiscard]] QString lineText(const vb::Variant& centimetres, const vb::Variant& litres);

struct Reading
{
    double centimetres = 0;
    double litres = 0;
};

/// The reading that two texts stand for; an empty or non-numeric text counts as zero.
[[nodiscard]] Reading readingOfTexts(const QString& centimetres, const QString& litres);
/// The reading that a list line stands for. Depths of more than three characters spill over into the litres.
[[nodiscard]] Reading readingOfLine(const QString& line);

/// What the operator is told about a tank without a gauge table.
[[nodiscard]] QString noTableText();

} // namespace GaugeTable
