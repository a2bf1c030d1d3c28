#pragma once

#include "platform/print/PrintDocument.h"
#include "platform/print/Printers.h"

#include <QStringList>

#include <functional>

namespace support {

/// A print dialog that answers at once: with a PDF file, with a queue, or with Cancel.
class TestChooser : public platform::PrinterChooser
{
public:
    platform::PrinterChoice answer;
    bool cancel = false;
    std::function<void()> whileOpen = [] {}; ///< What happens while the dialog is on the screen.
    QStringList asked;                       ///< Titles, oldest first.

    platform::PrinterChoice choose(const QString& title) override
    {
        asked.append(title);
        whileOpen();
        if (cancel)
            throw platform::UserCancelled();
        return answer;
    }
};

/// A default printer that is a variable; a name that is not among the printers is refused.
class TestDefaultPrinter : public platform::DefaultPrinter
{
public:
    QStringList printers;
    QString current; ///< Empty: there is none.

    QString name() override
    {
        if (current.isEmpty())
            throw platform::PrintError(QStringLiteral("no default"));
        return current;
    }
    void setName(const QString& name) override
    {
        if (!printers.contains(name))
            throw platform::PrintError(QStringLiteral("unknown"));
        current = name;
    }
};

/// A queue that keeps what it gets, or refuses it.
class TestSpooler : public platform::Spooler
{
public:
    bool refuse = false;
    QList<QByteArray> documents; ///< As PDF.
    QStringList queues;

    void print(const platform::PrintDocument& document, const platform::PrinterChoice& choice) override
    {
        if (refuse)
            throw platform::PrintError(QStringLiteral("A fila recusou."));
        documents.append(document.pdf());
        queues.append(choice.deviceName);
    }
};

} // namespace support
