#pragma once

#include "platform/ado/Recordset.h"

#include <QByteArrayView>

#include <string>

namespace shared {

/// The rows of a long list, each written as UTF-8 cells into the one buffer, without a text of its own for every cell.
/// Fields are of the result set's current row.
class RowText
{
public:
    explicit RowText(const ado::Recordset& rows)
        : m_rows(rows)
    {}

    void begin();
    void cell(QByteArrayView utf8);
    /// A cell that is appended to by its caller, up to the next one.
    [[nodiscard]] std::string& open();
    /// The field's text; empty for Null.
    void field(int index);
    /// The field as "##,#0.00".
    void amount(int index);
    /// The field as "dd/mm/yy".
    void date(int index);
    /// The row so far; valid until it is changed.
    [[nodiscard]] QByteArrayView bytes() const { return {m_text.data(), static_cast<qsizetype>(m_text.size())}; }

private:
    const ado::Recordset& m_rows;
    std::string m_text;
    bool m_isEmpty = true;
    // Neighbouring rows mostly have the same date.
    vb::Variant m_shownDate;
    std::string m_dateText;
};

} // namespace shared
