#pragma once

#include <QDateEdit>

namespace platform {

/// Date box shown as dd/mm/aaaa with a drop-down calendar in Portuguese. `Change` comes when the date really becomes
/// another one, by the operator or by the program; blocked while signals are blocked.
class DatePicker : public QDateEdit
{
    Q_OBJECT

public:
    explicit DatePicker(QWidget* parent = nullptr);

    [[nodiscard]] QDate Value() const { return date(); }
    void setValue(QDate date) { setDate(date); }

Q_SIGNALS:
    void Change();
};

} // namespace platform
