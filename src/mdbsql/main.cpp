#include "accessfile/Database.h"
#include "accessfile/Error.h"
#include "mdbsql/Arguments.h"
#include "mdbsql/CommandLine.h"
#include "mdbsql/Output.h"
#include "mdbsql/Script.h"
#include "platform/ado/AccessConversions.h"

#include <algorithm>
#include <csignal>
#include <iostream>
#include <sstream>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

enum ExitCode { Good = 0, Failed = 1, Misused = 2, OutputLost = 3, Noted = 4 };

bool isSelect(std::string_view statement)
{
    constexpr std::string_view word = "select";
    const std::size_t first = statement.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos || statement.size() - first < word.size())
        return false;
    return std::equal(word.begin(), word.end(), statement.begin() + static_cast<std::ptrdiff_t>(first),
                      [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b + 32 : b); });
}

void run(accessfile::Database& database, const std::string& statement)
{
    if (isSelect(statement)) {
        // Shown once they are all there: a run that another program disturbed begins anew.
        std::ostringstream rows;
        TextSink sink(rows);
        database.select(statement, sink);
        std::cout << rows.str();
        // What nobody can read any more must not let the script's later changes happen.
        if (!std::cout)
            throw OutputError();
    } else {
        database.execute(statement);
    }
}

/// False when a statement failed; its error has been told.
bool runScript(accessfile::Database& database, std::istream& input, const std::string& name)
{
    ScriptReader reader(input);
    std::string statement;
    while (reader.next(statement)) {
        try {
            run(database, statement);
        } catch (const accessfile::Error& error) {
            flush(std::cout);
            std::cerr << name << ':' << reader.line() << ": " << printable(error.what()) << " (" << error.number()
                      << ")\n"
                      << printable(statement) << '\n';
            return false;
        }
    }
    return true;
}

/// True when the standard input is a person's, from whom no script is awaited after --create.
bool isTerminal()
{
#ifdef _WIN32
    return _isatty(_fileno(stdin)) != 0;
#else
    return isatty(STDIN_FILENO) != 0;
#endif
}

int work(const Options& options)
{
    if (options.create)
        accessfile::Storage::create(options.file, options.password);
    accessfile::OpenOptions opening;
    opening.password = options.password;
    if (options.wait)
        opening.wait = std::chrono::seconds(*options.wait);
    const ado::AccessConversions conversions;
    accessfile::Database database(accessfile::Storage::open(options.file, opening), conversions);

    for (const std::string& warning : database.storage().warnings())
        std::cerr << "mdbsql: " << printable(warning) << '\n';

    bool good = true;
    if (options.command) {
        std::istringstream command(*options.command);
        good = runScript(database, command, "-c");
    } else if (!options.verify && !options.backup && (!options.create || !isTerminal())) {
        good = runScript(database, std::cin, "stdin");
    }
    if (good && options.backup)
        database.storage().backup(*options.backup);
    if (good && options.verify) {
        const accessfile::SelfCheck check = database.storage().verify();
        for (const std::string& fault : check.faults)
            std::cout << "Falha: " << printable(fault) << '\n';
        for (const std::string& note : check.notes)
            std::cout << "Nota: " << printable(note) << '\n';
        if (check.faults.empty() && !check.notes.empty()) {
            flush(std::cout);
            return Noted;
        }
        good = check.faults.empty();
    }
    flush(std::cout);
    return good ? Good : Failed;
}

} // namespace

int main(int count, char** values)
{
    std::ios::sync_with_stdio(false);
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN); // A closed pipe is an error of the output, told like a full disk.
#endif
    try {
        const std::variant<Options, Help, Misuse> arguments = readArguments(commandLine(count, values));
        if (const Misuse* misuse = std::get_if<Misuse>(&arguments)) {
            std::cerr << "mdbsql: " << printable(misuse->reason) << "\n\n" << helpText;
            return Misused;
        }
        if (const Options* options = std::get_if<Options>(&arguments))
            return work(*options);
        std::cout << helpText;
        flush(std::cout);
        return Good;
    } catch (const OutputError& error) {
        std::cerr << "mdbsql: " << error.what() << '\n';
        return OutputLost;
    } catch (const accessfile::Error& error) {
        std::cerr << "mdbsql: " << printable(error.what()) << " (" << error.number() << ")\n";
    } catch (const std::exception& error) {
        std::cerr << "mdbsql: " << printable(error.what()) << '\n';
    }
    return Failed;
}
