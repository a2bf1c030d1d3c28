#pragma once

#include "platform/ui/InputQueue.h"
#include "platform/vb/Variant.h"

#include <QPointer>
#include <QString>

#include <functional>
#include <utility>

class QComboBox;
class QListWidget;
class QWidget;
struct Services;

namespace platform {
class EventPump;
}

namespace shared {

/// One fill of a list or grid. What it shows is held back until it is full; each row lets events run, and a newer fill
/// of the same view or the closing of its window may come in between. Keys and clicks wait until it is through, so that
/// they find the whole list; Escape alone acts at once.
class Fill
{
public:
    /// With the number of rows to come a grid shows how far a long fill is.
    Fill(QWidget& view, platform::EventPump& events, qsizetype rows = 0);
    ~Fill();
    Fill(const Fill&) = delete;
    Fill& operator=(const Fill&) = delete;

    /// What shows when the fill ends in an error: nothing, rather than a part of a list beside the totals of another.
    void ifItFails(std::function<void()> empty) { m_empty = std::move(empty); }
    /// After each row. False when this fill has been overtaken: it stops and leaves the view alone.
    [[nodiscard]] bool goesOn();

private:
    [[nodiscard]] bool isLatest() const;

    /// The number of a view's latest fill, a child of the view.
    class Latest : public QObject
    {
    public:
        using QObject::QObject;
        int number = 0;
    };
    [[nodiscard]] static Latest* latestOf(QWidget& view);

    platform::InputQueue::Filling m_filling;
    QPointer<QWidget> m_view;
    platform::EventPump& m_events;
    QPointer<Latest> m_latest;
    int m_number;
    bool m_wasVisible;
    qsizetype m_rows;
    qsizetype m_done = 0;
    std::function<void()> m_empty;
    int m_errorsBefore; ///< That were on their way when the fill began.
};

/// The rows of a register list: the statement and the fields of code and description.
struct ListQuery
{
    QString statement;
    QString code;
    QString description;
    bool upperCase = false; ///< The description is shown in upper case.
};

/// Clears a list and refills it with entries of code and description. With no rows it keeps its old entries.
/// False when the fill was overtaken.
bool refill(const Services& services, const ListQuery& query, QListWidget& list);
/// The same for a drop-down list, without its signals; then its first entry is selected.
bool refill(const Services& services, const ListQuery& query, QComboBox& box);

} // namespace shared
