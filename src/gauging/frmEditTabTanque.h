#pragma once

#include "shared/StationWindow.h"

#include <memory>

namespace ado {
class Recordset;
}
namespace Ui {
class frmEditTabTanque;
}

/// Corrects single rows of a tank's gauge table: the depth and the litres. Rows are neither added nor deleted.
class frmEditTabTanque : public StationWindow
{
    Q_OBJECT

public:
    explicit frmEditTabTanque(const Services& services, QWidget* parent = nullptr);
    ~frmEditTabTanque() override;

private:
    void formata_flex();
    void escolhe_tanque();
    void carrega_tabela();
    void escolhe_linha();
    void confirma();

    /// Adds the table's rows to the grid. False when a newer fill or the closing of the window has stopped it.
    [[nodiscard]] bool preenche(ado::Recordset& table);
    /// Makes the row that the labels hold current again, in whatever place it now stands.
    void seleciona_id();
    /// Writes the current row into the labels.
    void mostra_linha();

    std::unique_ptr<Ui::frmEditTabTanque> m_ui;
    int m_fill = 0; ///< Number of the latest fill of the grid; an older one stops.
    bool m_tankChanged = false;
};
