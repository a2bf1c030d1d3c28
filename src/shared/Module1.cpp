#include "shared/Module1.h"

#include "platform/ui/FlexGrid.h"
#include "platform/ui/FocusWatch.h"
#include "platform/ui/Seams.h"
#include "platform/ui/Twips.h"
#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QPointer>
#include <QScreen>
#include <QThread>

namespace Module1 {

namespace {

constexpr int SeparatorLength = 112;
constexpr int SlideTwips = 150;
constexpr unsigned long SlideStepMilliseconds = 4; ///< So that the eye can follow.
constexpr qint64 LongestSlideMilliseconds = 1500;

} // namespace

char16_t filtra_numero(QLineEdit& box, char16_t key)
{
    constexpr char16_t Backspace = 8;
    constexpr char16_t Enter = 13;
    if (key == Backspace || key == Enter || key == u',')
        return key;
    if (key == u'.')
        return u',';
    if (key == u'-') {
        const QString text = box.text();
        if (!text.isEmpty() && !text.contains(u'-')) {
            const int cursor = box.cursorPosition();
            box.setText(u'-' + text);
            box.setCursorPosition(cursor + 1);
        }
        return 0;
    }
    return key >= u'0' && key <= u'9' ? key : u'\0';
}

void seleciona_tudo(QLineEdit& box)
{
    box.setSelection(0, static_cast<int>(box.text().length()));
}

vb::Currency soma_totais(const platform::FlexGrid& grid, int column)
{
    vb::Currency sum;
    for (int row = 1; row < grid.Rows(); ++row) {
        const QString text = grid.TextMatrix(row, column);
        // Through a double an amount of more than 15 digits would lose its cents.
        sum += vb::IsNumeric(text) ? vb::CCur(text) : vb::CCur(vb::leadingNumber(text));
    }
    return sum;
}

void marca_linha(platform::FlexGrid& grid)
{
    const int row = grid.Row();
    if (row < 1)
        return;
    grid.setRowBackColor(row, grid.CellBackColor(row, grid.Col()) == 0 ? MarkColour : 0);
}

void pinta_celula(platform::FlexGrid& grid, int column, quint32 bgr)
{
    grid.setCellBackColor(grid.Rows() - 1, column, bgr);
}

void fecha_deslizando(QWidget& window, platform::EventPump& events)
{
    const QPointer<QWidget> alive = &window;
    const int step = qMax(1, SlideTwips * window.logicalDpiX() / platform::TwipsPerInch);
    const int edge = window.screen()->geometry().right();
    QElapsedTimer sliding;
    sliding.start();
    // A window manager may hold the window where it is, or put it back.
    while (alive && window.isVisible() && window.x() <= edge && sliding.elapsed() < LongestSlideMilliseconds) {
        const QPoint before = window.pos();
        window.move(before + QPoint(step, step));
        QThread::msleep(SlideStepMilliseconds);
        events.DoEvents();
        if (alive && window.pos() == before)
            break;
    }
    if (alive)
        window.close();
}

QString linha_traco()
{
    return QString(SeparatorLength, u'-');
}

QString linha_asterisco()
{
    return QString(SeparatorLength, u'*');
}

QString numero_planilha(const QDateTime& moment)
{
    const vb::Date date = vb::Date::fromQDateTime(moment);
    return QStringLiteral("Nº ") + vb::Format(date, u"ddmmyy") + u'-' + vb::Format(date, u"hhmmnn");
}

} // namespace Module1

namespace shared {

void seleciona_ao_focar(QLineEdit& box)
{
    using platform::FocusWatch;
    QObject::connect(new FocusWatch(&box), &FocusWatch::GotFocus, &box, [&box](Qt::FocusReason reason) {
        // The click that brings the focus moves the caret after this: select behind it.
        if (reason == Qt::MouseFocusReason)
            QMetaObject::invokeMethod(
                &box, [&box] { Module1::seleciona_tudo(box); }, Qt::QueuedConnection);
        else
            Module1::seleciona_tudo(box);
    });
}

} // namespace shared
