#include "accessfile/file/DataFile.h"

#include "accessfile/Error.h"
#include "accessfile/file/FileErrors.h"
#include "accessfile/file/LockRanges.h"

namespace accessfile {

namespace {
constexpr std::chrono::milliseconds nameLook{100};
}

DataFile::DataFile(FileSystem& files, const std::filesystem::path& file, Company company, const Waiting& waiting)
    : m_files(files)
    , m_name(files.resolved(file))
    , m_company(company)
    , m_waiting(waiting)
    , m_lockFile(files, m_name)
    , m_reader(files.openToRead(m_name))
    , m_identity(m_reader->identity())
{}

DataFile::~DataFile()
{
    giveTurnBack();
}

CommitTable DataFile::table()
{
    CommitTable found;
    device().read(CommitTable::offset, found.bytes());
    return found;
}

std::optional<CommitTable> DataFile::tableIfOpen()
{
    try {
        return table();
    } catch (const Error& error) {
        if (error.kind() != ErrorKind::Locked)
            throw;
        return std::nullopt;
    }
}

void DataFile::setSlot(std::size_t number, std::uint16_t value)
{
    std::array<std::uint8_t, 2> bytes{};
    store16(bytes.data(), value);
    m_writer->write(CommitTable::offset + 2 * number, bytes);
}

bool DataFile::replaced()
{
    if (m_company == Company::Alone)
        return false;
    const std::chrono::milliseconds now = m_files.now();
    if (m_nameSeen && now - *m_nameSeen < nameLook)
        return false;
    m_nameSeen = now;
    return m_files.identityOf(m_name) != m_identity;
}

void DataFile::requireName()
{
    if (m_company == Company::Shared && m_files.identityOf(m_name) != m_writer->identity())
        throwCannotOpen(m_name, "foi retirado ou trocado por outro. Nada foi gravado");
}

void DataFile::reopen()
{
    m_reader = m_files.openToRead(m_name);
    m_identity = m_reader->identity();
    ++m_openings;
}

std::optional<LockFile::Holder> DataFile::holder()
{
    if (m_company == Company::Alone)
        return std::nullopt;
    return m_lockFile.holder(*m_reader);
}

bool DataFile::userPresent(std::size_t slot)
{
    return m_company == Company::Shared && m_lockFile.userPresent(*m_reader, static_cast<std::uint32_t>(slot));
}

bool DataFile::attemptTurn()
{
    if (m_company == Company::Shared && !m_lockFile.tryTake(*m_reader))
        return false;
    if (!openWriter()) {
        m_writer.reset();
        m_lockFile.leaveUsers();
        return false;
    }
    m_lockFile.leaveQueue();
    return true;
}

bool DataFile::openWriter()
{
    // Asked before the file is opened for writing, and only once nobody is seen in the lock file: on a network share
    // that opening alone disturbs others.
    if (m_company == Company::Shared && m_reader->openForWriting())
        return false;
    m_writer = m_files.openToWrite(m_name);
    if (!m_writer)
        return false;
    if (m_company == Company::Alone)
        return true;
    if (m_writer->identity() != m_identity)
        reopen();
    return m_writer->tryLock(lockrange::wholeFile);
}

bool DataFile::tryTurn()
{
    const bool taken = attemptTurn();
    if (!taken)
        m_lockFile.release();
    return taken;
}

void DataFile::takeTurn()
{
    Patience patience(m_files, m_waiting);
    try {
        while (!attemptTurn()) {
            patience.sees(tableIfOpen());
            if (!patience.pause())
                throwInUse();
        }
    } catch (...) {
        m_writer.reset();
        m_lockFile.release();
        throw;
    }
}

void DataFile::throwInUse()
{
    const std::optional<LockFile::Holder> holder = this->holder();
    m_lockFile.release();
    std::string who = "por outro programa";
    if (holder && !holder->machine.empty())
        who = "no computador '" + holder->machine + "'";
    throw Error(ErrorKind::Locked, "O arquivo de dados está em uso " + who +
                                       " e não foi liberado a tempo. Nada foi gravado. Feche-o lá, ou espere que "
                                       "termine, e tente novamente.");
}

void DataFile::giveTurnBack() noexcept
{
    if (m_writer && m_company == Company::Shared) {
        try {
            m_writer->unlock(lockrange::wholeFile);
        } catch (...) {
            // Closing gives it back.
        }
    }
    m_writer.reset();
    m_lockFile.release();
}

} // namespace accessfile
