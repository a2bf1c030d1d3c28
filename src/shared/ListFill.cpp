#include "shared/ListFill.h"

#include "platform/ado/Recordset.h"
#include "platform/ui/FlexGrid.h"
#include "platform/ui/Seams.h"
#include "shared/ListEntry.h"
#include "shared/Services.h"

#include <QComboBox>
#include <QListWidget>
#include <QSignalBlocker>

#include <exception>

namespace shared {

namespace {

constexpr const char* LatestFill = "latestFill";

void holdBack(QWidget& view, bool on)
{
    if (auto* const grid = qobject_cast<platform::FlexGrid*>(&view))
        grid->setRedraw(!on);
    else
        view.setUpdatesEnabled(!on);
}

bool refillView(const Services& services, const ListQuery& query, QWidget& view, const std::function<void()>& clear,
                const std::function<void(const QStringList&)>& show)
{
    ado::Recordset rows;
    rows.Open(query.statement, services.DataConnection);
    if (rows.RecordCount() == 0)
        return true;
    const int code = rows.fieldIndex(query.code);
    const int description = rows.fieldIndex(query.description);
    Fill fill(view, services.events);
    clear();
    QStringList entries;
    entries.reserve(rows.RecordCount());
    for (; !rows.Eof(); rows.MoveNext()) {
        const QString text = rows.Fields(description).textOrEmpty();
        entries << listEntry(rows.Fields(code), query.upperCase ? text.toUpper() : text);
        if (!fill.goesOn())
            return false;
    }
    show(entries); // In one step: a view takes long over 20,000 single ones.
    return true;
}

} // namespace

Fill::Fill(QWidget& view, platform::EventPump& events, qsizetype rows)
    : m_view(&view)
    , m_events(events)
    , m_latest(latestOf(view))
    , m_number(++m_latest->number)
    , m_wasVisible(view.window()->isVisible())
    , m_rows(rows)
    , m_errorsBefore(std::uncaught_exceptions())
{
    holdBack(view, true);
}

Fill::~Fill()
{
    if (!isLatest())
        return;
    if (m_empty && std::uncaught_exceptions() > m_errorsBefore)
        m_empty();
    holdBack(*m_view, false);
}

bool Fill::isLatest() const
{
    return m_view && m_latest && m_latest->number == m_number;
}

Fill::Latest* Fill::latestOf(QWidget& view)
{
    // Kept as a property: each row of a long list asks, and must not search for it.
    if (auto* const known = view.property(LatestFill).value<QObject*>())
        return static_cast<Latest*>(known);
    auto* const latest = new Latest(&view);
    view.setProperty(LatestFill, QVariant::fromValue<QObject*>(latest));
    return latest;
}

bool Fill::goesOn()
{
    if (auto* const grid = qobject_cast<platform::FlexGrid*>(m_view.get()))
        grid->setProgress(++m_done, m_rows);
    m_events.DoEvents();
    return isLatest() && (!m_wasVisible || m_view->window()->isVisible());
}

bool refill(const Services& services, const ListQuery& query, QListWidget& list)
{
    return refillView(
        services, query, list, [&] { list.clear(); }, [&](const QStringList& entries) { list.addItems(entries); });
}

bool refill(const Services& services, const ListQuery& query, QComboBox& box)
{
    const QPointer<QComboBox> alive = &box;
    const auto quietly = [&](const auto& change) {
        const QSignalBlocker quiet(box);
        change();
    };
    const bool filled = refillView(
        services, query, box, [&] { quietly([&] { box.clear(); }); },
        [&](const QStringList& entries) { quietly([&] { box.addItems(entries); }); });
    if (filled && alive && box.count() > 0)
        quietly([&] { box.setCurrentIndex(0); });
    return filled;
}

} // namespace shared
