#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace endurance {

/// A small station that can be put back to its beginning, and looked at from outside, while nobody of this process has
/// it open.
class FaultStation
{
public:
    explicit FaultStation(bool isMySql);

    /// Everything as it was at first.
    void restore() const;
    /// Removes what programs that were killed have left of their entry grids.
    void forgetLines() const;
    /// What the tables hold, one line a row; keys that the database gives are left out.
    [[nodiscard]] QStringList contents() const;
    /// What the engine's check of the whole Access file finds wrong, one fault a line. A journal is played back first.
    [[nodiscard]] QString faults() const;
    [[nodiscard]] bool isMySql() const { return m_isMySql; }
    [[nodiscard]] QString folder() const { return m_folder.path(); }
    /// Access: the file. MySQL: the database's name.
    [[nodiscard]] const QString& database() const { return m_database; }

private:
    bool m_isMySql;
    QTemporaryDir m_folder;
    QString m_template;
    QString m_database;
    QStringList m_restoring;
};

} // namespace endurance
