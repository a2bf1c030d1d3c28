#include "shared/ListEntry.h"

#include "platform/vb/Format.h"

#include <QListWidget>

namespace Module1 {

QString listEntry(const vb::Variant& code, const vb::Variant& description)
{
    return vb::Format(code, u"00000") + QStringLiteral(" - ") + description.textOrEmpty();
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

} // namespace Module1
