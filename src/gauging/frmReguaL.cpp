#include "gauging/frmReguaL.h"
#include "ui_frmReguaL.h"

#include "data/Dialect.h"
#include "gauging/GaugeTable.h"
#include "gauging/frmEditTabTanque.h"
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "platform/ui/ComboBox.h"
#include "platform/ui/EnterMovesOn.h"
#include "platform/ui/KeyFilter.h"
#include "platform/ui/Keys.h"
#include "platform/ui/Seams.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/ListFill.h"
#include "shared/Module1.h"
#include "shared/Services.h"

#include <QApplication>
#include <QKeyEvent>

namespace {

/// From this many characters on, typed litres count instead of the selected line.
constexpr int ManualLength = 2;

/// Digits, the decimal comma (a point becomes one), Backspace and Enter.
int figureKey(int code)
{
    constexpr int backspace = 8;
    constexpr int enter = 13;
    if (code == '.')
        return ',';
    return (code >= '0' && code <= '9') || code == ',' || code == backspace || code == enter ? code : 0;
}

} // namespace

frmReguaL::frmReguaL(const Services& services, QWidget* parent)
    : StationWindow(services, parent)
    , m_ui(std::make_unique<Ui::frmReguaL>())
{
    m_ui->setupUi(this);
    for (QLineEdit* const box : {m_ui->tx_0, m_ui->tx_1}) {
        shared::seleciona_ao_focar(*box);
        new platform::KeyFilter(box, figureKey); // Owned by the box.
    }
    auto* const enterMovesOn = new platform::EnterMovesOn(this);
    enterMovesOn->watch(m_ui->tx_0);
    enterMovesOn->watch(m_ui->tx_1);
    for (QWidget* const control :
         {static_cast<QWidget*>(m_ui->DTP), static_cast<QWidget*>(m_ui->Combo1), static_cast<QWidget*>(m_ui->List1)})
        control->installEventFilter(this);

    m_ui->DTP->setValue(m_services.clock.today());
    m_ui->Combo1->addItems(GaugeTable::tankNames());
    m_changesSeen = GaugeTable::changesOf(m_ui->Combo1->currentText());

    // The same tank chosen again reads its table again.
    connect(m_ui->Combo1, &platform::ComboBox::Click, this, [this] { handle([this] { escolhe_tanque(); }); });
    connect(m_ui->DTP, &platform::DatePicker::Change, this, [this] { handle([this] { carrega_historico(); }); });
    connect(m_ui->Command1, &QPushButton::clicked, this, [this] { handle([this] { confirma(); }); });
    connect(m_ui->editTab, &QAction::triggered, this, [this] { handle([this] { abre_editor(); }); });
    laidOut();
}

frmReguaL::~frmReguaL() = default;

void frmReguaL::load()
{
    handle([this] { escolhe_tanque(); });
    carrega_historico(); // a second time: it comes even where the tank has no table
}

/// Coming to the window puts the focus on the list. Coming back from a message box, or from another program, leaves it
/// where it was: what has been typed stays.
bool frmReguaL::event(QEvent* event)
{
    if (event->type() == QEvent::WindowDeactivate) {
        const QWidget* const next = QApplication::activeWindow();
        m_comesFromElsewhere = next != nullptr && next != this && !next->isModal();
    } else if (event->type() == QEvent::WindowActivate && std::exchange(m_comesFromElsewhere, false)) {
        m_ui->List1->setEnabled(true);
        m_ui->List1->setFocus();
    }
    if (event->type() == QEvent::WindowActivate)
        atualiza_tabela();
    return StationWindow::event(event);
}

/// Reads the shown table again where the editor has changed it. The chosen line and what is typed stay.
void frmReguaL::atualiza_tabela()
{
    if (isClosed() || m_changesSeen == GaugeTable::changesOf(m_ui->Combo1->currentText()))
        return;
    handle([this] {
        const int line = m_ui->List1->selectedItems().isEmpty() ? -1 : m_ui->List1->currentRow();
        escolhe_tanque();
        if (line >= 0)
            m_ui->List1->setCurrentRow(line);
    });
}

bool frmReguaL::eventFilter(QObject* watched, QEvent* event)
{
    const bool isOurs = watched == m_ui->DTP || watched == m_ui->Combo1 || watched == m_ui->List1;
    if (isOurs && event->type() == QEvent::FocusIn) {
        m_ui->List1->setEnabled(true);
        if (watched == m_ui->List1) {
            m_ui->tx_0->setText(QStringLiteral("0"));
            m_ui->tx_1->setText(QStringLiteral("0"));
        }
    } else if (isOurs && event->type() == QEvent::KeyPress && platform::isEnter(*static_cast<QKeyEvent*>(event))) {
        if (watched == m_ui->DTP)
            m_ui->Combo1->setFocus();
        else if (watched == m_ui->Combo1)
            m_ui->List1->setFocus();
        else
            m_ui->Command1->setFocus();
        return true;
    }
    return StationWindow::eventFilter(watched, event);
}

QString frmReguaL::dateLiteral() const
{
    return m_services.dialect.dateLiteral(m_ui->DTP->Value());
}

void frmReguaL::escolhe_tanque()
{
    carrega_tabela(QStringLiteral("Select * from ") + m_ui->Combo1->currentText() + QStringLiteral(" order by cma ;"));
}

void frmReguaL::carrega_tabela(const QString& statement)
{
    // Nothing of the tank before may be confirmed under this one's name, even when its table cannot be read.
    m_ui->Command1->setEnabled(false);
    ado::Recordset table;
    {
        shared::Fill fill(*m_ui->List1, m_services.events);
        m_ui->List1->clear();
        m_changesSeen = GaugeTable::changesOf(m_ui->Combo1->currentText());
        table.Open(statement, m_services.DataConnection);
        const int centimetres = table.fieldIndex(u"cmA");
        const int litres = table.fieldIndex(u"ltsA");
        for (; !table.Eof(); table.MoveNext()) {
            m_ui->List1->addItem(GaugeTable::lineText(table.Fields(centimetres), table.Fields(litres)));
            if (!fill.goesOn())
                return;
        }
    }
    m_ui->Command1->setEnabled(table.RecordCount() > 0);
    if (table.RecordCount() < 1)
        m_services.messages.MsgBox(GaugeTable::noTableText());
    carrega_historico();
}

void frmReguaL::carrega_historico()
{
    constexpr int widths[] = {1000, 600, 1100, 1100, 0};
    shared::Fill fill(*m_ui->flex, m_services.events);
    m_ui->flex->setRows(1);
    m_ui->flex->setCols(4);
    // The closing bar adds the fifth column, which is hidden and holds the key of the row.
    m_ui->flex->FormatString(QStringLiteral("DATA|CMT|SALDO|TANQUE|"));
    for (int column = 0; column < static_cast<int>(std::size(widths)); ++column)
        m_ui->flex->setColWidth(column, widths[column]);

    ado::Recordset readings;
    readings.Open(QStringLiteral("Select * from tabafer where dataf = ") + dateLiteral() +
                      QStringLiteral(" order by dataf;"),
                  m_services.DataConnection);
    for (; !readings.Eof(); readings.MoveNext()) {
        QStringList cells;
        for (const QStringView name : {u"dataf", u"cmt", u"saldo", u"tanque", u"cdI"})
            cells << readings.Fields(name).textOrEmpty();
        m_ui->flex->AddItem(cells);
        if (!fill.goesOn())
            return;
    }
}

bool frmReguaL::substitui(const QString& tank)
{
    const QString question = QStringLiteral("Já existe na base de dados uma leitura para ") + tank +
                             QStringLiteral(" nesta mesma data de ") + vb::shortDate(m_ui->DTP->Value()) +
                             QStringLiteral(" deseja substituir o registro existe?");
    if (m_services.messages.MsgBox(question, platform::vbOKCancel + platform::vbExclamation) !=
        platform::MsgBoxResult::Ok)
        return false;
    m_services.DataConnection.Execute(QStringLiteral("Delete from tabafer where tanque = '") + tank +
                                      QStringLiteral("' and dataf = ") + dateLiteral());
    return true;
}

void frmReguaL::confirma()
{
    if (m_ui->tx_1->text().size() >= ManualLength)
        m_ui->List1->setEnabled(false);
    for (QLineEdit* const box : {m_ui->tx_0, m_ui->tx_1}) {
        if (!vb::IsNumeric(box->text()))
            box->setText(QStringLiteral("0"));
    }
    const QString tank = m_ui->Combo1->currentText();
    ado::Recordset readings;
    readings.Open(QStringLiteral("Select * from tabafer where tanque = '") + tank + QStringLiteral("' and dataf = ") +
                      dateLiteral(),
                  m_services.DataConnection);
    if (readings.RecordCount() > 0 && !substitui(tank))
        return;
    const GaugeTable::Reading reading = m_ui->List1->isEnabled()
                                            ? GaugeTable::readingOfLine(m_ui->List1->selectedLine())
                                            : GaugeTable::readingOfTexts(m_ui->tx_0->text(), m_ui->tx_1->text());
    readings.AddNew();
    readings.SetField(u"dataf", vb::Date::fromQDate(m_ui->DTP->Value()));
    readings.SetField(u"cmt", reading.centimetres);
    readings.SetField(u"saldo", reading.litres);
    readings.SetField(u"tanque", tank);
    readings.Update();
    carrega_historico();
}

/// One editor at a time; it stays open when this window closes.
void frmReguaL::abre_editor()
{
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (qobject_cast<frmEditTabTanque*>(window) && window->isVisible()) {
            window->raise();
            window->activateWindow();
            return;
        }
    }
    auto* const editor = new frmEditTabTanque(m_services, parentWidget());
    editor->deleteWhenClosed();
    connect(editor, &StationWindow::closed, this, &frmReguaL::atualiza_tabela);
    editor->show();
}
