#include "app/frmprincipal.h"
#include "ui_frmprincipal.h"

#include "app/PumpGrid.h"
#include "data/Dialect.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/Keys.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Error.h"
#include "platform/vb/Format.h"
#include "shared/EntryGrid.h"
#include "shared/Module1.h"
#include "shared/Services.h"
#include "shared/StockHelpers.h"

#include <QKeyEvent>

// Selecting a pump and entering its reading. Nothing is written to the database here.

namespace {

const QColor LightCyan(0xC0, 0xFF, 0xFF);
const QColor Yellow(0xFF, 0xFF, 0x00);
const QColor Orange(0xFF, 0x80, 0x00);
const QColor PaleGreen(0x80, 0xFF, 0x80);

void paint(QLabel& label, const QColor& colour)
{
    QPalette palette = label.palette();
    palette.setColor(QPalette::Window, colour);
    palette.setColor(QPalette::WindowText, Qt::black);
    label.setPalette(palette);
}

/// Value of a line, rounded once; empty where it does not fit a money amount.
QString lineTotal(const QString& litres, const QString& unitPrice)
{
    constexpr int MoneyDecimals = 4;
    const vb::Decimal value = vb::CDec(litres) * vb::CDec(unitPrice);
    return value.toScaledHalfEven(MoneyDecimals) ? vb::Format(value, u"##,#0.00") : QString();
}

} // namespace

void frmprincipal::flexClick()
{
    const platform::FlexGrid& flex = *m_ui->flex;
    if (vb::leadingNumber(u'0' + flex.TextMatrix(flex.Row(), PumpGrid::Price)) == 0) {
        m_services.messages.MsgBox(QStringLiteral("É necessário cadastrar valores para o produto"));
        return;
    }
    m_linha = flex.Row();
    m_services.events.DoEvents();
    seleciona_bomba();
}

void frmprincipal::flexKey(QKeyEvent& event)
{
    if (event.key() == Qt::Key_Menu || (event.key() == Qt::Key_F10 && event.modifiers() == Qt::ShiftModifier)) {
        event.accept();
        popupFer(m_ui->flex->viewport()->mapToGlobal(m_ui->flex->visualRect(m_ui->flex->currentIndex()).bottomLeft()));
        return;
    }
    if (!platform::isEnter(event))
        return;
    event.accept();
    if (m_ui->flex->Rows() < 2)
        return;
    m_linha = m_ui->flex->Row();
    seleciona_bomba();
    Module1::seleciona_tudo(*m_ui->Text1);
    m_ui->Text1->setFocus();
}

void frmprincipal::seleciona_bomba()
{
    platform::FlexGrid& flex = *m_ui->flex;
    platform::leaveQuietly([&] {
        if (flex.Rows() == m_ui->flexG->Rows()) {
            m_services.messages.MsgBox(QStringLiteral("Note que você chegou ao fim da leitura, obseve"));
            return;
        }
        if (flex.Rows() < 2)
            return;
        flex.setRow(m_linha);
        Module1::marca_linha(flex);
        for (int row = 1; row < flex.Rows(); ++row)
            flex.setTextMatrix(row, PumpGrid::Selected, QString());
        flex.setTextMatrix(m_linha, PumpGrid::Selected, QStringLiteral("X"));

        const QString number = flex.TextMatrix(m_linha, PumpGrid::Number);
        const QString plainNumber = vb::CStr(vb::CDbl(number));
        ado::Recordset pump;
        pump.Open(QStringLiteral("Select * from PlanilhaPosto where numerodispositivo = ") + plainNumber,
                  m_services.DataConnection);
        if (!pump.Eof()) {
            setLb(PreviousReading, vb::Format(pump.Fields(u"leitura"), u"##,#0.00"));
            setLb(PreviousDate, vb::Format(pump.Fields(u"datainsert"), u"dd/mm/yy"));
            setLb(PumpDescription, pump.Fields(u"descritivo").textOrEmpty());
            setLb(PumpNumber, number);
            m_ui->Text1->setText(lb(PreviousReading));
            text1Change();
            setLb(UnitPrice, vb::Format(Module1::valor_produto(m_services.DataConnection,
                                                               pump.Fields(u"prodvinculado").textOrEmpty()),
                                        u"##,#0.000"));
            setLb(PumpTank, pump.Fields(u"tanq").textOrEmpty());
        }
        carrega_flex1(QStringLiteral("Select * from Leitura where DataLT >= ") +
                      m_services.dialect.dateLiteral(m_ui->dtpI_0->Value()) + QStringLiteral(" and DataLT <= ") +
                      m_services.dialect.dateLiteral(m_ui->dtpI_1->Value()) + QStringLiteral(" and  cdgbomba = ") +
                      plainNumber);
    });
}

QString frmprincipal::lb(Lb value) const
{
    return m_lb[value]->text();
}

void frmprincipal::setLb(Lb value, const QString& text)
{
    QLabel& label = *m_lb[value];
    if (label.text() == text)
        return;
    label.setText(text);
    label.setToolTip(text);
    lb_Change();
}

void frmprincipal::lb_Change()
{
    if (lb(PumpDescription).isEmpty()) {
        m_timer1.stop();
        paint(*m_lb[PumpDescription], LightCyan);
    } else if (!m_timer1.isActive()) {
        m_timer1.start();
    }
    paint(*m_lb[Litres], vb::leadingNumber(lb(Litres)) < 0 ? Orange : PaleGreen);
}

void frmprincipal::pisca()
{
    paint(*m_lb[PumpDescription],
          m_lb[PumpDescription]->palette().color(QPalette::Window) == LightCyan ? Yellow : LightCyan);
}

int frmprincipal::text1Key(int code)
{
    int key = code == u'.' ? u',' : code;
    if (lb(PreviousReading).isEmpty())
        return 0; // No pump is selected yet.
    key = Module1::filtra_numero(*m_ui->Text1, static_cast<char16_t>(key));
    if (key != u'\r')
        return key;
    const auto enter = [this] {
        m_services.events.DoEvents();
        const bool registered = registra_leitura();
        m_services.events.DoEvents();
        if (registered && m_ui->Text1->hasFocus())
            m_ui->flex->setFocus();
    };
    handle([&] { platform::leaveQuietly(enter); });
    return 0;
}

void frmprincipal::text1Change()
{
    const std::optional<vb::Currency> current = vb::parseCurrency(m_ui->Text1->text());
    const std::optional<vb::Currency> previous = vb::parseCurrency(lb(PreviousReading));
    // A reading that is no number yet leaves the last result.
    if (current && previous)
        platform::leaveQuietly([&] { setLb(Litres, vb::CStr(*current - *previous)); });
}

void frmprincipal::text1LostFocus()
{
    const QString shown = vb::Format(m_ui->Text1->text(), u"##,#0.00");
    if (shown != m_ui->Text1->text())
        m_ui->Text1->setText(shown);
}

bool frmprincipal::registra_leitura()
{
    // While a sheet is being closed its lines are fixed: the reading waits in its box.
    if (m_fechando)
        return false;
    // A result between -1 and 0 litres is registered; only from a whole litre backwards on is it refused.
    if (vb::CDbl(lb(Litres)) <= -1)
        return false;
    platform::FlexGrid& flexG = *m_ui->flexG;
    const QDate day = m_ui->DTP->Value();
    const EntryGrid::Line line{vb::Format(vb::Date::fromQDate(day), u"DD/mm"),
                               lb(PumpNumber),
                               lb(PreviousReading),
                               m_ui->Text1->text(),
                               lb(Litres),
                               lb(UnitPrice),
                               lineTotal(lb(Litres), lb(UnitPrice)),
                               lb(PumpTank),
                               QStringLiteral("0")};
    EntryGrid::add(flexG, line);
    m_mirror.add(line, day, m_services.clock.now());
    flexG.setRow(flexG.Rows() - 1);
    mostra_total();
    platform::FlexGrid& flex = *m_ui->flex;
    if (flex.Row() < flex.Rows() - 1)
        flex.setRow(flex.Row() + 1);
    return true;
}

void frmprincipal::mostra_total()
{
    m_ui->Label5->setText(vb::Format(EntryGrid::total(*m_ui->flexG), u"##,#0.00"));
}

void frmprincipal::flexGKey(QKeyEvent& event)
{
    platform::FlexGrid& flexG = *m_ui->flexG;
    if (event.key() != Qt::Key_Delete || flexG.Rows() < 2 || m_fechando)
        return;
    event.accept();
    if (flexG.Rows() == 2) {
        esvazia_flexG();
    } else {
        m_mirror.remove(flexG.Row());
        flexG.RemoveItem(flexG.Row());
    }
    mostra_total();
}

void frmprincipal::esvazia_flexG()
{
    Module1::formata_flexG(*m_ui->flexG);
    m_mirror.clear();
}
