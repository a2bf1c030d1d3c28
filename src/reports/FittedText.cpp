#include "reports/FittedText.h"

#include "platform/print/PrinterObject.h"
#include "platform/ui/PlainText.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace reports {

namespace {

constexpr double SmallestFont = 6;
constexpr double SizesPerPoint = 20;
constexpr double NarrowestStretch = 0.35;
constexpr qsizetype LongestText = 1000; ///< Longer than any that fits a line of the paper.
constexpr double Tolerance = 0.5;       ///< Of a sum of letter widths.

bool fits(const platform::PrinterObject& printer, const QString& text, double width)
{
    return printer.TextWidth(text) <= width + Tolerance;
}

/// The longest beginning that fits together with an ellipsis.
QString shortened(const platform::PrinterObject& printer, const QString& text, double width)
{
    const QChar ellipsis(u'…');
    qsizetype fitting = 0;
    qsizetype tooLong = text.size();
    while (tooLong - fitting > 1) {
        const qsizetype length = (fitting + tooLong) / 2;
        (fits(printer, text.first(length) + ellipsis, width) ? fitting : tooLong) = length;
    }
    if (fitting > 0 && text.at(fitting - 1).isHighSurrogate())
        --fitting;
    return text.first(fitting) + ellipsis;
}

} // namespace

void printFitted(platform::PrinterObject& printer, const QString& text, double x, double width, Fit fit)
{
    const double size = printer.FontSize();
    const double y = printer.CurrentY();
    const double ascent = printer.TextAscent();
    QString shown = platform::limited(text, LongestText);
    if (!fits(printer, shown, width)) {
        const QString all = std::exchange(shown, shortened(printer, shown, width));
        const QStringView lost = QStringView(all).sliced(shown.size() - 1);
        if (fit == Fit::Whole || std::any_of(lost.begin(), lost.end(), [](QChar letter) { return letter.isDigit(); })) {
            const double fitting = std::floor(size * width / printer.TextWidth(all) * SizesPerPoint) / SizesPerPoint;
            printer.setFontSize(std::max(fitting, std::min(size, SmallestFont)));
            const double stretch = std::min(1.0, width / printer.TextWidth(all));
            if (stretch >= NarrowestStretch) {
                printer.setFontStretch(stretch);
                printer.setCurrentY(y + ascent - printer.TextAscent());
                shown = all;
            } else {
                printer.setFontSize(size);
            }
        }
    }
    printer.setCurrentX(x);
    printer.Print(shown, platform::PrinterObject::LineEnd::Open);
    printer.setFontSize(size);
    printer.setFontStretch(1);
    printer.setCurrentY(y);
}

} // namespace reports
