#include "registers/frmsenha.h"
#include "ui_frmsenha.h"

#include "platform/ado/Recordset.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/Seams.h"
#include "shared/Emitente.h"
#include "shared/Module1.h"
#include "shared/Services.h"
#include "shared/SupervisorGate.h"

frmsenha::frmsenha(const Services& services, SupervisorGate& gate, const Emitente& emitente, OnError onError,
                   QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::frmsenha>())
    , m_services(services)
    , m_gate(gate)
    , m_onError(onError)
{
    m_ui->setupUi(this);
    m_gate.denied = true;
    m_ui->Label2->setText(emitente.RazaoSocial);
    m_ui->Label2->setVisible(!emitente.RazaoSocial.isEmpty());
    Module1::seleciona_ao_focar(*m_ui->Text1);
    connect(m_ui->Text1, &QLineEdit::returnPressed, this, &frmsenha::verifica);
    m_ui->Text1->setFocus();
}

frmsenha::~frmsenha() = default;

void frmsenha::rethrowError() const
{
    if (m_error)
        std::rethrow_exception(m_error);
}

void frmsenha::reject()
{
    m_gate.denied = true;
    QDialog::reject();
}

void frmsenha::verifica()
{
    if (m_onError == OnError::TellAndStay) {
        platform::tellAndStay(m_services.messages, [this] { procura(); });
        return;
    }
    try {
        procura();
    } catch (...) {
        m_error = std::current_exception();
        reject();
    }
}

void frmsenha::procura()
{
    ado::Recordset adm;
    // The typed text goes into the statement as it is: an apostrophe makes the statement invalid, deliberately.
    adm.Open(QStringLiteral("Select * from adm where nome = 'Supervisor' and senh = '") + m_ui->Text1->text() +
                 QStringLiteral("';"),
             m_services.DataConnection);
    if (adm.Eof()) {
        m_services.messages.MsgBox(QStringLiteral("Esta senha de supervisor não é valida"));
        m_gate.denied = true;
        Module1::seleciona_tudo(*m_ui->Text1);
        return;
    }
    m_gate.denied = false;
    accept();
}
