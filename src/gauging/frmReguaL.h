#pragma once

#include "shared/StationWindow.h"

#include <memory>

namespace Ui {
class frmReguaL;
}

/// Dip readings of the tanks, one per tank and date: a line of the tank's gauge table, or two figures typed by hand.
/// The list is enabled while its line counts; disabled, the typed figures do.
class frmReguaL : public StationWindow
{
    Q_OBJECT

public:
    explicit frmReguaL(const Services& services, QWidget* parent = nullptr);
    ~frmReguaL() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    bool event(QEvent* event) override;
    void load() override;

private:
    void escolhe_tanque();
    void carrega_tabela(const QString& statement);
    void carrega_historico();
    void atualiza_tabela();
    void confirma();
    void abre_editor();

    [[nodiscard]] QString dateLiteral() const;
    /// Asks before the reading of the same tank and date is deleted; true when there is none any more.
    [[nodiscard]] bool substitui(const QString& tank);

    std::unique_ptr<Ui::frmReguaL> m_ui;
    bool m_comesFromElsewhere = true;
    int m_changesSeen = 0; ///< Of the shown table, when it was read.
};
