#pragma once

#include "platform/vb/Currency.h"

#include <QChar>
#include <QDateTime>
#include <QString>

class QLineEdit;
class QWidget;

namespace platform {
class EventPump;
class FlexGrid;
} // namespace platform

// Procedures of windows and grids that several windows use.
namespace Module1 {

/// Key filter of numeric boxes: returns the key to let through, 0 to drop it. A point becomes a comma; commas pass
/// unchecked, a second one too; a minus goes in front of the whole text, once.
[[nodiscard]] char16_t filtra_numero(QLineEdit& box, char16_t key);

/// Selects the whole text of a box.
void seleciona_tudo(QLineEdit& box);

/// Sum of a column over the data rows of a grid, each cell read as a number; an empty cell counts as 0.
[[nodiscard]] vb::Currency soma_totais(const platform::FlexGrid& grid, int column);

/// Background of a marked row: yellow, in blue-green-red order.
constexpr quint32 MarkColour = 65535;

/// Toggles the mark of the current row: with no colour in the current cell the whole row turns yellow, otherwise every
/// cell of the row loses its colour, whatever it was.
void marca_linha(platform::FlexGrid& grid);

/// Colours one cell of the grid's last row.
void pinta_celula(platform::FlexGrid& grid, int column, quint32 bgr);

/// Moves a window 150 twips right and down per step until it has left the screen, then closes it. Where the desktop
/// does not let windows move themselves it is closed at once.
void fecha_deslizando(QWidget& window, platform::EventPump& events);

[[nodiscard]] QString linha_traco();     ///< 112 "-".
[[nodiscard]] QString linha_asterisco(); ///< 112 "*".

/// "Nº ddmmyy-hhmmnn" of a moment: hour, minute and the minute again.
[[nodiscard]] QString numero_planilha(const QDateTime& moment);

} // namespace Module1

namespace shared {

/// Has a box select its whole text whenever the operator comes to it, by key or by mouse; not on coming back to its
/// window, which would let the next key replace what is being typed.
void seleciona_ao_focar(QLineEdit& box);

} // namespace shared
