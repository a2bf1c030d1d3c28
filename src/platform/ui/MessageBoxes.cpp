#include "platform/ui/PlainText.h"
#include "platform/ui/RealSeams.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace platform {

namespace {

constexpr int buttonBits = 0x0F;
constexpr int iconBits = 0xF0;

/// A sum of several icon codes (80 = 16 + 64) shows the warning sign.
QMessageBox::Icon iconOf(int style)
{
    switch (style & iconBits) {
    case 0:
        return QMessageBox::NoIcon;
    case vbCritical:
        return QMessageBox::Critical;
    case vbQuestion:
        return QMessageBox::Question;
    case vbInformation:
        return QMessageBox::Information;
    default:
        return QMessageBox::Warning;
    }
}

/// S and N answer at once. The box itself would press its button a tenth of a second later, and the keys that follow
/// would still be the box's.
class AnswersByLetter : public QObject
{
public:
    explicit AnswersByLetter(QMessageBox& box)
        : QObject(&box)
        , m_box(box)
    {
        box.installEventFilter(this);
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched != &m_box || event->type() != QEvent::KeyPress)
            return false;
        const auto& key = *static_cast<const QKeyEvent*>(event);
        if (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
            return false;
        for (QAbstractButton* const button : m_box.buttons()) {
            if (!button->shortcut().isEmpty() && button->shortcut()[0].key() == key.key()) {
                button->click();
                return true;
            }
        }
        return false;
    }

private:
    QMessageBox& m_box;
};

} // namespace

MsgBoxResult MessageBoxes::MsgBox(const QString& prompt, int style, const QString& title)
{
    QWidget* const owner =
        QApplication::activeModalWidget() ? QApplication::activeModalWidget() : QApplication::activeWindow();
    const QPointer<QMessageBox> box = new QMessageBox(owner);
    box->setObjectName(QStringLiteral("MsgBox"));
    box->setTextFormat(Qt::PlainText);
    constexpr qsizetype LongestPrompt = 4000;
    box->setText(limited(prompt, LongestPrompt).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    box->setWindowTitle(title.isEmpty() ? QStringLiteral("Planilha de Bombas") : title);
    box->setIcon(iconOf(style));

    QPushButton* first = nullptr;
    QPushButton* second = nullptr;
    MsgBoxResult firstResult = MsgBoxResult::Ok;
    MsgBoxResult secondResult = MsgBoxResult::Ok;
    switch (style & buttonBits) {
    case vbYesNo:
        first = box->addButton(QStringLiteral("&Sim"), QMessageBox::YesRole);
        second = box->addButton(QStringLiteral("&Não"), QMessageBox::NoRole);
        firstResult = MsgBoxResult::Yes;
        secondResult = MsgBoxResult::No;
        break;
    case vbOKCancel:
        first = box->addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
        second = box->addButton(QStringLiteral("Cancelar"), QMessageBox::RejectRole);
        secondResult = MsgBoxResult::Cancel;
        break;
    default:
        first = box->addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
        break;
    }
    QPushButton* none = nullptr;
    if ((style & vbYesNoLater) == vbYesNoLater) {
        none = box->addButton(QString(), QMessageBox::RejectRole); // What Escape presses; nobody sees it.
        none->hide();
    }
    box->setEscapeButton(none ? none : second ? second : first);
    QPushButton* const preferred = second && (style & vbDefaultButton2) ? second : first;
    box->setDefaultButton(preferred);
    preferred->setFocus();
    new AnswersByLetter(*box);

    const QPointer<QWidget> window = owner;
    const bool waiting = QGuiApplication::overrideCursor() != nullptr;
    if (waiting)
        QGuiApplication::setOverrideCursor(Qt::ArrowCursor); // now the program waits for the operator
    box->exec();
    if (waiting)
        QGuiApplication::restoreOverrideCursor();
    if (window)
        window->activateWindow(); // where no window manager does it, keys would go nowhere
    const MsgBoxResult closed = none ? MsgBoxResult::Cancel : secondResult;
    // The window under the box may be gone by now and the box with it; then nobody has agreed to anything.
    if (!box)
        return closed;
    const QAbstractButton* const clicked = box->clickedButton();
    const MsgBoxResult result = clicked == first ? firstResult : clicked == second ? secondResult : closed;
    delete box;
    return result;
}

} // namespace platform
