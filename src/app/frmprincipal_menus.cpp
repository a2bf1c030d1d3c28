#include "app/frmprincipal.h"
#include "ui_frmprincipal.h"

#include "reports/CheckListReport.h"
#include "reports/SheetReport.h"
#include "shared/Services.h"

#include <QMenu>

// Menus and printing.

void frmprincipal::connectMenus()
{
    m_fer->setObjectName(QStringLiteral("fer"));
    m_fer->setAccessibleName(QStringLiteral("Opções da lista"));
    m_fer->addActions({m_ui->removFlex, m_ui->recarga, m_ui->leitF});
    connect(m_ui->bcad, &QAction::triggered, this, [this] { handle([this] { abre_bombas(); }); });
    connect(m_ui->CadProd, &QAction::triggered, this, [this] { handle([this] { abre_produtos(); }); });
    connect(m_ui->ControlEstoque, &QAction::triggered, this, [this] { handle([this] { abre_controle(); }); });
    connect(m_ui->cddiversos, &QAction::triggered, this, [this] { handle([this] { abre_diversos(); }); });
    connect(m_ui->leitF, &QAction::triggered, this, [this] { handle([this] { abre_regua(); }); });
    connect(m_ui->removFlex, &QAction::triggered, this, [this] { handle([this] { removeBomba(); }); });
    connect(m_ui->recarga, &QAction::triggered, this, [this] { handle([this] { carrega_planilha(); }); });
    connect(m_ui->Buttom_Mega3, &QPushButton::clicked, this, [this] {
        handle([this] {
            reports::imprime_planilha(*m_ui->flex2, m_ui->Label14->text(), m_ui->Label15->text(), reportServices());
        });
    });
    connect(m_ui->Buttom_Mega5, &QPushButton::clicked, this, [this] {
        handle([this] {
            reports::imprime_conferencia(*m_ui->flex, *m_ui->FlexD, m_ui->dtpI_0->Value(), m_ui->dtpI_1->Value(),
                                         reportServices());
        });
    });
}

reports::ReportServices frmprincipal::reportServices()
{
    return {m_emitente, m_services.clock, m_services.events, m_printers};
}

void frmprincipal::popupFer(QPoint globalPosition)
{
    m_fer->popup(globalPosition);
}

void frmprincipal::removeBomba()
{
    // From the grid only: the pump comes back with the next fill.
    const int row = m_ui->flex->Row();
    if (row >= 1)
        m_ui->flex->RemoveItem(row);
}
