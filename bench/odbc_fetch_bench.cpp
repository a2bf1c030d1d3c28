// 200,000 rows of 9 columns through Recordset, against the streaming fetch of MariaDB's C library: the same server, the
// same rows, every value made into a text in both; by turns, in one run. Prints the ratio of the best times.
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "support/MariaDbServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <mysql.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <limits>
#include <stdexcept>

namespace {

constexpr int Rows = 200'000;
constexpr int Columns = 9;
constexpr int Turns = 5;
const char* const Select = "select * from Leitura";

struct Cost
{
    double wall = std::numeric_limits<double>::max();
    double processor = std::numeric_limits<double>::max();
    qsizetype characters = 0; ///< Keeps the work from being optimised away; the same for both ways.

    void keepBest(const Cost& other)
    {
        wall = std::min(wall, other.wall);
        processor = std::min(processor, other.processor);
        characters = other.characters;
    }
};

template <typename Work>
Cost measure(Work work)
{
    QElapsedTimer wall;
    const std::clock_t processor = std::clock();
    wall.start();
    Cost cost;
    cost.characters = work();
    cost.wall = static_cast<double>(wall.nsecsElapsed()) / 1e9;
    cost.processor = static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC;
    return cost;
}

double residentMegabytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toDouble() * 4096 / 1e6 : 0;
}

qsizetype throughLibrary(MYSQL* connection)
{
    if (mysql_query(connection, Select) != 0) {
        throw std::runtime_error(mysql_error(connection));
    }
    MYSQL_RES* result = mysql_use_result(connection);
    qsizetype characters = 0;
    while (MYSQL_ROW row = mysql_fetch_row(result)) {
        const unsigned long* lengths = mysql_fetch_lengths(result);
        for (int column = 0; column < Columns; ++column) {
            const QString text = QString::fromUtf8(row[column], static_cast<qsizetype>(lengths[column]));
            characters += text.isEmpty() ? 0 : 1;
        }
    }
    mysql_free_result(result);
    return characters;
}

qsizetype throughRecordset(ado::Connection& connection, bool asTexts)
{
    ado::Recordset rows;
    rows.Open(QString::fromLatin1(Select), connection);
    qsizetype characters = 0;
    for (; !rows.Eof(); rows.MoveNext()) {
        for (int column = 0; column < Columns; ++column) {
            const vb::Variant value = rows.Fields(column);
            characters += asTexts ? (value.textOrEmpty().isEmpty() ? 0 : 1) : (value.isNull() ? 0 : 1);
        }
    }
    return characters;
}

MYSQL* connect(const support::MariaDbServer& server, const QString& database, unsigned long flags)
{
    MYSQL* connection = mysql_init(nullptr);
    if (!mysql_real_connect(connection, qPrintable(server.host()), qPrintable(server.user()),
                            qPrintable(server.password()), qPrintable(database), 3306, nullptr, flags)) {
        throw std::runtime_error(mysql_error(connection));
    }
    mysql_set_character_set(connection, "utf8mb4");
    return connection;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    const QCoreApplication application(argumentCount, arguments);
    support::MariaDbServer server;
    const QString database = server.makeDatabase();
    server.run(QStringLiteral(
                   "create table Leitura (CodigoI int auto_increment primary key, DataLT date, cdgBomba int, "
                   "LeitAnt varchar(50), LeitAtu varchar(50), Saldo varchar(50), Obs varchar(50), tanq varchar(20), "
                   "afericao double);"
                   "insert into Leitura select seq, date_add('2020-01-01', interval seq div 100 day), seq % 24, "
                   "format(seq * 7.5, 2, 'pt_BR'), format(seq * 7.5 + 500, 2, 'pt_BR'), '500,00', '5,899', "
                   "concat('TANQUE_', seq % 6), seq / 8 from seq_1_to_%1;")
                   .arg(Rows),
               database);

    // The program's connection string asks for compression, which is most of the waiting time.
    MYSQL* plain = connect(server, database, 0);
    MYSQL* library = connect(server, database, CLIENT_COMPRESS);
    ado::Connection connection;
    connection.Open(server.connectionString(database));

    Cost uncompressed;
    Cost streaming;
    Cost texts;
    Cost values;
    throughLibrary(library);
    const double before = residentMegabytes();
    double kept = 0;
    {
        ado::Recordset rows;
        rows.Open(QString::fromLatin1(Select), connection);
        kept = residentMegabytes() - before;
    }
    for (int turn = 0; turn < Turns; ++turn) {
        uncompressed.keepBest(measure([&] { return throughLibrary(plain); }));
        streaming.keepBest(measure([&] { return throughLibrary(library); }));
        texts.keepBest(measure([&] { return throughRecordset(connection, true); }));
        values.keepBest(measure([&] { return throughRecordset(connection, false); }));
    }
    mysql_close(library);
    mysql_close(plain);

    std::printf("%d rows x %d columns, best of %d turns\n", Rows, Columns, Turns);
    const auto print = [&streaming](const char* name, const Cost& cost) {
        std::printf("%-32s wall %.3f s (%.2f)  processor %.3f s (%.2f)\n", name, cost.wall, cost.wall / streaming.wall,
                    cost.processor, cost.processor / streaming.processor);
    };
    print("C library, streaming, texts", streaming);
    print("the same without compression", uncompressed);
    print("Recordset, texts", texts);
    print("Recordset, values", values);
    std::printf("memory of an open Recordset, driver's remains included: %.1f MB\n", kept);
    return streaming.characters == texts.characters ? 0 : 1;
}
