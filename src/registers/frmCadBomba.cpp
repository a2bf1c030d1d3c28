#include "registers/frmCadBomba.h"
#include "ui_frmCadBomba.h"

#include "data/Dialect.h"
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/ComboBox.h"
#include "platform/ui/EnterMovesOn.h"
#include "platform/ui/FocusWatch.h"
#include "platform/ui/InputQueue.h"
#include "platform/ui/KeyFilter.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/ListEntry.h"
#include "shared/ListFill.h"
#include "shared/Module1.h"
#include "shared/Services.h"
#include "shared/Tanks.h"

#include <QKeyEvent>
#include <QSignalBlocker>

namespace {

constexpr int TankCount = 6;

/// Has a box show a text, which is no choice of the operator's. One that is none of its choices becomes one, so that
/// saving again keeps it.
void showText(QComboBox& box, const QString& text)
{
    const QSignalBlocker quiet(box);
    if (!text.isEmpty() && box.findText(text) < 0)
        box.addItem(text);
    box.setCurrentIndex(text.isEmpty() ? -1 : box.findText(text));
}

} // namespace

frmCadBomba::frmCadBomba(const Services& services, QWidget* parent)
    : StationWindow(services, parent)
    , m_ui(std::make_unique<Ui::frmCadBomba>())
{
    m_ui->setupUi(this);
    m_ui->dtp->setValue(m_services.clock.today());
    m_ui->Combo2->addItems(shared::tankNames(TankCount));
    m_ui->Combo2->setCurrentIndex(-1);
    connectControls();
    m_ui->tx_2->setFocus();
    laidOut();
}

frmCadBomba::~frmCadBomba() = default;

void frmCadBomba::connectControls()
{
    new platform::KeyFilter(
        m_ui->tx_2, [box = m_ui->tx_2](int code) { return Module1::filtra_numero(*box, static_cast<char16_t>(code)); });
    shared::seleciona_ao_focar(*m_ui->tx_0);
    for (QLineEdit* box : {m_ui->tx_0, m_ui->tx_1, m_ui->tx_2}) {
        auto* const focus = new platform::FocusWatch(box);
        connect(focus, &platform::FocusWatch::LostFocus, box, [box] { box->setText(box->text().toUpper()); });
    }
    platform::sendF4OnFocus(m_ui->Combo1);
    auto* const enter = new platform::EnterMovesOn(this);
    for (QWidget* field :
         std::initializer_list<QWidget*>{m_ui->tx_0, m_ui->tx_1, m_ui->tx_2, m_ui->Combo1, m_ui->Combo2, m_ui->dtp})
        enter->watch(field);

    connect(m_ui->Combo1, &platform::ComboBox::Click, this, &frmCadBomba::copia_descritivo);
    connect(m_ui->List1, &platform::ListBox::Click, this, [this] { handle([this] { mostra_bomba(); }); });
    connect(m_ui->List1, &platform::ListBox::KeyDown, this, [this](QKeyEvent* event) {
        if (event->key() != Qt::Key_Delete)
            return;
        event->accept();
        handle([this] { exclui(); });
    });
    connect(m_ui->Buttom_Mega1, &QPushButton::clicked, this, [this] { handle([this] { grava(); }); });
    connect(m_ui->Buttom_Mega2, &QPushButton::clicked, this, [this] { handle([this] { exclui_lista(); }); });
    connect(m_ui->Command1, &QPushButton::clicked, this, [this] { handle([this] { edita_datas(); }); });
    connect(this, &StationWindow::closed, this, &frmCadBomba::pumpsChanged);
}

void frmCadBomba::load()
{
    carrega_combo();
    carrega_list1();
}

void frmCadBomba::carrega_combo()
{
    const shared::ListQuery products{QStringLiteral("Select * from CadProdComb order by Descritivo"),
                                     QStringLiteral("Codigoestoque"), QStringLiteral("descritivo")};
    if (shared::refill(m_services, products, *m_ui->Combo1) && m_ui->Combo1->count() > 0)
        copia_descritivo();
}

bool frmCadBomba::carrega_list1()
{
    const shared::ListQuery pumps{QStringLiteral("Select * from planilhaposto order by numeroDispositivo"),
                                  QStringLiteral("numeroDispositivo"), QStringLiteral("Descritivo"), true};
    return shared::refill(m_services, pumps, *m_ui->List1);
}

void frmCadBomba::copia_descritivo()
{
    m_ui->tx_0->setText(shared::entryDescription(m_ui->Combo1->currentText()));
}

QString frmCadBomba::pumpNumber() const
{
    return vb::plainDecimal(vb::leadingNumber(m_ui->tx_2->text()));
}

QString frmCadBomba::readingDate() const
{
    return m_services.dialect.SqlDateTime(vb::shortDate(m_ui->dtp->Value()), QString());
}

void frmCadBomba::mostra_bomba()
{
    const double number = vb::leadingNumber(shared::entryCode(shared::selectedEntry(*m_ui->List1)));
    ado::Recordset pump;
    pump.Open(QStringLiteral("Select * from planilhaposto where numerodispositivo = ") + vb::plainDecimal(number) +
                  QStringLiteral(";"),
              m_services.DataConnection);
    if (pump.Eof())
        return;
    m_ui->tx_2->setText(pump.Fields(u"numerodispositivo").textOrEmpty());
    m_ui->tx_0->setText(pump.Fields(u"descritivo").textOrEmpty());
    m_ui->tx_1->setText(pump.Fields(u"leitura").textOrEmpty());
    showText(*m_ui->Combo2, pump.Fields(u"tanq").textOrEmpty());
    colocaCodProd(pump.Fields(u"prodvinculado"));
    const vb::Variant date = pump.Fields(u"datainsert");
    m_ui->dtp->setValue(date.isNull() ? m_services.clock.today() : vb::CDate(date).date());
}

void frmCadBomba::colocaCodProd(const vb::Variant& product)
{
    ado::Recordset found;
    found.Open(QStringLiteral("Select * from CadProdComb where codprod = ") +
                   vb::plainDecimal(vb::leadingNumber(product.textOrEmpty())),
               m_services.DataConnection);
    if (!found.Eof())
        showText(*m_ui->Combo1, shared::listEntry(found.Fields(u"Codigoestoque"), found.Fields(u"descritivo")));
}

void frmCadBomba::grava()
{
    if (!vb::IsNumeric(m_ui->tx_2->text())) {
        m_ui->tx_2->setFocus();
        return;
    }
    if (m_ui->Combo2->currentText().isEmpty()) {
        m_services.messages.MsgBox(QStringLiteral("Selecione o tanque"));
        return;
    }
    // The existing pump is deleted before the checks that follow: where one of them fails it stays deleted.
    if (!substitui_existente())
        return;
    if (!vb::IsNumeric(m_ui->tx_1->text())) {
        m_services.messages.MsgBox(QStringLiteral("É necessário inserir uma leitura para este dispositivo"));
        return;
    }
    if (m_ui->Combo1->currentText().isEmpty()) {
        m_services.messages.MsgBox(QStringLiteral("É necessário inserir produto vinculado ao dispositivo"));
        return;
    }
    const QString tank = m_ui->Combo2->currentText();
    const QStringList values{m_ui->tx_2->text(),
                             m_ui->tx_0->text(),
                             m_ui->tx_1->text(),
                             readingDate(),
                             shared::entryCode(m_ui->Combo1->currentText()),
                             tank};
    m_services.DataConnection.Execute(
        QStringLiteral("INSERT into PlanilhaPosto (numeroDispositivo,Descritivo,Leitura,DataInsert, ProdVinculado, "
                       "tanq) values ('") +
        values.join(QStringLiteral("','")) + QStringLiteral("');"));
    const QString number = pumpNumber();
    const platform::InputQueue::GoingOn asked; // Escape answers the question
    if (!carrega_list1())
        return;
    // Asked after every save, whether or not the tank is another one.
    const auto answer = m_services.messages.MsgBox(
        QStringLiteral("Editar as leituras anteriores correspondente ao combustivel com o novo numero de TANQUE?"),
        platform::vbYesNo);
    if (answer == platform::MsgBoxResult::Yes)
        m_services.DataConnection.Execute(QStringLiteral("Update Leitura set tanq = '") + tank +
                                          QStringLiteral("' where cdgbomba = ") + number);
    m_ui->tx_2->setFocus(Qt::TabFocusReason); // selected: the next number replaces it
}

/// Makes room for a pump whose number exists already. False when the operator does not want that.
bool frmCadBomba::substitui_existente()
{
    ado::Recordset existing;
    existing.Open(QStringLiteral("Select * from planilhaposto where numeroDispositivo = ") + pumpNumber() +
                      QStringLiteral(";"),
                  m_services.DataConnection);
    if (existing.Eof())
        return true;
    const auto answer = m_services.messages.MsgBox(
        QStringLiteral("Já existe em sua base de dados um numero de bomba parecido com este: \r\n") +
            m_ui->tx_2->text() + QStringLiteral(" deseja editar este existente?"),
        platform::vbYesNo);
    if (answer != platform::MsgBoxResult::Yes)
        return false;
    m_services.DataConnection.Execute(QStringLiteral("DELETE from planilhaposto where numeroDispositivo = ") +
                                      pumpNumber());
    return true;
}

void frmCadBomba::exclui()
{
    const QString entry = shared::selectedEntry(*m_ui->List1);
    if (entry.isEmpty())
        return;
    const auto answer = m_services.messages.MsgBox(
        QStringLiteral("Deseja mesmo excluir o registro: \r\n") + entry +
            QStringLiteral(" inclusive seus VINCULOS, ESTA OPERAÇÃO NÃO PODERÁ SER DESFEITA, caso tenha duvida cancele "
                           "imediatamente esta operação"),
        platform::vbOKCancel);
    if (answer != platform::MsgBoxResult::Ok)
        return;
    m_services.DataConnection.Execute(QStringLiteral("Delete from planilhaposto where numerodispositivo = ") +
                                      pumpNumber());
    // Three characters of the five-digit pump number, so pump 701 deletes the item 7.
    m_services.DataConnection.Execute(QStringLiteral("Delete from EstoqueDiversos where CODIGO = ") +
                                      vb::plainDecimal(vb::leadingNumber(entry.left(3))));
    Q_EMIT pumpsChanged();
    carrega_list1();
}

void frmCadBomba::exclui_lista()
{
    const auto answer = m_services.messages.MsgBox(
        QStringLiteral("Esta operação irá excluir a leitura atual, para renovação de dados"), platform::vbYesNo);
    if (answer == platform::MsgBoxResult::No)
        return;
    m_services.DataConnection.Execute(QStringLiteral("Delete from planilhaposto"));
    carrega_list1();
}

void frmCadBomba::edita_datas()
{
    m_services.DataConnection.Execute(QStringLiteral("Update planilhaposto set datainsert = '") + readingDate() +
                                      QStringLiteral("'"));
    m_services.messages.MsgBox(QStringLiteral("Concluido"));
}
