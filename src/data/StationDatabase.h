#pragma once

#include "data/Dialect.h"
#include "platform/ado/Connection.h"

#include <QString>

namespace platform {
class Messages;
}

namespace data {

/// The one data connection of the process with what the settings said about it. Opened once at start, never closed.
class StationDatabase
{
public:
    /// `folder` is the program's own folder: the settings file and the server profiles lie in it.
    explicit StationDatabase(const QString& folder);

    /// Reads the settings and opens the back end that they choose. A MySQL server that cannot be reached is told to
    /// the operator and leaves the connection closed. Raises ado::Error or vb::Error for everything else: the Access
    /// file, the profile file, no active profile.
    void open(platform::Messages& messages);

    /// Adds the stock code column to the fuel products of an older database; errors are ignored, since the statement
    /// fails harmlessly once the column exists.
    void addStockCodeColumn();
    /// Turns the number columns that receive formatted texts into texts. MySQL only, at every start. Raises ado::Error.
    void convertNumberColumns();
    /// Reads whether a closing deducts stock. Raises ado::Error, and vb::Error 3021 for a table without a row.
    void readConfig();

    [[nodiscard]] ado::Connection& DataConnection() { return m_dataConnection; }
    [[nodiscard]] const Dialect& dialect() const { return m_dialect; }
    [[nodiscard]] const QString& folder() const { return m_folder; }
    /// What was asked to be opened: an Access file's path as the settings name it, or host and database of a server.
    [[nodiscard]] const QString& name() const { return m_name; }
    /// "nao", to the letter, keeps closings from deducting stock; every other text means that they do.
    [[nodiscard]] const QString& BaixarDoEstoque() const { return m_baixarDoEstoque; }

private:
    void openAccess();
    void openMySql(platform::Messages& messages);

    QString m_folder;
    QString m_settingsPath;
    QString m_connectionType;
    QString m_accessPath;
    QString m_name;
    QString m_baixarDoEstoque;
    Dialect m_dialect;
    ado::Connection m_dataConnection;
    ado::Connection m_hostsConnection; ///< Opened for MySQL and then left idle: no statement uses it.
};

} // namespace data
