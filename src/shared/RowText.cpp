#include "shared/RowText.h"

#include "platform/ui/GridCells.h"
#include "platform/vb/Amount.h"
#include "platform/vb/Format.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace shared {

namespace {

void append(std::string& utf8, QByteArrayView bytes)
{
    const std::size_t start = utf8.size();
    utf8.append(bytes.data(), static_cast<std::size_t>(bytes.size()));
    if (utf8.find(platform::CellSeparator, start) != std::string::npos)
        std::replace(utf8.begin() + static_cast<std::ptrdiff_t>(start), utf8.end(), platform::CellSeparator, ' ');
}

} // namespace

void RowText::begin()
{
    m_text.clear();
    m_isEmpty = true;
}

std::string& RowText::open()
{
    if (!m_isEmpty)
        m_text += platform::CellSeparator;
    m_isEmpty = false;
    return m_text;
}

void RowText::cell(QByteArrayView utf8)
{
    append(open(), utf8);
}

void RowText::field(int index)
{
    std::string& text = open();
    if (const QByteArrayView bytes = m_rows.TextBytes(index); !bytes.isNull()) {
        append(text, bytes);
        return;
    }
    const vb::Variant value = m_rows.Fields(index);
    if (const qint64* const whole = std::get_if<qint64>(&value.value())) {
        std::array<char, 24> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), *whole).ptr;
        text.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
    } else {
        append(text, value.textOrEmpty().toUtf8());
    }
}

void RowText::amount(int index)
{
    std::string& text = open();
    if (const QByteArrayView bytes = m_rows.TextBytes(index); vb::plainAmount(bytes))
        append(text, bytes);
    else
        append(text, vb::Format(m_rows.Fields(index), u"##,#0.00").toUtf8());
}

void RowText::date(int index)
{
    const vb::Variant day = m_rows.Fields(index);
    if (m_dateText.empty() || !(day == m_shownDate)) {
        m_shownDate = day;
        m_dateText = vb::Format(day, u"dd/mm/yy").toStdString();
    }
    open() += m_dateText;
}

} // namespace shared
