#include "platform/ado/RowSet.h"

#include "platform/ado/Error.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace ado {

namespace {

// An end position carries the Null mark in its top bit.
constexpr quint32 NullMark = 0x8000'0000U;

template <typename Number>
Number read(const char* bytes)
{
    Number number{};
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

} // namespace

RowSet::RowSet(std::vector<Field> fields)
    : m_fields(std::move(fields))
{}

int RowSet::fieldIndex(QStringView name) const
{
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        if (name.compare(m_fields[i].name, Qt::CaseInsensitive) == 0) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

qsizetype RowSet::rowCount() const
{
    return m_fields.empty() ? 0 : static_cast<qsizetype>(m_ends.size() / m_fields.size());
}

vb::Variant RowSet::value(qsizetype row, int field) const
{
    const auto type = m_fields.at(static_cast<std::size_t>(field)).type;
    const std::size_t cell = static_cast<std::size_t>(row) * m_fields.size() + static_cast<std::size_t>(field);
    const quint32 end = m_ends.at(cell);
    if (end & NullMark) {
        return {};
    }
    const std::size_t begin = cell == 0 ? 0 : m_ends[cell - 1] & ~NullMark;
    const std::size_t length = end - begin;
    const char* bytes = m_bytes.data() + begin;
    switch (type) {
    case FieldType::Long:
        return length == sizeof(qint32) ? qint64{read<qint32>(bytes)} : read<qint64>(bytes);
    case FieldType::Double:
        return read<double>(bytes);
    case FieldType::Currency:
        return vb::Currency::fromScaled(read<qint64>(bytes));
    case FieldType::Date:
        return vb::Date{read<double>(bytes)};
    case FieldType::Text:
        break;
    }
    return QString::fromUtf8(bytes, static_cast<qsizetype>(length));
}

QByteArrayView RowSet::textBytes(qsizetype row, int field) const
{
    const std::size_t cell = static_cast<std::size_t>(row) * m_fields.size() + static_cast<std::size_t>(field);
    const quint32 end = m_ends.at(cell);
    if (m_fields.at(static_cast<std::size_t>(field)).type != FieldType::Text || (end & NullMark))
        return {};
    const std::size_t begin = cell == 0 ? 0 : m_ends[cell - 1] & ~NullMark;
    return {m_bytes.data() + begin, static_cast<qsizetype>(end - begin)};
}

void RowSet::reserveRows(qsizetype rows)
{
    const qsizetype present = rowCount();
    m_ends.reserve(static_cast<std::size_t>(rows) * m_fields.size());
    if (present > 0 && rows > present) {
        const auto perRow = static_cast<double>(m_bytes.size()) / static_cast<double>(present);
        m_bytes.reserve(static_cast<std::size_t>(perRow * 1.05 * static_cast<double>(rows)));
    }
}

void RowSet::appendNull()
{
    m_ends.push_back(static_cast<quint32>(m_bytes.size()) | NullMark);
}

void RowSet::appendBytes(const char* bytes, std::size_t length)
{
    if (m_bytes.size() + length >= NullMark) {
        throw Error(7, QStringLiteral("Memória insuficiente: o resultado da consulta passa de 2 GB."));
    }
    m_bytes.insert(m_bytes.end(), bytes, bytes + length);
    m_ends.push_back(static_cast<quint32>(m_bytes.size()));
}

void RowSet::appendLong(qint64 value)
{
    std::array<char, sizeof(qint64)> bytes{};
    if (value >= std::numeric_limits<qint32>::min() && value <= std::numeric_limits<qint32>::max()) {
        const auto small = static_cast<qint32>(value);
        std::memcpy(bytes.data(), &small, sizeof small);
        appendBytes(bytes.data(), sizeof small);
    } else {
        std::memcpy(bytes.data(), &value, sizeof value);
        appendBytes(bytes.data(), sizeof value);
    }
}

void RowSet::appendDouble(double value)
{
    std::array<char, sizeof value> bytes{};
    std::memcpy(bytes.data(), &value, sizeof value);
    appendBytes(bytes.data(), bytes.size());
}

void RowSet::appendCurrency(vb::Currency value)
{
    const qint64 scaled = value.scaled();
    std::array<char, sizeof scaled> bytes{};
    std::memcpy(bytes.data(), &scaled, sizeof scaled);
    appendBytes(bytes.data(), bytes.size());
}

void RowSet::appendDate(vb::Date value)
{
    appendDouble(value.serial);
}

void RowSet::appendText(QByteArrayView utf8)
{
    appendBytes(utf8.data(), static_cast<std::size_t>(utf8.size()));
}

void RowSet::append(FieldType type, const vb::Variant& value)
{
    if (value.isNull()) {
        appendNull();
        return;
    }
    switch (type) {
    case FieldType::Long:
        appendLong(std::get<qint64>(value.value()));
        break;
    case FieldType::Double:
        appendDouble(std::get<double>(value.value()));
        break;
    case FieldType::Currency:
        appendCurrency(std::get<vb::Currency>(value.value()));
        break;
    case FieldType::Date:
        appendDate(std::get<vb::Date>(value.value()));
        break;
    case FieldType::Text:
        appendText(std::get<QString>(value.value()).toUtf8());
        break;
    }
}

bool RowSet::isUnchanged(qsizetype row, const RowSet& later) const
{
    const auto found = std::find(later.m_rowKeys.begin(), later.m_rowKeys.end(), rowKey(row));
    if (found == later.m_rowKeys.end() || later.m_fields.size() != m_fields.size())
        return false;
    const bool assignedHere = std::find(m_replaced.begin(), m_replaced.end(), row) != m_replaced.end();
    for (int field = 0; field < static_cast<int>(m_fields.size()); ++field) {
        const vb::Variant mine = value(row, field);
        const vb::Variant other = later.value(found - later.m_rowKeys.begin(), field);
        if (mine == other)
            continue;
        const double* const myNumber = std::get_if<double>(&mine.value());
        const double* const otherNumber = std::get_if<double>(&other.value());
        if (!assignedHere || !myNumber || !otherNumber ||
            static_cast<float>(*myNumber) != static_cast<float>(*otherNumber))
            return false;
    }
    return true;
}

void RowSet::replaceRow(qsizetype row, const std::vector<vb::Variant>& values)
{
    m_replaced.push_back(row);
    RowSet fresh(m_fields);
    for (std::size_t field = 0; field < m_fields.size(); ++field) {
        fresh.append(m_fields[field].type, values.at(field));
    }
    const std::size_t firstCell = static_cast<std::size_t>(row) * m_fields.size();
    const std::size_t endCell = firstCell + m_fields.size();
    const std::size_t begin = firstCell == 0 ? 0 : m_ends.at(firstCell - 1) & ~NullMark;
    const std::size_t end = m_ends.at(endCell - 1) & ~NullMark;

    m_bytes.erase(m_bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                  m_bytes.begin() + static_cast<std::ptrdiff_t>(end));
    m_bytes.insert(m_bytes.begin() + static_cast<std::ptrdiff_t>(begin), fresh.m_bytes.begin(), fresh.m_bytes.end());
    for (std::size_t cell = firstCell; cell < endCell; ++cell) {
        const quint32 freshEnd = fresh.m_ends[cell - firstCell];
        m_ends[cell] = (static_cast<quint32>(begin) + (freshEnd & ~NullMark)) | (freshEnd & NullMark);
    }
    const quint32 growth = static_cast<quint32>(fresh.m_bytes.size() - (end - begin)); // May wrap; so does the sum.
    for (std::size_t cell = endCell; cell < m_ends.size(); ++cell) {
        m_ends[cell] = ((m_ends[cell] & ~NullMark) + growth) | (m_ends[cell] & NullMark);
    }
}

} // namespace ado
