#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

// Choosing a printer, the default printer and the way of a document to its queue.
namespace platform {

class PrintDocument;

/// A print step failed: no such printer, a queue that refuses, no print service, a file that cannot be written.
class PrintError : public std::exception
{
public:
    /// `text` is told to the operator as it is.
    explicit PrintError(const QString& text);
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

private:
    QByteArray m_what; ///< UTF-8.
};

/// The user cancelled the print dialog.
class UserCancelled : public std::exception
{
public:
    [[nodiscard]] const char* what() const noexcept override;
};

enum class Duplex { QueueDefault, OneSided, LongEdge, ShortEdge };

/// What the operator picked in the print dialog.
struct PrinterChoice
{
    QString deviceName; ///< Name of the queue; for a file, how the dialog called it.
    QString fileName;   ///< Not empty: the document becomes this PDF file instead of a job.
    int copies = 1;
    Duplex duplex = Duplex::QueueDefault;
};

/// Asks the operator for a printer.
class PrinterChooser
{
public:
    virtual ~PrinterChooser() = default;
    /// `title` names the document. Raises UserCancelled on Cancel.
    virtual PrinterChoice choose(const QString& title) = 0;
};

/// The default printer of the user who runs the program.
class DefaultPrinter
{
public:
    virtual ~DefaultPrinter() = default;
    /// Raises PrintError where there is none or the print service does not answer.
    [[nodiscard]] virtual QString name() = 0;
    /// Leaves everything as it is when `name` is the default already. Raises PrintError for an unknown name, and when
    /// the choice cannot be stored.
    virtual void setName(const QString& name) = 0;
};

/// Hands finished documents to print queues.
class Spooler
{
public:
    virtual ~Spooler() = default;
    /// Returns when the queue has taken the whole document. Raises PrintError otherwise; no half job stays behind.
    virtual void print(const PrintDocument& document, const PrinterChoice& choice) = 0;
};

/// What a report needs to get onto paper.
struct Printers
{
    PrinterChooser& chooser;
    DefaultPrinter& defaultPrinter;
    Spooler& spooler;
};

} // namespace platform
