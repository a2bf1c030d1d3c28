#include "platform/ado/Recordset.h"

#include "platform/ado/Assignment.h"
#include "platform/ado/Connection.h"
#include "platform/ado/Error.h"
#include "platform/ado/Trace.h"
#include "platform/vb/Error.h"

#include <algorithm>

namespace ado {

Recordset::Recordset() = default;
Recordset::~Recordset() = default;
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;

void Recordset::Open(const QString& source, Connection& connection, CursorType, LockType, int)
{
    Close();
    traceOpen(source);
    Session& session = connection.session(source);
    m_rows = session.query(source);
    m_rowCount = m_rows.rowCount();
    m_session = &session;
    m_source = source;
}

void Recordset::Open(const QString& source, const QString& connectionString, CursorType, LockType, int)
{
    Close();
    traceOpen(source);
    auto session = openSession({connectionString, {}, {}, 0, 0});
    m_rows = session->query(source);
    m_rowCount = m_rows.rowCount();
    m_session = session.get();
    m_ownSession = std::move(session);
    m_source = source;
}

void Recordset::OpenToAdd(const QString& source, Connection& connection)
{
    Close();
    traceOpen(source);
    Session& session = connection.session(source);
    session.prepareToAdd(source);
    m_session = &session;
    m_source = source;
}

void Recordset::Close()
{
    m_session = nullptr;
    m_ownSession.reset();
    m_source.clear();
    m_rows = RowSet();
    m_rowCount = 0;
    m_row = 0;
    m_adding = false;
    m_changes.clear();
}

void Recordset::requireOpen() const
{
    if (!m_session) {
        throw Error(3704, QStringLiteral("A operação não é permitida quando o objeto está fechado."));
    }
}

bool Recordset::Eof() const
{
    requireOpen();
    return m_row >= m_rowCount;
}

void Recordset::MoveNext()
{
    if (Eof()) {
        throw vb::Error(vb::Error::NoCurrentRecord);
    }
    Update();
    ++m_row;
}

qsizetype Recordset::RecordCount() const
{
    requireOpen();
    return m_rowCount;
}

int Recordset::fieldIndex(QStringView name) const
{
    requireOpen();
    const int index = m_rows.fieldIndex(name);
    if (index < 0) {
        throw unknownField(name);
    }
    return index;
}

vb::Variant Recordset::Fields(QStringView name) const
{
    return Fields(fieldIndex(name));
}

vb::Variant Recordset::Fields(int index) const
{
    requireOpen();
    if (index < 0 || static_cast<std::size_t>(index) >= m_rows.fields().size()) {
        throw unknownField(QString::number(index));
    }
    if (!m_adding && Eof()) {
        throw vb::Error(vb::Error::NoCurrentRecord);
    }
    if (!m_changes.empty()) {
        const QString& name = m_rows.fields()[static_cast<std::size_t>(index)].name;
        for (const FieldValue& change : m_changes) {
            if (change.name == name) {
                return change.value;
            }
        }
    }
    return m_adding ? vb::Variant() : m_rows.value(m_row, index);
}

QByteArrayView Recordset::TextBytes(int index) const
{
    if (m_adding || !m_changes.empty() || index < 0 || static_cast<std::size_t>(index) >= m_rows.fields().size() ||
        Eof()) {
        return {};
    }
    return m_rows.textBytes(m_row, index);
}

void Recordset::AddNew()
{
    requireOpen();
    Update();
    m_adding = true;
}

void Recordset::SetField(QStringView name, vb::Variant value)
{
    requireOpen();
    if (!m_adding && Eof()) {
        throw vb::Error(vb::Error::NoCurrentRecord);
    }
    QString fieldName = name.toString();
    if (!m_rows.fields().empty()) { // Opened only to add: the source knows the fields, and checks them at Update.
        const Field& field = m_rows.fields()[static_cast<std::size_t>(fieldIndex(name))];
        fieldName = field.name;
        value = assigned(field, value);
    }
    const auto known = std::find_if(m_changes.begin(), m_changes.end(), [&fieldName](const FieldValue& change) {
        return change.name.compare(fieldName, Qt::CaseInsensitive) == 0;
    });
    if (known != m_changes.end()) {
        known->value = std::move(value);
    } else {
        m_changes.push_back({fieldName, std::move(value)});
    }
}

void Recordset::Update()
{
    requireOpen();
    if (m_adding) {
        m_session->addRow(m_source, m_changes);
        m_adding = false;
    } else if (!m_changes.empty()) {
        m_session->updateRow(m_source, m_rows, m_row, m_changes);
        std::vector<vb::Variant> values;
        for (int field = 0; field < static_cast<int>(m_rows.fields().size()); ++field) {
            values.push_back(Fields(field));
        }
        m_rows.replaceRow(m_row, values);
    }
    m_changes.clear();
}

} // namespace ado
