#pragma once

#include "app/EntryMirror.h"
#include "platform/print/Printers.h"

#include <QMainWindow>
#include <QPointer>
#include <QTimer>

#include <array>
#include <functional>
#include <memory>
#include <optional>

class QLabel;
class QMenu;
class SupervisorGate;
struct Emitente;
struct LedgerListing;
struct Services;

namespace ado {
class Recordset;
}
namespace data {
class StationDatabase;
}
namespace HistoryRows {
struct Totals;
}
namespace platform {
class FlexGrid;
class FocusWatch;
} // namespace platform
namespace reports {
struct ReportServices;
}
namespace Ui {
class frmprincipal;
}

/// The main window: the day's pump reading sheet. Closing it ends the program.
class frmprincipal : public QMainWindow
{
    Q_OBJECT

public:
    frmprincipal(const Services& services, data::StationDatabase& database, const SupervisorGate& gate,
                 const Emitente& emitente, const platform::Printers& printers);
    ~frmprincipal() override;

    /// Fills the window before it is shown. Raises ado::Error and vb::Error where a step is unguarded: the start-up
    /// then ends.
    void carrega();

    /// Offers the lines that a program on the same settings and database has left behind, if there are any. Called once
    /// the window is up.
    void oferece_linhas();

    [[nodiscard]] bool isClosed() const { return m_closed; }

Q_SIGNALS:
    /// The window has closed and the program ends.
    void encerrado();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    /// The values of the edit panel, by the index of their label in the array `lb`.
    enum Lb { PreviousReading, Litres, PreviousDate, PumpDescription, PumpNumber, UnitPrice, PumpTank, LbCount };

    // Load, keys and menus.
    void connectControls();
    void connectMenus();
    [[nodiscard]] bool previewKey(const QKeyEvent& event);
    void handle(const std::function<void()>& operation);
    void carrega_planilha();
    void abre_bombas();
    void abre_produtos();
    void abre_controle();
    void abre_diversos();
    void abre_regua();
    void imprime_controle(const LedgerListing& listing);
    void popupFer(QPoint globalPosition);
    void removeBomba();
    [[nodiscard]] reports::ReportServices reportServices();

    // Selecting a pump and entering its reading.
    void flexClick();
    void flexKey(QKeyEvent& event);
    void seleciona_bomba();
    [[nodiscard]] QString lb(Lb value) const;
    void setLb(Lb value, const QString& text);
    void lb_Change();
    void pisca();
    [[nodiscard]] int text1Key(int code);
    void text1Change();
    void text1LostFocus();
    bool registra_leitura();
    void mostra_total();
    void flexGKey(QKeyEvent& event);
    void esvazia_flexG();
    void retoma(EntryMirror::Left left);

    // Closing the sheet.
    void fecha_com_senha();
    void fecha_l();
    [[nodiscard]] bool fecha_linhas(QDate day);
    [[nodiscard]] bool closesAgain(const QEvent& event) const;

    // History of closed readings.
    void carrega_flex1(const QString& sql);
    void carrega_flex1Expandido(ado::Recordset& readings);
    void carrega_flex1Consolidado();
    void esvazia_flex2();
    void exec_t();
    void lista_do_dia(QDate day);
    void mostra_totais(const HistoryRows::Totals& totals);
    void flex2Click();

    // Deleting readings and the log of what was deleted.
    void flex2Key(QKeyEvent& event);
    void exclui_leituras();
    void mostra_excluidos();
    void esconde_excluidos();

    // Miscellaneous items.
    void formata_flexD();
    void carrega_flexD();
    void mostra_item();
    void baixa_item();

    std::unique_ptr<Ui::frmprincipal> m_ui;
    const Services& m_services;
    data::StationDatabase& m_database;
    const SupervisorGate& m_gate;
    const Emitente& m_emitente;
    const platform::Printers m_printers;

    std::array<QLabel*, LbCount> m_lb{};
    platform::FocusWatch* m_text1Focus = nullptr;
    QMenu* const m_fer; ///< The pop-up menu of the pump grid; not in the menu bar.
    QTimer m_timer1{this};
    int m_linha = 0;         ///< The selected row of the pump grid.
    QString m_senhaExclusao; ///< "sim" once the password for deletions has been accepted in this run.
    QPointer<QWidget> m_regua;

    EntryMirror m_mirror;       ///< Follows the entry grid.
    bool m_sessionEnds = false; ///< The desktop ends the program, not the operator.

    bool m_loading = false;
    bool m_closed = false;
    bool m_fechando = false; ///< A sheet is being closed.
    bool m_closeAfterwards = false;
    // A fill that lets events run stops when a newer one of the same grid has begun.
    int m_historyFills = 0; ///< Fills of the history that have not returned yet.
};
