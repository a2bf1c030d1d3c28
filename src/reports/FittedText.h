#pragma once

#include <QString>

namespace platform {
class PrinterObject;
}

// Texts that are longer than their place on a paper. Widths and positions are twips.
namespace reports {

/// How much of a text that is too long for its place is printed.
enum class Fit {
    Digits, ///< All of it when a digit would be lost; otherwise as much as fits, with an ellipsis.
    Whole,  ///< All of it.
};

/// Prints a text from `x` on, at most `width` wide, with the line left open. A text that fits is printed as it is. What
/// must be whole is set smaller, down to six points, and then narrower; where even that could not be read (some forty
/// digits in the place of ten) it ends in an ellipsis. The font and the height of the line are as before afterwards.
void printFitted(platform::PrinterObject& printer, const QString& text, double x, double width, Fit fit = Fit::Digits);

} // namespace reports
