#include "app/frmprincipal.h"

#include "gauging/frmReguaL.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/Seams.h"
#include "registers/frmCadBomba.h"
#include "registers/frmCadProd.h"
#include "registers/frmdiversos.h"
#include "reports/LedgerReport.h"
#include "reports/ReportPrinting.h"
#include "shared/Services.h"
#include "shared/SupervisorGate.h"
#include "stock/LedgerListing.h"
#include "stock/frmControlEstoqueParal.h"

// The windows that the main one opens.

void frmprincipal::abre_bombas()
{
    if (m_gate.RequireSupervisor())
        return;
    ado::Recordset products;
    products.Open(QStringLiteral("Select * from CadProdComb"), m_services.DataConnection);
    if (products.RecordCount() == 0) {
        m_services.messages.MsgBox(QStringLiteral("É necessário cadastrar os produtos primeiro"));
        return;
    }
    products.Close();
    frmCadBomba window(m_services, this);
    connect(&window, &frmCadBomba::pumpsChanged, this, [this] { handle([this] { carrega_planilha(); }); });
    window.exec();
}

void frmprincipal::abre_produtos()
{
    if (m_gate.RequireSupervisor())
        return;
    frmCadProd window(m_services, this);
    connect(&window, &frmCadProd::pumpsChanged, this, [this] { handle([this] { carrega_planilha(); }); });
    window.exec();
}

void frmprincipal::abre_controle()
{
    if (m_gate.RequireSupervisor())
        return;
    frmControlEstoqueParal window(
        m_services, [this](const LedgerListing& listing) { imprime_controle(listing); }, this);
    window.exec();
}

void frmprincipal::imprime_controle(const LedgerListing& listing)
{
    reports::imprime_controle(listing.grid, listing.product, listing.first, listing.last, listing.totalCredit,
                              listing.totalDebit, reportServices());
}

void frmprincipal::abre_diversos()
{
    if (m_gate.RequireSupervisor())
        return;
    frmdiversos window(m_services, this);
    window.exec();
}

void frmprincipal::abre_regua()
{
    if (!m_regua) {
        auto* const window = new frmReguaL(m_services, this);
        window->deleteWhenClosed();
        m_regua = window;
    }
    m_regua->show();
    m_regua->raise();
    m_regua->activateWindow();
}
