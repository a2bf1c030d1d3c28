#pragma once

#include <QDate>
#include <QDateTime>
#include <QString>

namespace platform {

/// Style of a message box: buttons + icon + default button.
enum MsgBoxStyle : int {
    vbOKOnly = 0,
    vbOKCancel = 1,
    vbYesNo = 4,
    vbCritical = 16,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64,
    vbDefaultButton2 = 256,
    vbYesNoLater = 4 + 0x10000 ///< Yes and No; a box that is closed otherwise gives Cancel.
};

enum class MsgBoxResult { Ok = 1, Cancel = 2, Yes = 6, No = 7 };

/// Asks or tells the operator. The real one is a modal box with the buttons OK, Cancelar, Sim, Não.
class Messages
{
public:
    virtual ~Messages() = default;
    /// `style` is the sum of MsgBoxStyle codes. Without a title the program's name is the title.
    virtual MsgBoxResult MsgBox(const QString& prompt, int style = vbOKOnly, const QString& title = {}) = 0;
};

/// Today and now, in whole seconds: a second that has begun is not over, so nothing is ever numbered or stamped ahead.
class Clock
{
public:
    virtual ~Clock() = default;
    [[nodiscard]] QDateTime now() const
    {
        const QDateTime moment = read();
        return moment.addMSecs(-moment.time().msec());
    }
    [[nodiscard]] QDate today() const { return now().date(); }

private:
    [[nodiscard]] virtual QDateTime read() const = 0; ///< With its milliseconds.
};

/// Lets pending events of the user interface run. Loops call it after each row; the real one runs events at most every
/// few milliseconds so that it costs nothing in long loops.
class EventPump
{
public:
    virtual ~EventPump() = default;
    virtual void DoEvents() = 0;
};

} // namespace platform
