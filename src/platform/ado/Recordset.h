#pragma once

#include "platform/ado/RowSet.h"
#include "platform/ado/Session.h"

#include <QString>

#include <memory>
#include <vector>

namespace ado {

class Connection;

enum CursorType { adOpenStatic = 3 };
enum LockType { adLockOptimistic = 3 };

/// Result set of a SELECT. Its rows are its own: nothing stays open at the source while it lives, so events may run
/// and exceptions pass. Move-only.
class Recordset
{
public:
    Recordset();
    ~Recordset();
    Recordset(Recordset&&) noexcept;
    Recordset& operator=(Recordset&&) noexcept;

    /// Runs the SELECT. The cursor and lock type are the ones that every caller uses; others do not exist.
    void Open(const QString& source, Connection& connection, CursorType = adOpenStatic, LockType = adLockOptimistic,
              int option = 1);
    /// The same on a connection of its own, opened with that string for this result set alone.
    void Open(const QString& source, const QString& connectionString, CursorType = adOpenStatic,
              LockType = adLockOptimistic, int option = 1);
    /// Opens only to add rows: the table is checked, never read.
    void OpenToAdd(const QString& source, Connection& connection);

    /// True behind the last row, and at once when there are none.
    [[nodiscard]] bool Eof() const;
    void MoveNext(); ///< vb::Error 3021 behind the last row.
    [[nodiscard]] qsizetype RecordCount() const;

    /// Field of the current row. vb::Error 3021 without a current row; ado::Error 3265 for an unknown name.
    [[nodiscard]] vb::Variant Fields(QStringView name) const;
    [[nodiscard]] vb::Variant Fields(int index) const;
    /// UTF-8 of a text field of the current row, for loops over many rows; valid until the result set is moved or
    /// changed. A null view where the field is Null or no text, and while an assignment is pending: Fields tells then.
    [[nodiscard]] QByteArrayView TextBytes(int index) const;
    /// Position of a field for loops over many rows; ado::Error 3265 for an unknown name.
    [[nodiscard]] int fieldIndex(QStringView name) const;
    [[nodiscard]] const std::vector<Field>& fieldList() const { return m_rows.fields(); }

    /// Begins a new row; it is written by Update.
    void AddNew();
    /// Assigns a field of the new row, or of the current one; written by Update (MoveNext and AddNew call it). The
    /// value takes the field's type, texts by the regional settings; ado::Error 3421 when it cannot. After OpenToAdd an
    /// unknown name or an unfit value is raised by Update.
    void SetField(QStringView name, vb::Variant value);
    /// Writes the new row or the changed fields; does nothing when nothing is pending. A failed Update leaves the
    /// assigned values pending.
    void Update();
    void Close();

private:
    void requireOpen() const; ///< ado::Error 3704 when it is closed.

    Session* m_session = nullptr;
    std::unique_ptr<Session> m_ownSession;
    QString m_source;
    RowSet m_rows;
    qsizetype m_rowCount = 0;
    qsizetype m_row = 0;
    bool m_adding = false;
    std::vector<FieldValue> m_changes;
};

} // namespace ado
