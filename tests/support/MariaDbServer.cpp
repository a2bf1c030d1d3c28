#include "support/MariaDbServer.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QThread>
#include <QUuid>

#include <stdexcept>

namespace support {

namespace {

[[noreturn]] void fail(const QString& text)
{
    throw std::runtime_error(text.toStdString());
}

QString runProgram(const QString& name, const QStringList& arguments, const QByteArray& input = {},
                   const QString& folder = {})
{
    const QString found = outsideProgram(name);
    const Outcome outcome =
        folder.isEmpty()
            ? runOutside(found, arguments, input)
            : runOutside(QStringLiteral("env"), QStringList{QStringLiteral("-C"), folder, found} + arguments, input);
    if (!outcome.succeeded()) {
        fail(name + QStringLiteral(": ") + QString::fromUtf8(outcome.errors));
    }
    return QString::fromUtf8(outcome.output);
}

/// Of the Unix user whom the test runs as.
uint userId()
{
    static const uint result = runOutside(QStringLiteral("id"), {QStringLiteral("-u")}).output.trimmed().toUInt();
    return result;
}

void write(const QString& path, const QString& text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0) {
        fail(path + QStringLiteral(": ") + file.errorString());
    }
}

/// Data folder that every server starts from, made once per build folder.
QString templateFolder()
{
    const QString cache = QStringLiteral(TEST_SUPPORT_CACHE);
    QDir().mkpath(cache);
    QLockFile lock(cache + QStringLiteral("/mariadb-template.lock"));
    lock.setStaleLockTime(0);
    if (!lock.lock()) {
        fail(QStringLiteral("no lock in ") + cache);
    }
    const QString folder = cache + QStringLiteral("/mariadb-data");
    if (!QDir(folder).exists()) {
        const QString unfinished = folder + QStringLiteral(".unfinished");
        QDir(unfinished).removeRecursively();
        // Root is let in through the socket only. The script does not take a path with a blank: it works in the cache.
        QStringList arguments = {QStringLiteral("--no-defaults"),
                                 QStringLiteral("--datadir=./") + QFileInfo(unfinished).fileName(),
                                 QStringLiteral("--innodb-log-file-size=4M"),
                                 QStringLiteral("--innodb-undo-tablespaces=0"),
                                 QStringLiteral("--auth-root-authentication-method=socket"),
                                 QStringLiteral("--auth-root-socket-user=root"),
                                 QStringLiteral("--skip-test-db"),
                                 QStringLiteral("--skip-name-resolve")};
        if (userId() == 0) { // Else the server would want a user of its own.
            arguments << QStringLiteral("--user=root");
        }
        runProgram(QStringLiteral("mariadb-install-db"), arguments, {}, cache);
        if (!QDir().rename(unfinished, folder)) {
            fail(QStringLiteral("cannot name ") + folder);
        }
    }
    return folder;
}

/// Folders of servers whose test process ended without removing them.
void removeLeftovers()
{
    const QDir temporary(QDir::tempPath());
    for (const QString& name : temporary.entryList({QStringLiteral("planilha-mariadb-*")}, QDir::Dirs)) {
        const auto owner = name.section(QLatin1Char('-'), 2, 2).toLongLong();
        if (owner > 0 && owner != QCoreApplication::applicationPid() &&
            QFileInfo(temporary.filePath(name)).ownerId() == userId() &&
            !QFile::exists(QStringLiteral("/proc/%1").arg(owner))) {
            QDir(temporary.filePath(name)).removeRecursively();
        }
    }
}

QString unescaped(QStringView cell)
{
    QString text;
    for (qsizetype i = 0; i < cell.size(); ++i) {
        if (cell[i] != QLatin1Char('\\') || i + 1 == cell.size()) {
            text += cell[i];
            continue;
        }
        const QChar code = cell[++i];
        text += code == QLatin1Char('n')   ? QLatin1Char('\n')
                : code == QLatin1Char('t') ? QLatin1Char('\t')
                : code == QLatin1Char('0') ? QChar()
                                           : code;
    }
    return text;
}

/// Letters that nobody guesses.
QString chance()
{
    return QUuid::createUuid().toString(QUuid::Id128);
}

bool isLikeAStations = false;

} // namespace

void MariaDbServer::likeAStations()
{
    isLikeAStations = true;
}

bool MariaDbServer::isInstalled()
{
    static const bool result = !outsideProgram(QStringLiteral("mariadbd")).isEmpty() &&
                               !outsideProgram(QStringLiteral("mariadb-install-db")).isEmpty() &&
                               !outsideProgram(QStringLiteral("mariadb")).isEmpty();
    return result;
}

QString MariaDbServer::user()
{
    static const QString name = QStringLiteral("posto") + chance().left(8);
    return name;
}

QString MariaDbServer::password()
{
    static const QString word = chance();
    return word;
}

MariaDbServer& MariaDbServer::shared()
{
    static std::unique_ptr<MariaDbServer> server;
    if (!server) {
        server = std::make_unique<MariaDbServer>();
        qAddPostRoutine([] { server.reset(); });
    }
    return *server;
}

MariaDbServer::MariaDbServer(const QString& settings)
{
    static int servers = 0;
    removeLeftovers();
    const auto process = static_cast<int>(QCoreApplication::applicationPid());
    const int number = servers++;
    m_host = QStringLiteral("127.%1.%2.%3")
                 .arg(1 + (number % 3) * 64 + ((process >> 16) & 63))
                 .arg((process >> 8) & 255)
                 .arg(process & 255);
    m_place.emplace(QDir::tempPath() + QStringLiteral("/planilha-mariadb-%1-XXXXXX").arg(process));
    if (!m_place->isValid()) {
        fail(m_place->errorString());
    }
    m_folder = m_place->path();
    runProgram(QStringLiteral("cp"), {QStringLiteral("-a"), templateFolder(), m_folder + QStringLiteral("/data")});
    write(m_folder + QStringLiteral("/init.sql"),
          QStringLiteral("CREATE USER IF NOT EXISTS '%1'@'%' IDENTIFIED BY '%2';\nGRANT ALL ON *.* TO '%1'@'%';\n")
              .arg(user(), password()));
    QDir(m_folder).mkdir(QStringLiteral("files"));
    // Not on the client's command line, where every user of the machine reads it.
    write(m_folder + QStringLiteral("/client.cnf"),
          QStringLiteral("[client]\nprotocol=TCP\nhost=%1\nuser=%2\npassword=%3\n").arg(m_host, user(), password()));
    write(m_folder + QStringLiteral("/my.cnf"),
          QStringLiteral("[mariadbd]\n%3datadir=%1/data\nsocket=%1/s\npid-file=%1/pid\nlog-error=%1/server.log\n"
                         "tmpdir=%1\nsecure-file-priv=%1/files\nlocal-infile=0\n"
                         "bind-address=%2\nport=3306\ninit-file=%1/init.sql\nlower_case_table_names=1\n"
                         "character-set-server=utf8mb4\nsql_mode=\nskip-name-resolve\nlog_output=TABLE\n"
                         "innodb_undo_tablespaces=0\n%4")
                  .arg(outsidePath(m_folder), m_host, userId() == 0 ? QStringLiteral("user=root\n") : QString(),
                       isLikeAStations ? QString()
                                       : QStringLiteral("innodb_log_file_size=4M\ninnodb_buffer_pool_size=32M\n"
                                                        "innodb_flush_log_at_trx_commit=2\nperformance_schema=OFF\n")) +
              settings);
    start();
}

MariaDbServer::~MariaDbServer()
{
    kill();
}

QString MariaDbServer::connectionString(const QString& database) const
{
    return QStringLiteral("DRIVER={MySQL ODBC 3.51 Driver};user=") + user() + QStringLiteral(";password=") +
           password() + QStringLiteral(";database=") + database + QStringLiteral(";server=") + m_host +
           QStringLiteral(";option=18475");
}

void MariaDbServer::start()
{
    const QString log = m_folder + QStringLiteral("/server.log");
    QFile::remove(log);
    m_process.start(outsideProgram(QStringLiteral("mariadbd")),
                    {QStringLiteral("--defaults-file=") + outsidePath(m_folder) + QStringLiteral("/my.cnf")});
    QElapsedTimer waited;
    waited.start();
    for (;;) {
        QFile file(log);
        const QByteArray text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        if (text.contains("ready for connections")) {
            return;
        }
        if (m_process.waitForEnd(20) || waited.elapsed() > 60'000) {
            fail(QStringLiteral("mariadbd does not start: ") + QString::fromUtf8(text));
        }
    }
}

void MariaDbServer::stop()
{
    m_process.signal(QStringLiteral("TERM"));
    if (!m_process.waitForEnd(60'000)) {
        kill();
    }
}

void MariaDbServer::kill()
{
    if (m_process.isRunning()) {
        m_process.signal(QStringLiteral("KILL"));
        (void)m_process.waitForEnd(30'000);
    }
}

void MariaDbServer::restart()
{
    stop();
    start();
}

void MariaDbServer::pause()
{
    m_process.signal(QStringLiteral("STOP"));
}

void MariaDbServer::resume()
{
    m_process.signal(QStringLiteral("CONT"));
}

QList<QStringList> MariaDbServer::run(const QString& statements, const QString& database) const
{
    QStringList arguments = {QStringLiteral("--defaults-file=%1/client.cnf").arg(m_folder),
                             QStringLiteral("--default-character-set=utf8mb4"), QStringLiteral("--batch"),
                             QStringLiteral("--skip-column-names")};
    if (!database.isEmpty()) {
        arguments << database;
    }
    const QString output = runProgram(QStringLiteral("mariadb"), arguments, statements.toUtf8());
    QList<QStringList> rows;
    for (const QString& line : output.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        QStringList row;
        for (const QString& cell : line.split(QLatin1Char('\t'))) {
            row << unescaped(cell);
        }
        rows << row;
    }
    return rows;
}

QString MariaDbServer::makeDatabase()
{
    const QString name = QStringLiteral("posto%1").arg(++m_databases);
    run(QStringLiteral("CREATE DATABASE %1").arg(name));
    return name;
}

void MariaDbServer::clearStatementLog() const
{
    run(QStringLiteral("SET GLOBAL general_log = OFF; TRUNCATE mysql.general_log; SET GLOBAL general_log = ON;"));
}

QStringList MariaDbServer::statementLog() const
{
    QStringList statements;
    for (const QStringList& row : run(QStringLiteral(
             "SET GLOBAL general_log = OFF; SELECT argument FROM mysql.general_log "
             "WHERE command_type IN ('Query', 'Execute') AND argument <> 'SET GLOBAL general_log = OFF';"))) {
        statements << row.join(QLatin1Char('\t'));
    }
    return statements;
}

} // namespace support
