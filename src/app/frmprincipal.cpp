#include "app/frmprincipal.h"
#include "ui_frmprincipal.h"

#include "app/HistoryRows.h"
#include "app/PumpGrid.h"
#include "data/StationDatabase.h"
#include "platform/os/UserFolders.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/FocusWatch.h"
#include "platform/ui/KeyFilter.h"
#include "platform/ui/Keys.h"
#include "platform/ui/WaitCursor.h"
#include "platform/ui/WindowPlacement.h"
#include "shared/Module1.h"
#include "shared/Services.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMenu>
#include <QScreen>
#include <QSignalBlocker>

#include <chrono>

namespace {

constexpr auto BlinkInterval = std::chrono::milliseconds(500);

} // namespace

frmprincipal::frmprincipal(const Services& services, data::StationDatabase& database, const SupervisorGate& gate,
                           const Emitente& emitente, const platform::Printers& printers)
    : m_ui(std::make_unique<Ui::frmprincipal>())
    , m_services(services)
    , m_database(database)
    , m_gate(gate)
    , m_emitente(emitente)
    , m_printers(printers)
    , m_fer(new QMenu(this))
    , m_mirror({database.folder(), database.name()}, platform::userStateFolder())
{
    m_ui->setupUi(this);
    m_text1Focus = new platform::FocusWatch(m_ui->Text1);
    m_lb = {m_ui->lb_0, m_ui->lb_1, m_ui->lb_2, m_ui->lb_3, m_ui->lb_4, m_ui->lb_5, m_ui->lb_6};
    m_timer1.setObjectName(QStringLiteral("Timer1"));
    m_timer1.setInterval(BlinkInterval);
    connect(&m_timer1, &QTimer::timeout, this, &frmprincipal::pisca);
    m_ui->flex->setStretchColumn(PumpGrid::Description);
    m_ui->flex2->setStretchColumn(HistoryRows::Description);
    m_ui->FlexD->setStretchColumn(1);
    m_ui->flexG->setStretchColumn(EntryGrid::Calibration); // The tank keeps its width on a small screen.

    new platform::KeyFilter(m_ui->Text1, [this](int code) { return text1Key(code); });
    new platform::KeyFilter(m_ui->Text2, [](int code) { return code; }); // For the keypad's decimal key.
    shared::seleciona_ao_focar(*m_ui->Text1);
    shared::seleciona_ao_focar(*m_ui->Text2);
    for (platform::DatePicker* picker : {m_ui->DTP, m_ui->dtpI_0, m_ui->dtpI_1})
        picker->setValue(m_services.clock.today());

    connectControls();
    connectMenus();
    lb_Change();
    // Descriptions of 30 letters show whole in every grid, where the screen has the room. The frame takes its part.
    constexpr QSize roomy(1250, 800);
    constexpr QSize frame(8, 32);
    resize(roomy.boundedTo(screen()->availableGeometry().size() - frame).expandedTo(size()));
    new platform::WindowPlacement(this);
    qApp->installEventFilter(this);
}

frmprincipal::~frmprincipal()
{
    qApp->removeEventFilter(this);
    m_text1Focus->disconnect(this); // The box loses the focus when it goes, and this window is gone by then.
}

void frmprincipal::connectControls()
{
    using platform::DatePicker;
    using platform::FlexGrid;
    connect(m_ui->flex, &FlexGrid::Click, this, [this] { handle([this] { flexClick(); }); });
    connect(m_ui->flex, &FlexGrid::KeyDown, this, [this](QKeyEvent* event) { handle([&] { flexKey(*event); }); });
    connect(m_ui->flex, &FlexGrid::MouseUp, this, [this](Qt::MouseButton button, QPoint position) {
        if (button == Qt::RightButton)
            popupFer(position);
    });
    connect(m_ui->Text1, &QLineEdit::textChanged, this, [this] { handle([this] { text1Change(); }); });
    connect(m_text1Focus, &platform::FocusWatch::LostFocus, this, &frmprincipal::text1LostFocus);
    connect(m_ui->flexG, &FlexGrid::KeyDown, this, [this](QKeyEvent* event) { handle([&] { flexGKey(*event); }); });
    connect(m_ui->btf, &QPushButton::clicked, this, [this] { handle([this] { fecha_com_senha(); }); });

    connect(m_ui->DTP, &DatePicker::Change, this, [this] {
        if (!m_loading)
            handle([this] { lista_do_dia(m_ui->DTP->Value()); });
    });
    connect(m_ui->DTP, &DatePicker::Change, this, [this] { m_mirror.setDay(m_ui->DTP->Value()); });
    for (DatePicker* picker : {m_ui->dtpI_0, m_ui->dtpI_1}) {
        connect(picker, &DatePicker::Change, this, [this] {
            if (!m_loading)
                handle([this] { exec_t(); });
        });
    }
    for (QRadioButton* option : {m_ui->opt_0, m_ui->opt_1})
        connect(option, &QRadioButton::clicked, this, [this] { handle([this] { exec_t(); }); });
    connect(m_ui->flex2, &FlexGrid::Click, this, [this] { handle([this] { flex2Click(); }); });
    connect(m_ui->flex2, &FlexGrid::KeyDown, this, [this](QKeyEvent* event) { handle([&] { flex2Key(*event); }); });
    connect(m_ui->Buttom_Mega6, &QPushButton::clicked, this, [this] { handle([this] { mostra_excluidos(); }); });

    connect(m_ui->FlexD, &FlexGrid::Click, this, [this] { Module1::marca_linha(*m_ui->FlexD); });
    connect(m_ui->FlexD, &FlexGrid::KeyDown, this, [this](QKeyEvent* event) {
        if (platform::isEnter(*event)) {
            event->accept();
            m_ui->Text2->setFocus();
        } else if (event->key() == Qt::Key_Space) {
            event->accept();
            Module1::marca_linha(*m_ui->FlexD);
        }
    });
    connect(m_ui->FlexD->selectionModel(), &QItemSelectionModel::currentRowChanged, this, &frmprincipal::mostra_item);
    connect(m_ui->Text2, &QLineEdit::returnPressed, this, [this] { handle([this] { baixa_item(); }); });
    connect(m_ui->Buttom_Mega2, &QPushButton::clicked, this, [this] { handle([this] { carrega_flexD(); }); });
    connect(m_ui->Buttom_Mega4, &QPushButton::clicked, this, &QWidget::close);
}

void frmprincipal::carrega()
{
    {
        // The dates that the load itself sets must not list anything yet.
        m_loading = true;
        carrega_planilha();
        HistoryRows::formataflex2(*m_ui->flex2);
        m_ui->dtpI_0->setValue(m_services.clock.today());
        m_ui->dtpI_1->setValue(m_services.clock.today());
        m_loading = false;
    }
    exec_t();
    carrega_flexD();
    esvazia_flexG();
    m_database.convertNumberColumns();
    m_database.readConfig();
    m_ui->flex->setFocus();
}

void frmprincipal::handle(const std::function<void()>& operation)
{
    const platform::WaitCursor wait;
    platform::tellAndStay(m_services.messages, operation);
}

void frmprincipal::carrega_planilha()
{
    const platform::WaitCursor wait;
    if (const std::optional<QDate> lastClosing = PumpGrid::carrega_planilha(*m_ui->flex, m_services))
        m_ui->DTP->setValue(*lastClosing);
}

bool frmprincipal::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == qApp && event->type() == QEvent::Quit)
        m_sessionEnds = true; // At log-out; the windows are closed next.
    if (event->type() == QEvent::KeyPress && watched->isWidgetType()) {
        // An open menu of the menu bar keeps its keys.
        const auto* const widget = static_cast<QWidget*>(watched);
        if (widget->window() == this && !qobject_cast<const QMenuBar*>(widget) &&
            previewKey(*static_cast<QKeyEvent*>(event)))
            return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

bool frmprincipal::previewKey(const QKeyEvent& event)
{
    if (event.modifiers() & (Qt::AltModifier | Qt::ControlModifier | Qt::MetaModifier))
        return false;
    switch (event.key()) {
    case Qt::Key_F4:
        // The key closes without the password that the button asks for.
        handle([this] { fecha_l(); });
        return true;
    case Qt::Key_Escape:
        if (m_ui->Frame4->isVisible())
            esconde_excluidos();
        else
            close();
        return true;
    default:
        return false;
    }
}

void frmprincipal::closeEvent(QCloseEvent* event)
{
    if (m_fechando) {
        // The lines of a sheet that is being closed are written first.
        m_closeAfterwards = true;
        event->ignore();
        return;
    }
    event->accept();
    if (m_closed)
        return;
    m_closed = true;
    if (!m_sessionEnds)
        m_mirror.discard();
    m_timer1.stop();
    if (m_regua)
        m_regua->close();
    Q_EMIT encerrado();
}
