#pragma once

#include "shared/StationWindow.h"

#include <memory>

namespace Ui {
class frmCadProd;
}

/// Register of the fuel products and their prices.
class frmCadProd : public StationWindow
{
    Q_OBJECT

public:
    explicit frmCadProd(const Services& services, QWidget* parent = nullptr);
    ~frmCadProd() override;

Q_SIGNALS:
    /// The pump grid of the sheet is to be read again: prices or products may have changed. When the window closes.
    void pumpsChanged();

protected:
    void load() override;
    bool closeInnermost() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void connectControls();
    void connectLists();
    void carrega_list1();
    void carrega_list2();
    void placeChooser();
    void showChooser(bool on);
    void escolhe_estoque();
    void mostra_produto();
    void grava();
    [[nodiscard]] bool inputIsComplete();
    void exclui();
    void exclui_lista();

    std::unique_ptr<Ui::frmCadProd> m_ui;
};
