#include "registers/frmsenha.h"
#include "ui_frmsenha.h"

#include "platform/ado/Recordset.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/Seams.h"
#include "shared/Emitente.h"
#include "shared/Module1.h"
#include "shared/Services.h"

#include <QEventLoop>

namespace {

/// Without regard to case, accents, width and trailing blanks.
QString folded(const QString& text)
{
    QString plain;
    for (const QChar letter : text.normalized(QString::NormalizationForm_KD)) {
        if (letter.category() != QChar::Mark_NonSpacing)
            plain += letter;
    }
    while (plain.endsWith(u' '))
        plain.chop(1);
    return plain.toCaseFolded();
}

/// Whether one of the rows that the statement has found is the supervisor's with this password. An apostrophe in the
/// typed text can make the statement find any row; without one the database itself has compared both texts.
bool isSupervisor(ado::Recordset& rows, const QString& typed)
{
    for (; !rows.Eof(); rows.MoveNext()) {
        const vb::Variant password = rows.Fields(u"senh");
        if (password.isText() && !typed.contains(u'\''))
            return true;
        if (folded(rows.Fields(u"nome").textOrEmpty()) == folded(QStringLiteral("Supervisor")) &&
            folded(password.textOrEmpty()) == folded(typed))
            return true;
    }
    return false;
}

} // namespace

SupervisorAnswer frmsenha::ask(const Services& services, const Emitente& emitente, QWidget* over)
{
    frmsenha prompt(services, emitente, over);
    prompt.setModal(true);
    prompt.show();
    SupervisorAnswer answer = SupervisorAnswer::Refused;
    // The check runs between two waits, outside of every event loop: an error may leave from here.
    while (const std::optional<QString> typed = prompt.nextTry()) {
        const auto check = [&] { answer = prompt.verifica(*typed); };
        if (over)
            platform::tellAndStay(services.messages, check);
        else
            check();
        if (answer == SupervisorAnswer::Granted)
            break;
    }
    return answer;
}

frmsenha::frmsenha(const Services& services, const Emitente& emitente, QWidget* over)
    : QDialog(over)
    , m_ui(std::make_unique<Ui::frmsenha>())
    , m_services(services)
{
    m_ui->setupUi(this);
    m_ui->Label2->setText(emitente.RazaoSocial);
    m_ui->Label2->setVisible(!emitente.RazaoSocial.isEmpty());
    shared::seleciona_ao_focar(*m_ui->Text1);
    m_ui->Text1->setFocus();
}

frmsenha::~frmsenha() = default;

std::optional<QString> frmsenha::nextTry()
{
    if (!isVisible())
        return std::nullopt;
    std::optional<QString> typed;
    QEventLoop untilAnswered;
    connect(m_ui->Text1, &QLineEdit::returnPressed, &untilAnswered, [&] {
        if (!typed)
            typed = m_ui->Text1->text(); // What is typed behind Enter does not belong to it.
        untilAnswered.quit();
    });
    connect(this, &QDialog::finished, &untilAnswered, &QEventLoop::quit);
    untilAnswered.exec();
    return typed;
}

SupervisorAnswer frmsenha::verifica(const QString& typed)
{
    ado::Recordset adm;
    // The typed text goes into the statement as it is: a single apostrophe makes the statement invalid.
    adm.Open(QStringLiteral("Select * from adm where nome = 'Supervisor' and senh = '") + typed + QStringLiteral("';"),
             m_services.DataConnection);
    if (isSupervisor(adm, typed))
        return SupervisorAnswer::Granted;
    m_services.messages.MsgBox(QStringLiteral("Esta senha de supervisor não é valida"));
    Module1::seleciona_tudo(*m_ui->Text1);
    return SupervisorAnswer::Refused;
}
