#pragma once

#include <QWidget>

#include <memory>

class QLabel;

namespace Ui {
class frmp;
}

namespace platform {
class EventPump;
class FlexGrid;
class PrinterObject;
} // namespace platform

/// Print layout of the sheet, never shown: labels, a grid and the boxes that frame them, on one A4 page at 96 dpi.
/// One pixel of the layout prints as 15 twips.
class frmp : public QWidget
{
    Q_OBJECT

public:
    explicit frmp(platform::EventPump& events);
    ~frmp() override;

    /// 0 station name, 1 stamp, 2 date line, 3 address line, 4 tax line, 14 total value, 15 total litres.
    [[nodiscard]] QLabel& Label(int index) const;
    [[nodiscard]] platform::FlexGrid& flex() const;

    /// Empties the grid, eight columns as wide as the column boxes.
    void formata_grade();
    /// Prints the layout, on as many pages as the grid needs. Totals and signature stand on the last one.
    void imprime(platform::PrinterObject& printer) const;
    /// Prints the rows of the grid that belong on a page, counted from 0.
    void imprime_grade(platform::PrinterObject& printer, int page) const;

private:
    struct Pages
    {
        int current;
        int count;
    };
    [[nodiscard]] QRectF box(int index) const;
    [[nodiscard]] int rowsPerPage(platform::PrinterObject& printer) const;
    void imprime_pagina(platform::PrinterObject& printer, Pages pages) const;

    std::unique_ptr<Ui::frmp> m_ui;
    platform::EventPump& m_events;
};
