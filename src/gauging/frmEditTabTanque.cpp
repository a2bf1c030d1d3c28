#include "gauging/frmEditTabTanque.h"
#include "ui_frmEditTabTanque.h"

#include "gauging/GaugeTable.h"
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/ComboBox.h"
#include "platform/ui/EnterMovesOn.h"
#include "platform/ui/KeyFilter.h"
#include "platform/ui/Keys.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/TypedNumber.h"
#include "shared/ListFill.h"
#include "shared/Module1.h"
#include "shared/Services.h"

#include <QKeyEvent>

frmEditTabTanque::frmEditTabTanque(const Services& services, QWidget* parent)
    : StationWindow(services, parent)
    , m_ui(std::make_unique<Ui::frmEditTabTanque>())
{
    m_ui->setupUi(this);
    auto* const enterMovesOn = new platform::EnterMovesOn(this);
    enterMovesOn->watch(m_ui->Combo1);
    for (QLineEdit* const box : {m_ui->Text1, m_ui->Text2}) {
        shared::seleciona_ao_focar(*box);
        new platform::KeyFilter(box, [](int code) { return code; }); // for the keypad's decimal key
        enterMovesOn->watch(box);
    }
    formata_flex();
    m_ui->flex->setStretchColumn(2);
    m_ui->Combo1->addItems(GaugeTable::tankNames());

    // The same tank chosen again reads its table again.
    connect(m_ui->Combo1, &platform::ComboBox::Click, this, [this] { handle([this] { escolhe_tanque(); }); });
    connect(m_ui->flex, &platform::FlexGrid::Click, this, [this] { handle([this] { escolhe_linha(); }); });
    // Enter chooses the row that the arrow keys have reached.
    connect(m_ui->flex, &platform::FlexGrid::KeyDown, this, [this](QKeyEvent* key) {
        if (!platform::isEnter(*key))
            return;
        key->accept();
        handle([this] { escolhe_linha(); });
        m_ui->Text1->setFocus();
    });
    connect(m_ui->Command1, &QPushButton::clicked, this, [this] { handle([this] { confirma(); }); });
    laidOut();
}

frmEditTabTanque::~frmEditTabTanque() = default;

void frmEditTabTanque::load()
{
    escolhe_tanque();
}

void frmEditTabTanque::formata_flex()
{
    constexpr int widths[] = {0, 600, 1800};
    m_ui->flex->setCols(3);
    m_ui->flex->setRows(1);
    m_ui->flex->FormatString(QStringLiteral("|CMs|LTs"));
    for (int column = 0; column < static_cast<int>(std::size(widths)); ++column)
        m_ui->flex->setColWidth(column, widths[column]);
}

void frmEditTabTanque::escolhe_tanque()
{
    // A row of the tank before is no row of this one.
    for (QLabel* const label : {m_ui->lb_0, m_ui->lb_1, m_ui->lb_2})
        label->clear();
    m_ui->Command1->setEnabled(false);
    carrega_tabela();
}

void frmEditTabTanque::carrega_tabela()
{
    ado::Recordset table;
    {
        shared::Fill fill(*m_ui->flex, m_services.events);
        fill.ifItFails([this] { formata_flex(); });
        table.Open(QStringLiteral("Select * from ") + m_ui->Combo1->currentText() + QStringLiteral(" order by cma ;"),
                   m_services.DataConnection);
        // Without rows in this table the rows of the tank before stay on screen.
        if (table.RecordCount() > 0)
            formata_flex();
        const int id = table.fieldIndex(u"id");
        const int centimetres = table.fieldIndex(u"cmA");
        const int litres = table.fieldIndex(u"ltsA");
        for (; !table.Eof(); table.MoveNext()) {
            m_ui->flex->AddItem(QStringList{table.Fields(id).textOrEmpty(), table.Fields(centimetres).textOrEmpty(),
                                            GaugeTable::litresText(table.Fields(litres))});
            if (!fill.goesOn())
                return;
        }
    }
    m_ui->Command1->setEnabled(table.RecordCount() > 0);
    if (table.RecordCount() < 1)
        m_services.messages.MsgBox(GaugeTable::noTableText());
    else
        seleciona_id();
}

void frmEditTabTanque::seleciona_id()
{
    // Without a chosen row none looks chosen.
    m_ui->flex->setCurrentIndex({});
    for (int row = 1; row < m_ui->flex->Rows() && !m_ui->lb_2->text().isEmpty(); ++row) {
        if (m_ui->flex->TextMatrix(row, 0) == m_ui->lb_2->text()) {
            m_ui->flex->setRow(row);
            m_ui->flex->scrollTo(m_ui->flex->currentIndex());
            mostra_linha();
            return;
        }
    }
}

void frmEditTabTanque::mostra_linha()
{
    const int row = m_ui->flex->Row();
    m_ui->lb_0->setText(m_ui->flex->TextMatrix(row, 1));
    m_ui->lb_1->setText(m_ui->flex->TextMatrix(row, 2));
    m_ui->lb_2->setText(m_ui->flex->TextMatrix(row, 0));
}

void frmEditTabTanque::escolhe_linha()
{
    if (m_ui->flex->Row() < 1)
        return;
    mostra_linha();
    m_ui->Text1->setText(m_ui->lb_0->text());
    // With the blanks that align it in the grid: they are stored and shown again as they are.
    m_ui->Text2->setText(m_ui->lb_1->text());
}

void frmEditTabTanque::confirma()
{
    for (QLineEdit* const box : {m_ui->Text1, m_ui->Text2}) {
        // Points are taken out where the table is shown: one that is stored must be no decimal point.
        box->setText(vb::typedNumber(box->text()));
        if (!vb::IsNumeric(box->text())) {
            box->setText(QStringLiteral("0"));
            box->setFocus();
            return;
        }
    }
    // Without a chosen row the statement ends in an empty key and the database refuses it.
    m_services.DataConnection.Execute(
        QStringLiteral("Update ") + m_ui->Combo1->currentText() + QStringLiteral(" set cmA = '") + m_ui->Text1->text() +
        QStringLiteral("', ltsA = '") + m_ui->Text2->text() + QStringLiteral("' where id = ") + m_ui->lb_2->text());
    ++GaugeTable::changesOf(m_ui->Combo1->currentText());
    carrega_tabela();
}
