#include "shared/ListEntry.h"

#include "platform/vb/Format.h"

#include <QListWidget>

namespace shared {

QString listEntry(const vb::Variant& code, const vb::Variant& description)
{
    constexpr int Digits = 5;
    const qint64* const whole = std::get_if<qint64>(&code.value());
    const QString number =
        whole && *whole >= 0 ? QString::number(*whole).rightJustified(Digits, u'0') : vb::Format(code, u"00000");
    return number + QStringLiteral(" - ") + description.textOrEmpty();
}

QString entryCode(const QString& entry)
{
    return entry.left(5);
}

QString entryDescription(const QString& entry)
{
    return entry.mid(8);
}

QString selectedEntry(const QListWidget& list)
{
    const QListWidgetItem* item = list.currentItem();
    return item != nullptr && item->isSelected() ? item->text() : QString();
}

} // namespace shared
