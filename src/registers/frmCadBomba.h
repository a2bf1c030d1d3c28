#pragma once

#include "shared/StationWindow.h"

#include <memory>

namespace Ui {
class frmCadBomba;
}
namespace vb {
class Variant;
}

/// Register of the pumps.
class frmCadBomba : public StationWindow
{
    Q_OBJECT

public:
    explicit frmCadBomba(const Services& services, QWidget* parent = nullptr);
    ~frmCadBomba() override;

Q_SIGNALS:
    /// The pump grid of the sheet is to be read again: a pump was deleted, or the window has closed.
    void pumpsChanged();

protected:
    void load() override;

private:
    void connectControls();
    void carrega_combo();
    /// False when the list was filled anew meanwhile or the window has closed.
    bool carrega_list1();
    void copia_descritivo();
    void mostra_bomba();
    void colocaCodProd(const vb::Variant& product);
    void grava();
    [[nodiscard]] bool substitui_existente();
    void exclui();
    void exclui_lista();
    void edita_datas();

    /// The pump number of the box, for statements.
    [[nodiscard]] QString pumpNumber() const;
    /// The date of the picker as statements store it.
    [[nodiscard]] QString readingDate() const;

    std::unique_ptr<Ui::frmCadBomba> m_ui;
};
