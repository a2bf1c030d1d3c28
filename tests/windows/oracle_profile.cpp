// The program's own private profile functions against the system's: random files are read and written by both, and
// every answer and every byte is compared. usage: oracle_profile [FILES [SEED]]
#include "platform/os/PrivateProfile.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QTemporaryDir>

#include <cstdio>
#include <random>

#include <qt_windows.h>
#undef GetPrivateProfileString
#undef WritePrivateProfileString

namespace {

constexpr int BufferSize = 255;
constexpr int ShownPerKind = 5;

using Random = std::mt19937;

template <typename Choices>
auto pick(Random& random, const Choices& choices)
{
    return choices[std::uniform_int_distribution<std::size_t>(0, std::size(choices) - 1)(random)];
}

bool oneIn(Random& random, int times)
{
    return std::uniform_int_distribution<int>(1, times)(random) == 1;
}

const char* const Names[] = {"Geral", "geral", "GERAL", "Conexao", "host", "Caminho", "a b", "base", "Senha", "x"};
const char* const Blanks[] = {"", "", "", " ", "\t", "  "};

QByteArray randomValue(Random& random)
{
    static const char* const pieces[] = {"C:\\dados", "posto.mdb", "a;b", "=",    " ",   "\"",
                                         "'",         "\xE7\xE3o", "[x]", "\x80", "1,5", "#",
                                         "",          "\\\\srv",   ";",   "\t",   "abc"};
    QByteArray value;
    for (int i = std::uniform_int_distribution<int>(0, 4)(random); i > 0; --i)
        value += pick(random, pieces);
    if (oneIn(random, 8))
        value = '"' + value + '"';
    if (oneIn(random, 12))
        value = '\'' + value + '\'';
    if (oneIn(random, 40))
        value = value + QByteArray(260, 'y');
    return value;
}

QByteArray randomFile(Random& random)
{
    QByteArray bytes;
    const QByteArray mainBreak = oneIn(random, 6) ? "\n" : "\r\n";
    for (int line = std::uniform_int_distribution<int>(0, 12)(random); line > 0; --line) {
        const QByteArray blank = pick(random, Blanks);
        switch (std::uniform_int_distribution<int>(0, 9)(random)) {
        case 0:
        case 1:
        case 2:
            bytes += blank + '[' + pick(random, Blanks) + pick(random, Names) + pick(random, Blanks) + ']' +
                     (oneIn(random, 10) ? " ; nota" : "");
            break;
        case 3:
            bytes += "; " + randomValue(random);
            break;
        case 4:
            bytes += blank;
            break;
        case 5:
            bytes += pick(random, Names); // without a sign
            break;
        default:
            bytes += blank + pick(random, Names) + pick(random, Blanks) + '=' + pick(random, Blanks) +
                     randomValue(random) + pick(random, Blanks);
        }
        if (line > 1 || !oneIn(random, 4))
            bytes += oneIn(random, 30) ? QByteArray("\n") : mainBreak;
    }
    return bytes;
}

void store(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("%s cannot be written", qPrintable(path));
}

QByteArray stored(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

QString systemRead(const QString& section, const QString& key, const QString& file)
{
    wchar_t buffer[BufferSize];
    const DWORD length = GetPrivateProfileStringW(wide(section), wide(key), L"(nada)", buffer, BufferSize, wide(file));
    return QString::fromWCharArray(buffer, static_cast<qsizetype>(length));
}

QString ownRead(const QString& section, const QString& key, const QString& file)
{
    return platform::GetPrivateProfileString(section, key, QStringLiteral("(nada)"), BufferSize, file);
}

/// What is left when a text is read as settings alone: lines with trimmed parts, no blank lines, one line end.
QByteArray settingsOf(const QByteArray& bytes)
{
    QByteArray result;
    for (const QByteArray& line : bytes.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        const qsizetype close = trimmed.startsWith('[') ? trimmed.indexOf(']') : -1;
        const qsizetype equals = close >= 0 || trimmed.startsWith(';') ? -1 : trimmed.indexOf('=');
        if (trimmed.isEmpty())
            continue;
        if (close >= 0)
            result += '[' + trimmed.sliced(1, close - 1).trimmed() + ']';
        else if (equals >= 0)
            result += trimmed.first(equals).trimmed() + '=' + trimmed.sliced(equals + 1).trimmed();
        else
            result += trimmed;
        result += '\n';
    }
    return result;
}

class Differences
{
public:
    void add(const char* kind, const QByteArray& description)
    {
        int& count = m_counts[kind];
        if (++count <= ShownPerKind)
            std::printf("%s:\n%s\n", kind, description.constData());
    }
    void summary() const
    {
        for (auto kind = m_counts.begin(); kind != m_counts.end(); ++kind)
            std::printf("%6d  %s\n", kind.value(), kind.key().constData());
    }

private:
    QMap<QByteArray, int> m_counts;
};

QByteArray visible(QByteArray bytes)
{
    return bytes.replace("\r", "\\r").replace("\n", "\\n").replace("\t", "\\t");
}

} // namespace

int main(int count, char** values)
{
    const int files = count > 1 ? std::atoi(values[1]) : 1000;
    Random random(count > 2 ? static_cast<unsigned>(std::atoi(values[2])) : 18U);
    const QTemporaryDir folder;
    const QString own = QDir::toNativeSeparators(folder.filePath(QStringLiteral("proprio.ini")));
    const QString system = QDir::toNativeSeparators(folder.filePath(QStringLiteral("sistema.ini")));
    Differences differences;
    int reads = 0;
    int writes = 0;

    for (int file = 0; file < files; ++file) {
        const QByteArray before = randomFile(random);
        store(own, before);
        store(system, before);
        const auto compareReads = [&](const char* kind, const QByteArray& context) {
            for (int i = 0; i < 20; ++i) {
                const QString section = QString::fromLatin1(pick(random, Names));
                const QString key = QString::fromLatin1(pick(random, Names));
                const QString mine = ownRead(section, key, own);
                const QString theirs = systemRead(section, key, system);
                ++reads;
                if (mine != theirs) {
                    differences.add(kind, "  [" + section.toLatin1() + "] " + key.toLatin1() + " of \"" +
                                              visible(context) + "\"\n  own \"" + visible(mine.toUtf8()) +
                                              "\", system \"" + visible(theirs.toUtf8()) + '"');
                }
            }
        };
        compareReads("a value is read otherwise", before);

        const QString section = QString::fromLatin1(pick(random, Names));
        const QString key = QString::fromLatin1(pick(random, Names));
        const QString value = QString::fromLatin1(randomValue(random).replace('\x80', 'e'));
        const bool mine = platform::WritePrivateProfileString(section, key, value, own);
        const bool theirs = WritePrivateProfileStringW(wide(section), wide(key), wide(value), wide(system));
        ++writes;
        const QByteArray ownBytes = stored(own);
        const QByteArray systemBytes = stored(system);
        const QByteArray context = "  [" + section.toLatin1() + "] " + key.toLatin1() + '=' +
                                   visible(value.toLatin1()) + " into \"" + visible(before) + "\"\n  own    \"" +
                                   visible(ownBytes) + "\"\n  system \"" + visible(systemBytes) + '"';
        if (mine != theirs)
            differences.add("one of the two could not write", context);
        else if (ownBytes != systemBytes && settingsOf(ownBytes) == settingsOf(systemBytes))
            differences.add("the same lines, other blanks, line ends or notes", context);
        else if (ownBytes != systemBytes)
            differences.add("other lines after a write", context);
        compareReads("a value is read otherwise after a write", context);
    }
    std::printf("%d files, %d values read, %d written\n", files, reads, writes);
    differences.summary();
    return 0;
}
