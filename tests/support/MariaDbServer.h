#pragma once

#include "support/OutsideProgram.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <optional>

namespace support {

/// A private MariaDB server on a loopback address of its own (port 3306), so that runs side by side never meet. It
/// works as any user, and ends with its test even when the test crashes. Failures to start raise std::runtime_error.
class MariaDbServer
{
public:
    /// Whether the server's programs are installed; tests skip without them.
    [[nodiscard]] static bool isInstalled();
    /// The one server of this test executable, started at first use and stopped with the application object.
    [[nodiscard]] static MariaDbServer& shared();
    /// Servers made from now on have the sizes and the durability of a station's, not those of a quick test.
    static void likeAStations();

    /// `settings` are more lines of its configuration; the last of a name counts.
    explicit MariaDbServer(const QString& settings = {});
    ~MariaDbServer();
    MariaDbServer(const MariaDbServer&) = delete;
    MariaDbServer& operator=(const MariaDbServer&) = delete;

    [[nodiscard]] const QString& host() const { return m_host; }
    /// Made by chance for each process: the address is open to every user of the machine.
    [[nodiscard]] static QString user();
    [[nodiscard]] static QString password();
    /// The program's own connection string for a database of this server.
    [[nodiscard]] QString connectionString(const QString& database) const;

    void start();
    void stop(); ///< Orderly.
    void kill(); ///< At once, as in a power cut.
    void restart();
    void pause(); ///< Alive and mute.
    void resume();

    /// Runs statements through the server's own client, outside the program: rows of texts, "NULL" for Null.
    /// Raises std::runtime_error with the client's message.
    QList<QStringList> run(const QString& statements, const QString& database = {}) const;
    /// Makes an empty database of a new name.
    [[nodiscard]] QString makeDatabase();

    /// Texts of the statements that the server received since clearStatementLog, in order.
    void clearStatementLog() const;
    [[nodiscard]] QStringList statementLog() const;

private:
    std::optional<QTemporaryDir> m_place; ///< Nobody else enters it.
    QString m_folder;
    QString m_host;
    OutsideServer m_process;
    int m_databases = 0;
};

} // namespace support
