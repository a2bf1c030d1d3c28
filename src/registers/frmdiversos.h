#pragma once

#include "shared/StationWindow.h"

#include <memory>

namespace Ui {
class frmdiversos;
}
namespace platform {
class FlexGrid;
}

/// The miscellaneous items of the stock that are issued with the sheet.
class frmdiversos : public StationWindow
{
    Q_OBJECT

public:
    explicit frmdiversos(const Services& services, QWidget* parent = nullptr);
    ~frmdiversos() override;

protected:
    void load() override;
    bool closeInnermost() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void connectBoxes();
    void connectGrids();
    void carrega_flex1();
    void carrega(platform::FlexGrid& grid, const QString& statement);
    void procura();
    void abre_quantia();
    void insere();
    void placeQuantity();
    void showQuantity(bool on);
    void mostra_item();
    void edita();
    void exclui_marcados();
    void insere_no_estoque();

    std::unique_ptr<Ui::frmdiversos> m_ui;
    QString m_chosenCode; ///< Of the item whose quantity is asked.
};
