#pragma once

#include "shared/StationWindow.h"

#include <memory>

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

protected:
    void load() override;

private:
    void formata_flex();
    void escolhe_tanque();
    void carrega_tabela();
    void escolhe_linha();
    void confirma();

    /// Makes the row that the labels hold current again, in whatever place it now stands.
    void seleciona_id();
    /// Writes the current row into the labels.
    void mostra_linha();

    std::unique_ptr<Ui::frmEditTabTanque> m_ui;
};
