#include "platform/os/PrivateProfile.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <array>
#include <optional>

namespace platform {

namespace {

// Windows-1252 differs from Latin-1 in these 32 codes; five of them stand for nothing and are kept as they are.
constexpr std::array<char16_t, 32> HighCodes = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
constexpr unsigned char FirstHighCode = 0x80;

QString decode(QByteArrayView bytes)
{
    QString text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        const auto high = static_cast<std::size_t>(code) - FirstHighCode;
        text += QChar(high < HighCodes.size() ? HighCodes.at(high) : char16_t{code});
    }
    return text;
}

QByteArray encode(const QString& text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (const QChar character : text) {
        const char16_t code = character.unicode();
        const auto* high = std::find(HighCodes.begin(), HighCodes.end(), code);
        if (high != HighCodes.end())
            bytes += static_cast<char>(FirstHighCode + (high - HighCodes.begin()));
        else
            bytes += code <= 0xFF ? static_cast<char>(code) : '?';
    }
    return bytes;
}

struct Line
{
    qsizetype start = 0;
    qsizetype end = 0;  // without the line break
    qsizetype next = 0; // with it
};

Line lineAt(const QByteArray& bytes, qsizetype start)
{
    const qsizetype feed = bytes.indexOf('\n', start);
    Line line{start, feed < 0 ? bytes.size() : feed, feed < 0 ? bytes.size() : feed + 1};
    if (line.end > start && bytes[line.end - 1] == '\r')
        --line.end;
    return line;
}

QByteArrayView trimmedLine(const QByteArray& bytes, Line line)
{
    return QByteArrayView(bytes).sliced(line.start, line.end - line.start).trimmed();
}

bool sameName(QByteArrayView bytes, const QString& name)
{
    return decode(bytes.trimmed()).compare(QStringView(name).trimmed(), Qt::CaseInsensitive) == 0;
}

struct Place
{
    bool hasSection = false;
    std::optional<Line> line; // the line of the key
    qsizetype equals = 0;     // its equals sign
    qsizetype sectionEnd = 0; // behind the last line of the section that is not blank
};

// The first section of that name and in it the first line of that key.
Place find(const QByteArray& bytes, const QString& section, const QString& key)
{
    Place place;
    for (qsizetype at = 0; at < bytes.size();) {
        const Line line = lineAt(bytes, at);
        at = line.next;
        const QByteArrayView text = trimmedLine(bytes, line);
        if (text.startsWith('[')) {
            if (place.hasSection)
                break;
            const qsizetype close = text.indexOf(']');
            place.hasSection = close > 0 && sameName(text.sliced(1, close - 1), section);
            place.sectionEnd = line.next;
            continue;
        }
        if (!place.hasSection || text.isEmpty())
            continue;
        place.sectionEnd = line.next;
        if (text.startsWith(';'))
            continue;
        const qsizetype equals = bytes.indexOf('=', line.start);
        if (equals < 0 || equals >= line.end)
            continue;
        if (sameName(QByteArrayView(bytes).sliced(line.start, equals - line.start), key)) {
            place.line = line;
            place.equals = equals;
            break;
        }
    }
    return place;
}

QByteArrayView unquoted(QByteArrayView value)
{
    const bool quoted =
        value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.front() == value.back();
    return quoted ? value.sliced(1, value.size() - 2) : value;
}

std::optional<QByteArray> contents(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

} // namespace

QString GetPrivateProfileString(const QString& section, const QString& key, const QString& fallback, int bufferSize,
                                const QString& file)
{
    const qsizetype most = qMax(bufferSize - 1, 0);
    if (const std::optional<QByteArray> bytes = contents(file)) {
        const Place place = find(*bytes, section, key);
        if (place.line) {
            const QByteArrayView value =
                unquoted(QByteArrayView(*bytes).sliced(place.equals + 1, place.line->end - place.equals - 1).trimmed());
            return decode(value.first(qMin(value.size(), most)));
        }
    }
    return decode(encode(fallback).first(qMin(fallback.size(), most)));
}

bool WritePrivateProfileString(const QString& section, const QString& key, const QString& value, const QString& file)
{
    const std::optional<QByteArray> old = contents(file);
    if (!old && QFile::exists(file))
        return false;
    QByteArray bytes = old.value_or(QByteArray());

    const qsizetype feed = bytes.indexOf('\n');
    const QByteArray lineBreak = feed == 0 || (feed > 0 && bytes[feed - 1] != '\r') ? "\n" : "\r\n";
    QByteArray newValue = encode(value);
    for (char& byte : newValue) {
        if (byte == '\r' || byte == '\n') // a value is one line
            byte = ' ';
    }

    const Place place = find(bytes, section, key);
    if (place.line) {
        bytes.replace(place.equals + 1, place.line->end - place.equals - 1, newValue);
    } else {
        QByteArray added = encode(key) + '=' + newValue + lineBreak;
        if (!place.hasSection)
            added.prepend('[' + encode(section) + ']' + lineBreak);
        const qsizetype at = place.hasSection ? place.sectionEnd : bytes.size();
        if (at > 0 && bytes[at - 1] != '\n')
            added.prepend(lineBreak);
        bytes.insert(at, added);
    }
    if (old && bytes == *old)
        return true;

    QSaveFile target(file);
    return target.open(QIODevice::WriteOnly) && target.write(bytes) == bytes.size() && target.commit();
}

} // namespace platform
