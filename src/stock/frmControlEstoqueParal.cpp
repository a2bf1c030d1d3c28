#include "stock/frmControlEstoqueParal.h"
#include "ui_frmControlEstoqueParal.h"

#include "data/Dialect.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/EnterMovesOn.h"
#include "platform/ui/FocusWatch.h"
#include "platform/ui/KeyFilter.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "platform/vb/TypedNumber.h"
#include "shared/ListEntry.h"
#include "shared/ListFill.h"
#include "shared/Module1.h"
#include "shared/RowText.h"
#include "shared/Services.h"
#include "shared/StockHelpers.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>

#include <array>

namespace {

enum Column { Key, ProductNumber, Date, Description, Credit, Debit, InvoiceNumber, Supplier, ColumnCount };

// Blue-green-red order.
constexpr quint32 PaleGreen = 0xC0FFC0;
constexpr quint32 PaleOrange = 0xC0E0FF;

/// The number of the selected product: its row key, not its stock code.
double productNumber(const QString& entry)
{
    return vb::leadingNumber(shared::entryCode(entry));
}

vb::Currency amount(const vb::Variant& litres)
{
    return litres.isNull() ? vb::Currency() : vb::CCur(litres);
}

QString formatted(const vb::Variant& litres)
{
    return vb::Format(litres, u"##,#0.00");
}

} // namespace

frmControlEstoqueParal::frmControlEstoqueParal(const Services& services, PrintListing print, QWidget* parent)
    : StationWindow(services, parent)
    , m_ui(std::make_unique<Ui::frmControlEstoqueParal>())
    , m_print(std::move(print))
{
    m_ui->setupUi(this);
    const QDate today = m_services.clock.today();
    m_ui->dtp_0->setValue(QDate(today.year(), today.month(), 1));
    m_ui->dtp_1->setValue(today);
    m_ui->Label5->setText(vb::shortDate(today));
    m_ui->Combo1->setCompleter(nullptr);
    m_first = m_ui->dtp_0->Value();
    m_last = m_ui->dtp_1->Value();
    format_flex();
    connectControls();
    m_ui->List1->setFocus();
    slideAwayOnEscape();
    laidOut();
}

frmControlEstoqueParal::~frmControlEstoqueParal() = default;

void frmControlEstoqueParal::connectControls()
{
    auto* const enter = new platform::EnterMovesOn(this);
    enter->watch(m_ui->List1, m_ui->tx_0);
    enter->watch(m_ui->Combo1, m_ui->BTM);
    for (QLineEdit* box : {m_ui->tx_0, m_ui->tx_1}) {
        shared::seleciona_ao_focar(*box);
        enter->watch(box);
    }
    auto* const litres = new platform::FocusWatch(m_ui->tx_0);
    connect(litres, &platform::FocusWatch::LostFocus, this,
            [this] { m_ui->tx_0->setText(formatted(vb::typedNumber(m_ui->tx_0->text()))); });

    new platform::KeyFilter(m_ui->tx_0, [](int code) { return code; }); // for the keypad's decimal key

    connect(m_ui->List1, &platform::ListBox::Click, this, [this] { handle([this] { carrega_flex(); }); });
    connect(m_ui->BTM, &QPushButton::clicked, this, [this] { handle([this] { confirma(); }); });
    connect(m_ui->btI, &QPushButton::clicked, this, [this] { handle([this] { imprime(); }); });
}

void frmControlEstoqueParal::load()
{
    // Told on its own: without suppliers the products still come.
    handle([this] {
        if (!m_suppliersLoaded) {
            Module1::carrega_fornece(m_services, *m_ui->Combo1);
            m_suppliersLoaded = true;
        }
    });
    if (isClosed())
        return;
    carrega_lst();
    format_flex();
}

void frmControlEstoqueParal::carrega_lst()
{
    shared::refill(m_services,
                   {QStringLiteral("Select * from CadProdComb order by Descritivo"), QStringLiteral("CodigoI"),
                    QStringLiteral("descritivo")},
                   *m_ui->List1);
}

void frmControlEstoqueParal::format_flex()
{
    m_ui->flex->clearRows();
    m_ui->flex->setCols(ColumnCount);
    m_ui->flex->FormatString(QStringLiteral("|CodgProd|DatOP|Descritivo|Cred|Deb|NºNota|"));
    constexpr int widths[ColumnCount] = {700, 850, 850, 2700, 1200, 1200, 1200, 2400};
    for (int column = 0; column < ColumnCount; ++column)
        m_ui->flex->setColWidth(column, widths[column]);
    for (const Column number : {Credit, Debit})
        m_ui->flex->setColAlignment(number, Qt::AlignRight);
    for (const Column text : {Description, InvoiceNumber, Supplier})
        m_ui->flex->setColAlignment(text, Qt::AlignLeft);
    m_ui->flex->setStretchColumn(Supplier);
}

/// The totals go with their rows: a listing that fails leaves neither.
void frmControlEstoqueParal::esvazia()
{
    format_flex();
    for (QLabel* const total : {m_ui->lbt_0, m_ui->lbt_1})
        total->setText(QStringLiteral("0,00"));
}

void frmControlEstoqueParal::confirma()
{
    m_ui->tx_0->setText(vb::typedNumber(m_ui->tx_0->text()));
    if (!vb::IsNumeric(m_ui->tx_0->text()))
        m_ui->tx_0->setText(QStringLiteral("0"));
    const double litres = vb::CDbl(m_ui->tx_0->text());
    if (litres == 0)
        return;
    grava_estoque(litres);
    carrega_flex();
}

void frmControlEstoqueParal::grava_estoque(double litres)
{
    const QString product = shared::selectedEntry(*m_ui->List1);
    const bool credit = m_ui->opt_0->isChecked();
    shared::addLedgerRow(m_services, {productNumber(product), shared::entryDescription(product), litres, credit,
                                      m_ui->Combo1->currentText(), m_ui->tx_1->text()});
    m_ui->List1->setFocus();
}

void frmControlEstoqueParal::carrega_flex()
{
    m_product = shared::selectedEntry(*m_ui->List1);
    m_first = m_ui->dtp_0->Value();
    m_last = m_ui->dtp_1->Value();
    esvazia();
    ado::Recordset rows;
    rows.Open(QStringLiteral("Select * from ControleProdComb where codProd = ") +
                  vb::plainDecimal(productNumber(m_product)) + QStringLiteral("  and DataOP >= ") +
                  m_services.dialect.dateLiteral(m_first) + QStringLiteral(" and DataOP <= ") +
                  m_services.dialect.dateLiteral(m_last) + QStringLiteral("  order by DataOP;"),
              m_services.DataConnection);
    constexpr const char16_t* Names[] = {u"CodigoI", u"CodProd", u"DataOP",     u"descritivo",
                                         u"cred",    u"deb",     u"NumeroNota", u"fornecedor"};
    std::array<int, ColumnCount> fields{};
    for (std::size_t column = 0; column < fields.size(); ++column)
        fields[column] = rows.fieldIndex(Names[column]);
    vb::Currency credits;
    vb::Currency debits;
    shared::RowText row(rows);
    shared::Fill fill(*m_ui->flex, m_services.events, rows.RecordCount());
    fill.ifItFails([this] { esvazia(); });
    for (; !rows.Eof(); rows.MoveNext()) {
        row.begin();
        for (const Column column : {Key, ProductNumber})
            row.field(fields[column]);
        row.date(fields[Date]);
        row.field(fields[Description]);
        for (const Column column : {Credit, Debit})
            row.amount(fields[column]);
        for (const Column column : {InvoiceNumber, Supplier})
            row.field(fields[column]);
        m_ui->flex->AddItem(row.bytes());
        Module1::pinta_celula(*m_ui->flex, Credit, PaleGreen);
        Module1::pinta_celula(*m_ui->flex, Debit, PaleOrange);
        credits += amount(rows.Fields(fields[Credit]));
        debits += amount(rows.Fields(fields[Debit]));
        if (!fill.goesOn())
            return;
    }
    m_ui->lbt_0->setText(formatted(credits));
    m_ui->lbt_1->setText(formatted(debits));
}

void frmControlEstoqueParal::imprime()
{
    if (m_print)
        m_print({*m_ui->flex, m_product, m_first, m_last, m_ui->lbt_0->text(), m_ui->lbt_1->text()});
}
