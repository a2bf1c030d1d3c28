#include "registers/frmdiversos.h"
#include "ui_frmdiversos.h"

#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/EnterMovesOn.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/InputQueue.h"
#include "platform/ui/Keys.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/ListFill.h"
#include "shared/Module1.h"
#include "shared/Services.h"
#include "shared/StockHelpers.h"

#include <QKeyEvent>
#include <QScopeGuard>

namespace {

enum Column { Code, Quantity, Description };

/// Yes and No; No is the default button.
constexpr int YesNoDefaultNo = 260;

/// The value of a code's text, for statements.
QString codeValue(const QString& text)
{
    return vb::plainDecimal(vb::leadingNumber(text));
}

/// The rows of a grid as texts, for loops that let events run.
QList<QStringList> rowsOf(const platform::FlexGrid& grid)
{
    QList<QStringList> rows;
    for (int row = 1; row < grid.Rows(); ++row)
        rows.append({grid.TextMatrix(row, Code), grid.TextMatrix(row, Quantity), grid.TextMatrix(row, Description)});
    return rows;
}

} // namespace

frmdiversos::frmdiversos(const Services& services, QWidget* parent)
    : StationWindow(services, parent)
    , m_ui(std::make_unique<Ui::frmdiversos>())
{
    m_ui->setupUi(this);
    for (platform::FlexGrid* grid : {m_ui->flex, m_ui->Flex1}) {
        grid->FormatString(QStringLiteral("Codigo|Quantidade|Descritivo"));
        grid->setColWidth(Code, 900);
        grid->setColWidth(Quantity, 1300);
        grid->setColAlignment(Quantity, Qt::AlignRight);
        grid->setColAlignment(Description, Qt::AlignLeft);
        grid->setStretchColumn(Description);
    }
    connectBoxes();
    connectGrids();
    m_ui->Text1->setFocus();
    slideAwayOnEscape();
    laidOut();
}

frmdiversos::~frmdiversos() = default;

void frmdiversos::connectBoxes()
{
    shared::seleciona_ao_focar(*m_ui->Text1);
    shared::seleciona_ao_focar(*m_ui->Text2);
    auto* const enter = new platform::EnterMovesOn(this);
    enter->watch(m_ui->Text4);
    enter->watch(m_ui->Text3);
    connect(m_ui->Text1, &QLineEdit::returnPressed, this, [this] { handle([this] { procura(); }); });
    connect(m_ui->Text2, &QLineEdit::returnPressed, this, [this] { handle([this] { insere(); }); });
    connect(m_ui->Command1, &QPushButton::clicked, this, [this] { handle([this] { insere_no_estoque(); }); });
    connect(m_ui->Command2, &QPushButton::clicked, this, [this] { handle([this] { edita(); }); });
    connect(m_ui->Command3, &QPushButton::clicked, this, [this] { close(); });
}

void frmdiversos::connectGrids()
{
    connect(m_ui->flex, &platform::FlexGrid::DblClick, this, [this] { handle([this] { abre_quantia(); }); });
    connect(m_ui->flex, &platform::FlexGrid::KeyDown, this, [this](QKeyEvent* event) {
        if (!platform::isEnter(*event))
            return;
        event->accept();
        handle([this] { abre_quantia(); });
    });
    connect(m_ui->Flex1, &platform::FlexGrid::Click, this, [this] { handle([this] { mostra_item(); }); });
    connect(m_ui->Flex1, &platform::FlexGrid::DblClick, this, [this] { handle([this] { exclui_marcados(); }); });
    connect(m_ui->Flex1, &platform::FlexGrid::KeyDown, this, [this](QKeyEvent* event) {
        if (event->key() == Qt::Key_Delete) {
            event->accept();
            handle([this] { exclui_marcados(); });
        } else if (event->key() == Qt::Key_Space) {
            // The click of those who work without the mouse.
            event->accept();
            handle([this] { mostra_item(); });
        }
    });
}

void frmdiversos::load()
{
    carrega(*m_ui->flex,
            QStringLiteral("Select codigo, discriminacao, quantidade from Estoque order by discriminacao;"));
    carrega_flex1();
}

void frmdiversos::carrega_flex1()
{
    carrega(*m_ui->Flex1,
            QStringLiteral("Select codigo, discriminacao, quantidade from EstoqueDIVERSOS order by discriminacao;"));
}

/// Without rows only the header stays.
void frmdiversos::carrega(platform::FlexGrid& grid, const QString& statement)
{
    ado::Recordset rows;
    rows.Open(statement, m_services.DataConnection);
    shared::Fill fill(grid, m_services.events, rows.RecordCount());
    fill.ifItFails([&grid] { grid.clearRows(); });
    grid.clearRows();
    const int code = rows.fieldIndex(u"codigo");
    const int quantity = rows.fieldIndex(u"quantidade");
    const int description = rows.fieldIndex(u"discriminacao");
    for (; !rows.Eof(); rows.MoveNext()) {
        grid.AddItem(QStringList{rows.Fields(code).textOrEmpty(), rows.Fields(quantity).textOrEmpty(),
                                 rows.Fields(description).textOrEmpty()});
        if (!fill.goesOn())
            return;
    }
}

void frmdiversos::procura()
{
    carrega(*m_ui->flex,
            QStringLiteral("Select codigo, discriminacao, quantidade from Estoque where discriminacao like '%") +
                m_ui->Text1->text() + QStringLiteral("%' order by discriminacao;"));
    m_ui->Text1->setFocus();
    Module1::seleciona_tudo(*m_ui->Text1);
}

void frmdiversos::abre_quantia()
{
    const int row = m_ui->flex->Row();
    if (row < 1)
        return;
    const QString code = m_ui->flex->TextMatrix(row, Code);
    for (const QStringList& chosen : rowsOf(*m_ui->Flex1)) {
        if (vb::leadingNumber(chosen.at(Code)) == vb::leadingNumber(code)) {
            m_services.messages.MsgBox(QStringLiteral("Existe um registro inserido com este codigo"));
            return;
        }
    }
    m_chosenCode = code;
    m_ui->Label4->setText(m_ui->flex->TextMatrix(row, Description));
    showQuantity(true);
}

void frmdiversos::resizeEvent(QResizeEvent* event)
{
    StationWindow::resizeEvent(event);
    placeQuantity();
}

/// The quantity entry lies in the middle of the stock grid.
void frmdiversos::placeQuantity()
{
    QWidget& frame = *m_ui->Frame1;
    const int width = rect().width() * 2 / 3;
    const QSize size(width, std::max(frame.sizeHint().height(), frame.heightForWidth(width)));
    QRect place(QPoint(), size);
    place.moveCenter(m_ui->flex->mapTo(this, m_ui->flex->rect().center()));
    frame.setGeometry(place);
}

void frmdiversos::showQuantity(bool on)
{
    // What lies under the entry is not to be reached with the Tab key.
    m_ui->page->setEnabled(!on);
    m_ui->Frame1->setVisible(on);
    if (!on) {
        m_ui->flex->setFocus();
        return;
    }
    placeQuantity();
    m_ui->Frame1->raise();
    m_ui->Text2->setFocus();
    Module1::seleciona_tudo(*m_ui->Text2);
}

bool frmdiversos::closeInnermost()
{
    if (!m_ui->Frame1->isVisible())
        return false;
    showQuantity(false);
    return true;
}

void frmdiversos::insere()
{
    if (!vb::IsNumeric(m_ui->Text2->text())) {
        m_ui->Text2->setText(QStringLiteral("0"));
        return;
    }
    const QString quantity = vb::Format(m_ui->Text2->text(), u"##,#0.00");
    m_ui->Text2->setText(quantity);
    const QString description = m_ui->Label4->text();
    const QStringList values{codeValue(m_chosenCode), quantity, description};
    m_services.DataConnection.Execute(
        QStringLiteral("Insert into EstoqueDiversos(codigo, QUANTIDADE, discriminacao) values ('") +
        values.join(QStringLiteral("','")) + QStringLiteral("');"));
    const platform::InputQueue::GoingOn
        hidden; // Escape comes to the window, and not to the entry that is on its way out
    m_ui->Flex1->AddItem(QStringList{m_chosenCode, quantity, description});
    carrega_flex1();
    showQuantity(false);
}

void frmdiversos::mostra_item()
{
    platform::FlexGrid& items = *m_ui->Flex1;
    const int row = items.Row();
    if (row < 1)
        return;
    m_ui->Text4->setText(items.TextMatrix(row, Quantity));
    m_ui->Text3->setText(items.TextMatrix(row, Description));
    m_ui->Label6->setText(items.TextMatrix(row, Code));
    Module1::marca_linha(items);
}

void frmdiversos::edita()
{
    const QString code = m_ui->Label6->text();
    if (vb::leadingNumber(code) == 0)
        return;
    if (m_services.messages.MsgBox(QStringLiteral("Confirma as alterações?"), platform::vbYesNo) ==
        platform::MsgBoxResult::No)
        return;
    m_services.DataConnection.Execute(QStringLiteral("Update EstoqueDiversos set quantidade = '") +
                                      m_ui->Text4->text() + QStringLiteral("', discriminacao = '") +
                                      m_ui->Text3->text() + QStringLiteral("' where codigo = ") + codeValue(code));
    carrega_flex1();
}

void frmdiversos::exclui_marcados()
{
    const auto answer =
        m_services.messages.MsgBox(QStringLiteral("Excluir o(s) registro(s) selecionado(s) e todos seus vinculos.\r\n"
                                                  "Esta operação não poderá ser revertida"),
                                   YesNoDefaultNo, QStringLiteral("A T E N Ç Ã O"));
    if (answer == platform::MsgBoxResult::No)
        return;
    const platform::FlexGrid& items = *m_ui->Flex1;
    for (int row = 1; row < items.Rows(); ++row) {
        if (items.CellBackColor(row, 0) != Module1::MarkColour)
            continue;
        const QString code = codeValue(items.TextMatrix(row, Code));
        m_services.DataConnection.Execute(QStringLiteral("Delete from EstoqueDiversos where codigo = ") + code);
        m_services.DataConnection.Execute(QStringLiteral("Delete from controleprodcomb where codprod = ") + code);
    }
    carrega_flex1();
}

void frmdiversos::insere_no_estoque()
{
    m_ui->Command1->setEnabled(false);
    const auto enableAgain = qScopeGuard([this] {
        m_ui->Command1->setEnabled(true);
        m_ui->Command1->setFocus();
    });
    const vb::Date now = vb::Date::fromQDateTime(m_services.clock.now());
    const QString operation = vb::Format(now, u"ddmmyy") + vb::Format(now, u"hhmmss");
    for (const QStringList& row : rowsOf(*m_ui->Flex1)) {
        Module1::lanca_controle(m_services, row.at(Code), row.at(Description), row.at(Quantity), operation,
                                QStringLiteral("cred"));
        m_services.events.DoEvents();
    }
    m_services.messages.MsgBox(QStringLiteral("Concluido"));
}
