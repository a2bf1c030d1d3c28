#pragma once

#include "shared/StationWindow.h"
#include "stock/LedgerListing.h"

#include <memory>

namespace Ui {
class frmControlEstoqueParal;
}

/// Ledger of the fuel products: credits and debits by hand, and their listing.
class frmControlEstoqueParal : public StationWindow
{
    Q_OBJECT

public:
    frmControlEstoqueParal(const Services& services, PrintListing print, QWidget* parent = nullptr);
    ~frmControlEstoqueParal() override;

protected:
    void load() override;

private:
    void connectControls();
    void carrega_lst();
    void format_flex();
    void esvazia();
    void confirma();
    void grava_estoque(double litres);
    void carrega_flex();
    void imprime();

    std::unique_ptr<Ui::frmControlEstoqueParal> m_ui;
    PrintListing m_print;
    bool m_suppliersLoaded = false;
    // What the grid lists; the controls may have been changed since.
    QString m_product;
    QDate m_first;
    QDate m_last;
};
