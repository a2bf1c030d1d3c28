#include "app/EntryMirror.h"

#include "platform/os/LockedFile.h"

#include <QDir>
#include <QRandomGenerator>

using EntryRecords::Entry;
using platform::LockedFile;

namespace {

constexpr QLatin1StringView FilePrefix("lancamento-");
constexpr QLatin1StringView FileSuffix(".linhas");

std::filesystem::path pathOf(const QString& folder, const QString& name)
{
    return QDir(folder).filePath(name).toStdU16String();
}

std::string_view bytesOf(const QByteArray& records)
{
    return {records.constData(), static_cast<std::size_t>(records.size())};
}

} // namespace

EntryMirror::EntryMirror(EntryRecords::Source source, QString userFolder)
    : m_userFolder(std::move(userFolder))
{
    m_sheet.source = std::move(source);
    m_disk.setMaxThreadCount(1);
}

EntryMirror::~EntryMirror() = default;

void EntryMirror::add(const EntryGrid::Line& line, QDate day, const QDateTime& when)
{
    m_sheet.day = day;
    m_sheet.last = when;
    m_sheet.entries.push_back({line, Entry::Open});
    write(EntryRecords::adds(line, day, when));
    syncSoon();
}

void EntryMirror::remove(int row)
{
    m_sheet.entries.erase(m_sheet.entries.begin() + (row - 1));
    write(EntryRecords::removes(row));
    syncSoon();
}

void EntryMirror::clear()
{
    if (m_sheet.entries.empty())
        return;
    m_sheet.entries.clear();
    write(EntryRecords::empties());
    syncSoon();
}

void EntryMirror::setDay(QDate day)
{
    if (m_sheet.entries.empty() || day == m_sheet.day)
        return;
    m_sheet.day = day;
    write(EntryRecords::moves(day));
    syncSoon();
}

void EntryMirror::mark(int row, Entry::Mark mark)
{
    m_sheet.entries.at(static_cast<std::size_t>(row - 1)).mark = mark;
    write(EntryRecords::marks(row, mark));
}

void EntryMirror::begin(int row)
{
    mark(row, Entry::Begun);
    if (m_file)
        m_file->sync();
}

void EntryMirror::stored(int row)
{
    mark(row, Entry::Stored);
    syncSoon();
}

void EntryMirror::discard()
{
    m_sheet.entries.clear();
    if (m_file)
        m_file->remove();
    m_file.reset();
}

void EntryMirror::write(const QByteArray& record)
{
    if (m_file) {
        m_unwritten += record;
        if (m_file->append(bytesOf(m_unwritten)))
            m_unwritten.clear();
    } else if (!m_sheet.entries.empty()) {
        m_file = makeFile(m_sheet.source.settingsFolder);
        if (!m_file && QDir().mkpath(m_userFolder))
            m_file = makeFile(m_userFolder);
    }
}

std::shared_ptr<LockedFile> EntryMirror::makeFile(const QString& folder) const
{
    const QString number = QString::number(QRandomGenerator::system()->generate(), 16).rightJustified(8, u'0');
    auto file = LockedFile::create(pathOf(folder, FilePrefix + number + FileSuffix));
    if (!file || file->append(bytesOf(EntryRecords::whole(m_sheet))))
        return file;
    file->remove();
    return nullptr;
}

void EntryMirror::syncSoon()
{
    // Typing does not wait for the disk.
    if (!m_file || m_syncWaits.exchange(true))
        return;
    m_disk.start([this, file = m_file] {
        m_syncWaits = false;
        file->sync();
    });
}

std::vector<EntryMirror::Left> EntryMirror::left() const
{
    std::vector<Left> found;
    for (const QString& folder : {m_sheet.source.settingsFolder, m_userFolder}) {
        const QStringList names = QDir(folder).entryList({FilePrefix + u'*' + FileSuffix}, QDir::Files, QDir::Name);
        for (const QString& name : names) {
            Left left{{}, LockedFile::open(pathOf(folder, name))};
            const std::optional<std::string> records = left.file ? left.file->contents() : std::nullopt;
            if (!records)
                continue; // Of a program that runs, or not ours to read.
            left.sheet = EntryRecords::read(*records);
            const bool isOver = left.sheet.lines(Entry::Open).empty() && left.sheet.lines(Entry::Begun).empty();
            if (isOver)
                forget(left);
            else if (left.sheet.source == m_sheet.source)
                found.push_back(std::move(left));
        }
    }
    return found;
}

void EntryMirror::takeOver(Left left)
{
    m_file = std::move(left.file);
    m_sheet = std::move(left.sheet);
    m_file->cut(m_sheet.bytes); // Behind half a record nothing more would be read.
    for (int row = static_cast<int>(m_sheet.entries.size()); row >= 1; --row) {
        if (m_sheet.entries[static_cast<std::size_t>(row - 1)].mark != Entry::Open)
            remove(row);
    }
}

void EntryMirror::forget(const Left& left)
{
    left.file->remove();
}
