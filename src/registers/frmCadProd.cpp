#include "registers/frmCadProd.h"
#include "ui_frmCadProd.h"

#include "data/Dialect.h"
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/EnterMovesOn.h"
#include "platform/ui/FocusWatch.h"
#include "platform/ui/Keys.h"
#include "platform/ui/Seams.h"
#include "platform/ui/Twips.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/ListEntry.h"
#include "shared/ListFill.h"
#include "shared/Module1.h"
#include "shared/Services.h"

#include <QKeyEvent>

namespace {

constexpr int ChooserTwips = 120;
/// Yes and No, with the icon codes of stop and of information together.
constexpr int WarningYesNo = 84;

/// The stock code of a list entry, for statements.
QString stockCode(const QString& entry)
{
    return vb::plainDecimal(vb::leadingNumber(shared::entryCode(entry)));
}

} // namespace

frmCadProd::frmCadProd(const Services& services, QWidget* parent)
    : StationWindow(services, parent)
    , m_ui(std::make_unique<Ui::frmCadProd>())
{
    m_ui->setupUi(this);
    connectControls();
    connectLists();
    m_ui->cmddir->setFocus();
    slideAwayOnEscape();
    laidOut();
}

frmCadProd::~frmCadProd() = default;

void frmCadProd::connectControls()
{
    shared::seleciona_ao_focar(*m_ui->Text1);
    shared::seleciona_ao_focar(*m_ui->Text2);
    auto* const code = new platform::FocusWatch(m_ui->Text1);
    connect(code, &platform::FocusWatch::LostFocus, this,
            [this] { m_ui->Text1->setText(vb::Format(m_ui->Text1->text(), u"00000")); });
    auto* const enter = new platform::EnterMovesOn(this);
    enter->watch(m_ui->Text2);
    enter->watch(m_ui->Text1, m_ui->Buttom_Mega1);

    connect(m_ui->cmddir, &QPushButton::clicked, this, [this] { showChooser(true); });
    connect(m_ui->Buttom_Mega1, &QPushButton::clicked, this, [this] { handle([this] { grava(); }); });
    connect(m_ui->Command1, &QPushButton::clicked, this, [this] { handle([this] { load(); }); });
    connect(m_ui->Command2, &QPushButton::clicked, this, [this] { handle([this] { exclui_lista(); }); });
    connect(this, &StationWindow::closed, this, &frmCadProd::pumpsChanged);
}

void frmCadProd::connectLists()
{
    platform::sendF4OnFocus(m_ui->List1);
    connect(m_ui->List1, &platform::ListBox::Click, this, [this] { handle([this] { mostra_produto(); }); });
    connect(m_ui->List1, &platform::ListBox::KeyDown, this, [this](QKeyEvent* event) {
        if (event->key() != Qt::Key_Delete)
            return;
        event->accept();
        handle([this] { exclui(); });
    });
    connect(m_ui->List2, &platform::ListBox::KeyDown, this, [this](QKeyEvent* event) {
        if (!platform::isEnter(*event))
            return;
        event->accept();
        handle([this] { escolhe_estoque(); });
    });
    connect(m_ui->List2, &platform::ListBox::itemDoubleClicked, this,
            [this] { handle([this] { escolhe_estoque(); }); });
}

void frmCadProd::load()
{
    carrega_list2();
    carrega_list1();
}

void frmCadProd::carrega_list2()
{
    shared::refill(m_services,
                   {QStringLiteral("Select * from Estoque order by Discriminacao"), QStringLiteral("codigo"),
                    QStringLiteral("Discriminacao")},
                   *m_ui->List2);
}

void frmCadProd::carrega_list1()
{
    shared::refill(m_services,
                   {QStringLiteral("Select * from cadprodcomb order by Descritivo"), QStringLiteral("Codigoestoque"),
                    QStringLiteral("descritivo")},
                   *m_ui->List1);
}

void frmCadProd::resizeEvent(QResizeEvent* event)
{
    StationWindow::resizeEvent(event);
    placeChooser();
}

/// The chooser lies over everything else, a little off the window's edges.
void frmCadProd::placeChooser()
{
    const int edge = ChooserTwips * logicalDpiX() / platform::TwipsPerInch;
    m_ui->Frame2->setGeometry(rect().adjusted(edge, edge, -edge, -edge));
}

void frmCadProd::showChooser(bool on)
{
    // What lies under the chooser is not to be reached with the Tab key.
    m_ui->page->setEnabled(!on);
    m_ui->Frame2->setVisible(on);
    m_ui->Frame2->raise();
    if (on)
        m_ui->List2->setFocus();
    else
        m_ui->cmddir->setFocus();
}

bool frmCadProd::closeInnermost()
{
    if (!m_ui->Frame2->isVisible())
        return false;
    showChooser(false);
    return true;
}

void frmCadProd::escolhe_estoque()
{
    const QString entry = shared::selectedEntry(*m_ui->List2);
    ado::Recordset item;
    item.Open(QStringLiteral("Select * from estoque where codigo = ") + stockCode(entry), m_services.DataConnection);
    m_ui->Label1->setText(shared::entryDescription(entry));
    // An item that has left the stock meanwhile has no price.
    m_ui->Text2->setText(item.Eof() ? QString() : vb::Format(item.Fields(u"valorvenda"), u"##,#0.000"));
    m_ui->Text1->setText(vb::Format(shared::entryCode(entry).trimmed(), u"00000"));
    item.Close();
    showChooser(false);
    m_ui->Text2->setFocus();
}

void frmCadProd::mostra_produto()
{
    const QString entry = shared::selectedEntry(*m_ui->List1);
    ado::Recordset product;
    product.Open(QStringLiteral("Select * from cadprodcomb where codigoestoque = ") + stockCode(entry),
                 m_services.DataConnection);
    if (product.Eof())
        return;
    m_ui->Label1->setText(entry.mid(7).trimmed());
    m_ui->Text2->setText(vb::Format(product.Fields(u"valor"), u"##,#0.000"));
    m_ui->Text1->setText(vb::Format(product.Fields(u"Codigoestoque"), u"00000"));
}

/// Without a message: the focus goes to the box that needs another look.
bool frmCadProd::inputIsComplete()
{
    const auto refuse = [](QLineEdit& box) {
        box.setFocus();
        return false;
    };
    if (!vb::IsNumeric(m_ui->Text2->text()))
        return refuse(*m_ui->Text2);
    if (!vb::IsNumeric(m_ui->Text1->text()))
        return refuse(*m_ui->Text1);
    if (vb::CDbl(m_ui->Text1->text()) == 0)
        return refuse(*m_ui->Text1);
    if (vb::CDbl(m_ui->Text2->text()) == 0)
        return refuse(*m_ui->Text2);
    return true;
}

void frmCadProd::grava()
{
    if (!inputIsComplete())
        return;
    // The box itself is rewritten: it then shows the price as the server gets it.
    if (m_services.dialect.isMySql())
        m_ui->Text2->setText(m_ui->Text2->text().replace(u',', u'.'));
    const QString description = m_ui->Label1->text();
    const QString price = m_ui->Text2->text();
    const QString code = m_ui->Text1->text();
    bool exists = false;
    if (!m_ui->Check1->isChecked()) {
        ado::Recordset product;
        product.Open(QStringLiteral("Select * from CadProdComb where Descritivo = '") + description + u'\'',
                     m_services.DataConnection);
        exists = !product.Eof();
    }
    if (!exists) {
        m_services.DataConnection.Execute(
            QStringLiteral("Insert Into CadProdComb(Descritivo, codprod, valor, codigoestoque) values ('") +
            QStringList{description, code, price, code}.join(QStringLiteral("','")) + QStringLiteral("')"));
    } else if (m_services.messages.MsgBox(QStringLiteral("Aplicar as alterações para ") + description,
                                          platform::vbYesNo) == platform::MsgBoxResult::Yes) {
        // codprod keeps its old value.
        m_services.DataConnection.Execute(
            QStringLiteral("UPDATE cadProdComb set descritivo = '") + description + QStringLiteral("', valor = '") +
            price + QStringLiteral("', codigoestoque = '") + code + QStringLiteral("' where descritivo = '") +
            description + QStringLiteral("';"));
    }
    m_ui->Text2->setFocus();
    carrega_list1();
}

void frmCadProd::exclui()
{
    const QString entry = shared::selectedEntry(*m_ui->List1);
    if (entry.isEmpty())
        return;
    const auto answer = m_services.messages.MsgBox(
        QStringLiteral("Deseja mesmo excluir o registro ") + shared::entryCode(entry) +
            QStringLiteral(" e todos seus vinculados? Esta operação não poderá ser desfeita"),
        WarningYesNo);
    if (answer == platform::MsgBoxResult::No)
        return;
    const QString code = stockCode(entry);
    m_services.DataConnection.Execute(QStringLiteral("Delete from CadProdComb where codigoestoque = ") + code);
    m_services.DataConnection.Execute(QStringLiteral("Delete from ControleProdComb where codProd = ") + code);
    carrega_list1();
}

void frmCadProd::exclui_lista()
{
    const auto answer = m_services.messages.MsgBox(
        QStringLiteral("Deseja mesmo excluir a lista e todos seus vinculados? Esta operação não poderá ser desfeita"),
        WarningYesNo);
    if (answer == platform::MsgBoxResult::No)
        return;
    m_services.DataConnection.Execute(QStringLiteral("Delete from CadProdComb where codigoI >= 0"));
    m_services.DataConnection.Execute(QStringLiteral("Delete from ControleProdComb where codigoI >= 0"));
    carrega_list1();
}
