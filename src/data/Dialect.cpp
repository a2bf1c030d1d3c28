#include "data/Dialect.h"

#include "platform/vb/Format.h"

namespace data {

Dialect::Dialect(const QString& connectionType)
    : m_isMySql(connectionType == u"mysql")
    , m_dateDelimiter(m_isMySql ? QStringLiteral(" ' ") : QStringLiteral(" # "))
    , m_dateFormat(m_isMySql ? QStringLiteral("yyyy/mm/dd") : QStringLiteral("mm/dd/yyyy"))
{}

QString Dialect::dateLiteral(QDate date) const
{
    return m_dateDelimiter + vb::Format(vb::Date::fromQDate(date), m_dateFormat) + m_dateDelimiter;
}

QString Dialect::SqlDateTime(const QString& dateText, const QString& timeText) const
{
    if (!m_isMySql)
        return vb::Format(dateText, u"dd/mm/yyyy") + u' ' + vb::Format(timeText, u"hh:mm:ss");
    const QString date = dateText.isEmpty() ? QStringLiteral("1899-12-30") : dateText;
    const QString time = timeText.isEmpty() ? QStringLiteral("00:00:00") : timeText;
    return vb::Format(date, u"YYYY-MM-DD") + u' ' + vb::Format(time, u"hh:mm:ss");
}

} // namespace data
