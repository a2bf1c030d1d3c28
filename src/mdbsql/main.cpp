#include "accessfile/Database.h"
#include "accessfile/Error.h"
#include "mdbsql/CommandLine.h"
#include "mdbsql/Script.h"
#include "platform/ado/AccessConversions.h"

#include <charconv>
#include <iostream>
#include <sstream>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

constexpr const char* usage =
    "Uso: mdbsql ARQUIVO [opções] [-c COMANDO | < roteiro.sql]\n"
    "\n"
    "  -c COMANDO         executa o comando em vez de ler um roteiro da entrada padrão\n"
    "  --password SENHA   senha do banco de dados\n"
    "  --create           antes, cria o arquivo em branco (com a senha, se dada)\n"
    "  --verify           confere o arquivo inteiro e mostra o que encontrar de errado; sem -c não lê roteiro\n"
    "\n"
    "No roteiro cada comando termina com ; no fim da linha; linhas que começam com -- são comentários. O primeiro\n"
    "erro encerra o roteiro.\n";

struct Options
{
    std::string file;
    std::string password;
    std::optional<std::string> command;
    bool create = false;
    bool verify = false;
};

/// nullopt when the arguments make no sense.
std::optional<Options> readArguments(const std::vector<std::string>& arguments)
{
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        const bool hasValue = argument == "-c" || argument == "--password";
        if (hasValue && i + 1 == arguments.size())
            return std::nullopt;
        if (argument == "-c")
            options.command = arguments[++i];
        else if (argument == "--password")
            options.password = arguments[++i];
        else if (argument == "--create")
            options.create = true;
        else if (argument == "--verify")
            options.verify = true;
        else if (argument.starts_with("-") || !options.file.empty())
            return std::nullopt;
        else
            options.file = argument;
    }
    if (options.file.empty())
        return std::nullopt;
    return options;
}

/// Writes rows as lines of tab-separated text, the names first. Line breaks and tabs inside a text become \n and \t.
class TextSink : public accessfile::RowSink
{
public:
    explicit TextSink(std::ostream& out)
        : m_out(out)
    {}

    void columns(const std::vector<accessfile::ResultColumn>& columns) override
    {
        for (const accessfile::ResultColumn& column : columns)
            textCell(column.name);
        endRow(std::nullopt);
    }

    void cell(const accessfile::Value& value) override
    {
        if (const bool* truth = std::get_if<bool>(&value))
            textCell(*truth ? "-1" : "0");
        else if (const std::int32_t* integer = std::get_if<std::int32_t>(&value))
            textCell(std::to_string(*integer));
        else if (const float* single = std::get_if<float>(&value))
            number(*single);
        else if (const double* number64 = std::get_if<double>(&value))
            number(*number64);
        else if (const auto* money = std::get_if<accessfile::Money>(&value))
            number(static_cast<double>(money->scaled) / 10'000);
        else if (const auto* date = std::get_if<accessfile::DateTime>(&value))
            textCell(m_conversions.dateToText(date->serial));
        else if (const std::string* text = std::get_if<std::string>(&value))
            textCell(*text);
        else if (const auto* numeric = std::get_if<accessfile::Numeric>(&value))
            textCell(decimal(*numeric));
        else if (const auto* guid = std::get_if<accessfile::Guid>(&value))
            bytes(guid->bytes.data(), guid->bytes.size());
        else if (const auto* binary = std::get_if<accessfile::Bytes>(&value))
            bytes(binary->data(), binary->size());
        else
            textCell({});
    }

    void textCell(std::string_view utf8) override
    {
        if (!m_first)
            m_out << '\t';
        m_first = false;
        for (const char c : utf8) {
            if (c == '\t')
                m_out << "\\t";
            else if (c == '\n')
                m_out << "\\n";
            else if (c != '\r')
                m_out << c;
        }
    }

    void endRow(std::optional<accessfile::RowId> /*row*/) override
    {
        m_out << '\n';
        m_first = true;
    }

private:
    /// Plain digits with a point, readable by the next program.
    template <typename Number>
    void number(Number value)
    {
        std::array<char, 64> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
        textCell(std::string_view(digits.data(), static_cast<std::size_t>(end.ptr - digits.data())));
    }

    static std::string decimal(accessfile::Numeric numeric)
    {
        std::string digits;
        do {
            std::uint64_t rest = 0;
            for (std::uint32_t& word : numeric.magnitude) {
                rest = rest << 32U | word;
                word = static_cast<std::uint32_t>(rest / 10);
                rest %= 10;
            }
            digits.insert(digits.begin(), static_cast<char>('0' + static_cast<char>(rest)));
        } while (numeric.magnitude != std::array<std::uint32_t, 4>{} || digits.size() <= numeric.scale);
        if (numeric.scale > 0)
            digits.insert(digits.size() - numeric.scale, ".");
        return (numeric.negative ? "-" : "") + digits;
    }

    void bytes(const std::uint8_t* data, std::size_t size)
    {
        static constexpr std::string_view digits = "0123456789ABCDEF";
        std::string text;
        for (std::size_t i = 0; i < size; ++i) {
            text += digits[data[i] >> 4U];
            text += digits[data[i] & 15U];
        }
        textCell(text);
    }

    std::ostream& m_out;
    bool m_first = true;
    ado::AccessConversions m_conversions;
};

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
        TextSink sink(std::cout);
        database.select(statement, sink);
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
            std::cout.flush();
            std::cerr << name << ':' << reader.line() << ": " << error.what() << " (" << error.number() << ")\n"
                      << statement << '\n';
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

int runMain(const Options& options)
{
    const std::filesystem::path file(std::u8string(options.file.begin(), options.file.end()));
    if (options.create)
        accessfile::Storage::create(file, options.password);
    accessfile::OpenOptions opening;
    opening.password = options.password;
    const ado::AccessConversions conversions;
    accessfile::Database database(accessfile::Storage::open(file, opening), conversions);

    bool good = true;
    if (options.command) {
        std::istringstream command(*options.command);
        good = runScript(database, command, "-c");
    } else if (!options.verify && (!options.create || !isTerminal())) {
        good = runScript(database, std::cin, "stdin");
    }
    if (good && options.verify) {
        for (const std::string& fault : database.storage().verify()) {
            std::cout << fault << '\n';
            good = false;
        }
    }
    return good ? 0 : 1;
}

} // namespace

int main(int count, char** values)
{
    std::ios::sync_with_stdio(false);
    const std::optional<Options> options = readArguments(commandLine(count, values));
    if (!options) {
        std::cerr << usage;
        return 2;
    }
    try {
        return runMain(*options);
    } catch (const accessfile::Error& error) {
        std::cerr << "mdbsql: " << error.what() << " (" << error.number() << ")\n";
    } catch (const std::exception& error) {
        std::cerr << "mdbsql: " << error.what() << '\n';
    }
    return 1;
}
