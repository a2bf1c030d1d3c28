#include "platform/print/PrintDocument.h"
#include "platform/print/SystemPrinters.h"

#include <cups/cups.h>
#include <cups/pwg.h>

#include <QScopeGuard>

#include <memory>

namespace platform {

namespace {

/// Answers a demand for a password with none: a print job must never wait on a terminal that nobody sees.
const char* noPassword(const char*, http_t*, const char*, const char*, void*)
{
    return nullptr;
}

/// `what` and the last answer of the print service.
PrintError failure(const QString& what)
{
    const QString answer = QString::fromUtf8(cupsLastErrorString());
    return PrintError(answer.isEmpty() ? what + u'.' : what + QStringLiteral(": ") + answer);
}

/// The printers that the user sees, with the user's own default and options.
class Destinations
{
public:
    Destinations()
        : m_count(cupsGetDests2(CUPS_HTTP_DEFAULT, &m_list))
    {}
    ~Destinations() { cupsFreeDests(m_count, m_list); }
    Q_DISABLE_COPY_MOVE(Destinations)

    [[nodiscard]] const cups_dest_t* find(const char* name, const char* instance) const
    {
        return cupsGetDest(name, instance, m_count, m_list);
    }
    void setDefault(const char* name, const char* instance)
    {
        cupsSetDefaultDest(name, instance, m_count, m_list);
        if (cupsSetDests2(CUPS_HTTP_DEFAULT, m_count, m_list) < 0)
            throw failure(QStringLiteral("Não foi possível definir a impressora padrão"));
    }

private:
    cups_dest_t* m_list = nullptr;
    int m_count;
};

struct FreeDestination
{
    void operator()(cups_dest_t* destination) const { cupsFreeDests(1, destination); }
};

class Options
{
public:
    Options() = default;
    ~Options() { cupsFreeOptions(m_count, m_list); }
    Q_DISABLE_COPY_MOVE(Options)

    void add(const char* name, const QByteArray& value)
    {
        m_count = cupsAddOption(name, value.constData(), m_count, &m_list);
    }
    [[nodiscard]] int count() const { return m_count; }
    [[nodiscard]] cups_option_t* list() const { return m_list; }

private:
    cups_option_t* m_list = nullptr;
    int m_count = 0;
};

void addChoice(Options& options, const PrintDocument& document, const PrinterChoice& choice)
{
    const QByteArray paper = document.pageSize().key().toUtf8();
    const pwg_media_t* const media = pwgMediaForPPD(paper.constData());
    options.add(CUPS_MEDIA, media ? QByteArray(media->pwg) : paper);
    options.add(CUPS_COPIES, QByteArray::number(choice.copies));
    switch (choice.duplex) {
    case Duplex::QueueDefault:
        break;
    case Duplex::OneSided:
        options.add(CUPS_SIDES, CUPS_SIDES_ONE_SIDED);
        break;
    case Duplex::LongEdge:
        options.add(CUPS_SIDES, CUPS_SIDES_TWO_SIDED_PORTRAIT);
        break;
    case Duplex::ShortEdge:
        options.add(CUPS_SIDES, CUPS_SIDES_TWO_SIDED_LANDSCAPE);
        break;
    }
}

/// The two parts of "name/instance".
std::pair<QByteArray, QByteArray> splitName(const QString& name)
{
    const QByteArray bytes = name.toUtf8();
    const qsizetype slash = bytes.indexOf('/');
    return slash < 0 ? std::pair{bytes, QByteArray()} : std::pair{bytes.left(slash), bytes.mid(slash + 1)};
}

} // namespace

QString SystemDefaultPrinter::name()
{
    cupsSetPasswordCB2(noPassword, nullptr);
    const std::unique_ptr<cups_dest_t, FreeDestination> destination(
        cupsGetNamedDest(CUPS_HTTP_DEFAULT, nullptr, nullptr));
    if (!destination)
        throw failure(QStringLiteral("Não há impressora padrão"));
    QString name = QString::fromUtf8(destination->name);
    if (destination->instance)
        name += u'/' + QString::fromUtf8(destination->instance);
    return name;
}

void SystemDefaultPrinter::setName(const QString& name)
{
    cupsSetPasswordCB2(noPassword, nullptr);
    const auto [queue, instance] = splitName(name);
    const char* const instanceName = instance.isEmpty() ? nullptr : instance.constData();
    Destinations destinations;
    const cups_dest_t* const destination =
        queue.isEmpty() ? nullptr : destinations.find(queue.constData(), instanceName);
    if (!destination)
        throw PrintError(QStringLiteral("A impressora \"%1\" não existe.").arg(name));
    // Who follows the server's default must keep following it: storing the same name would pin it.
    if (!destination->is_default)
        destinations.setDefault(queue.constData(), instanceName);
}

void SystemSpooler::print(const PrintDocument& document, const PrinterChoice& choice)
{
    const QByteArray pdf = document.pdf();
    const QByteArray title = document.title().toUtf8();
    const QByteArray queue = splitName(choice.deviceName).first;

    cupsSetPasswordCB2(noPassword, nullptr);
    Options options;
    addChoice(options, document, choice);
    const int job =
        cupsCreateJob(CUPS_HTTP_DEFAULT, queue.constData(), title.constData(), options.count(), options.list());
    if (job == 0)
        throw failure(QStringLiteral("A impressora \"%1\" não aceitou a impressão").arg(choice.deviceName));
    auto cancelHalfJob =
        qScopeGuard([&] { cupsCancelJob2(CUPS_HTTP_DEFAULT, queue.constData(), job, 1 /* forget it */); });

    const bool taken = cupsStartDocument(CUPS_HTTP_DEFAULT, queue.constData(), job, title.constData(), CUPS_FORMAT_PDF,
                                         1) == HTTP_STATUS_CONTINUE &&
                       cupsWriteRequestData(CUPS_HTTP_DEFAULT, pdf.constData(), static_cast<size_t>(pdf.size())) ==
                           HTTP_STATUS_CONTINUE &&
                       cupsFinishDocument(CUPS_HTTP_DEFAULT, queue.constData()) <= IPP_STATUS_OK_EVENTS_COMPLETE;
    if (!taken)
        throw failure(QStringLiteral("A impressora \"%1\" não recebeu o documento").arg(choice.deviceName));
    cancelHalfJob.dismiss();
}

} // namespace platform
