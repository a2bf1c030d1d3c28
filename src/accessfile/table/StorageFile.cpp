#include "accessfile/table/StorageFile.h"

#include "accessfile/Error.h"
#include "accessfile/file/FileErrors.h"
#include "accessfile/file/Location.h"
#include "accessfile/format/TextCodec.h"
#include "accessfile/table/PageClaims.h"

#include <algorithm>
#include <random>
#include <utility>

namespace accessfile {

namespace {

constexpr PageNumber catalogPage = 2;
constexpr std::uint32_t systemFlags = 0x80000002;
constexpr std::uint32_t hiddenFlag = 0x08;
constexpr int openingRuns = 5;
constexpr std::chrono::milliseconds openingPause{20};

PagerOptions pagerOptions(const OpenOptions& options)
{
    PagerOptions result;
    result.readOnly = options.readOnly;
    result.cachePages = options.cachePages;
    result.waiting.limit = options.wait;
    result.waiting.notice = options.waiting;
    return result;
}

std::int32_t numberAt(const Cursor& cursor, int column)
{
    const Value value = cursor.value(column);
    const auto* number = std::get_if<std::int32_t>(&value);
    return number == nullptr ? 0 : *number;
}

} // namespace

StorageFile::StorageFile(FileSystem& files, const std::filesystem::path& file, const OpenOptions& options)
    : m_space(files, file, pagerOptions(options))
    , m_password(options.password)
    , m_catalog(m_space, catalogPage, "MSysObjects", {})
    , m_generation(m_space.pager.generation())
{
    if (!acceptsPassword(options.password))
        throw Error(ErrorKind::WrongPassword, "A senha do banco de dados não confere.");
    m_catalog.allowSystem();
    m_catalog.reload({});
    readCatalog();
    if (const auto missing = m_space.allocator.usedBehindEnd())
        checkCut(*missing);
    m_space.allocator.setClaims([this] { return claimedPages(m_space.pager, m_entries); });
}

/// Access leaves pages behind the end in its maps, and rows may have stood there. Rows that are missing keep the file
/// from being written, which would give their places to others.
void StorageFile::checkCut(PageNumber missing)
{
    try {
        for (const CatalogEntry& entry : m_entries) {
            if (entry.type != CatalogEntry::tableType)
                continue;
            const TableFile table(m_space, static_cast<PageNumber>(entry.id), entry.name, {});
            for (const auto cursor = table.scan(); cursor->next();) {
            }
        }
    } catch (const Error& error) {
        if (error.kind() != ErrorKind::Damaged)
            throw;
        m_space.pager.forbidWriting("O arquivo só pode ser lido: falta o fim dele, a partir da página " +
                                    std::to_string(missing) + ". " + error.what());
    }
}

/// Catalog and definitions are read again when another program has changed the file.
void StorageFile::follow()
{
    Pager& pager = m_space.pager;
    if (m_generation == pager.generation())
        return;
    const Bytes password = m_space.header.password();
    m_space.header = Header(*pager.page(0));
    pager.setPageKey(m_space.header.pageKey());
    if (m_space.header.password() != password && !acceptsPassword(m_password))
        throw Error(ErrorKind::WrongPassword, "A senha do banco de dados foi trocada por outro programa.");
    m_tables.clear();
    m_space.allocator.forgetFound();
    m_catalog.reload({});
    readCatalog();
    m_generation = pager.generation();
}

void StorageFile::read(const std::function<void()>& work)
{
    Pager& pager = m_space.pager;
    if (m_reading || pager.inUnit()) {
        work();
        return;
    }
    m_reading = true;
    const std::shared_ptr<void> atEnd(nullptr, [this](void*) { m_reading = false; });
    Patience patience(pager.file().files(), pager.file().waiting());
    for (int runs = 1;; ++runs) {
        pager.look();
        try {
            follow();
            work();
            if (pager.holds())
                return;
        } catch (const Error&) {
            // Half of one state and half of another looks like damage.
            if (pager.holds())
                throw;
        }
        waitForOthers(patience, runs);
    }
}

void StorageFile::change(const std::function<void()>& work)
{
    Pager& pager = m_space.pager;
    Patience patience(pager.file().files(), pager.file().waiting());
    for (int runs = 1;; ++runs) {
        bool holds = true;
        try {
            beginStatement();
            work();
            holds = pager.hasChanges() || pager.holds();
        } catch (const Error&) {
            holds = pager.holds();
            rollbackStatement();
            if (holds)
                throw;
        } catch (...) {
            rollbackStatement();
            throw;
        }
        if (!holds) {
            rollbackStatement();
            waitForOthers(patience, runs);
            continue;
        }
        try {
            commitStatement();
            return;
        } catch (const Error& error) {
            if (error.kind() != ErrorKind::Conflict)
                throw;
        }
        // Another program was quicker. Within a turn nobody is.
        pager.takeTurn();
        const std::shared_ptr<void> atEnd(nullptr, [&pager](void*) { pager.giveTurnBack(); });
        try {
            beginStatement();
            work();
        } catch (...) {
            rollbackStatement();
            throw;
        }
        commitStatement();
        return;
    }
}

void StorageFile::backup(const std::filesystem::path& to)
{
    FileSystem& files = m_space.pager.file().files();
    if (files.exists(to))
        throwExists(to);
    // The copy gets its name when it is whole.
    std::filesystem::path draft = to;
    draft += "-novo-" + std::to_string(std::random_device{}());
    const auto device = files.createNew(draft);
    try {
        read([&] { m_space.pager.copyTo(*device); });
        device->sync();
        files.publish(draft, to);
    } catch (...) {
        files.remove(draft);
        throw;
    }
}

void StorageFile::readCatalog()
{
    const int id = m_catalog.columnIndex("Id");
    const int type = m_catalog.columnIndex("Type");
    const int flags = m_catalog.columnIndex("Flags");
    const int name = m_catalog.columnIndex("Name");
    if (id < 0 || type < 0 || flags < 0 || name < 0)
        throwDamaged("catálogo de tabelas");
    std::vector<CatalogEntry> entries;
    for (const auto cursor = m_catalog.scan(); cursor->next();) {
        CatalogEntry entry;
        entry.id = numberAt(*cursor, id);
        entry.type = numberAt(*cursor, type);
        entry.flags = static_cast<std::uint32_t>(numberAt(*cursor, flags));
        entry.row = cursor->rowId();
        static_cast<void>(cursor->appendText(name, entry.name));
        entries.push_back(std::move(entry));
    }
    m_entries = std::move(entries);
}

bool StorageFile::acceptsPassword(std::string_view password) const
{
    std::string own;
    appendUtf16(m_space.header.password(), own);
    return own.empty() || own == password;
}

std::vector<std::string> StorageFile::tableNames() const
{
    std::vector<std::string> names;
    for (const CatalogEntry& entry : m_entries) {
        if (entry.type == CatalogEntry::tableType && (entry.flags & (systemFlags | hiddenFlag)) == 0)
            names.push_back(entry.name);
    }
    return names;
}

const CatalogEntry* StorageFile::find(std::string_view name) const
{
    for (const CatalogEntry& entry : m_entries) {
        const bool named = entry.type == CatalogEntry::tableType || entry.type == CatalogEntry::odbcLinkType ||
                           entry.type == CatalogEntry::queryType || entry.type == CatalogEntry::linkedType;
        if (named && sameName(entry.name, name))
            return &entry;
    }
    return nullptr;
}

Bytes StorageFile::propertiesOf(const CatalogEntry& entry)
{
    const int column = m_catalog.columnIndex("LvProp");
    if (column < 0)
        return {};
    RowReader reader(m_space, m_catalog.definition());
    reader.open(m_space.pager.page(entry.row.page), entry.row);
    const Value value = reader.value(column);
    const Bytes* blob = std::get_if<Bytes>(&value);
    return blob == nullptr ? Bytes() : *blob;
}

TableFile* StorageFile::tableFile(std::string_view name)
{
    const CatalogEntry* entry = find(name);
    if (entry == nullptr || entry->type == CatalogEntry::queryType)
        return nullptr;
    if (entry->type != CatalogEntry::tableType)
        throw Error(ErrorKind::MissingTable,
                    "A tabela '" + entry->name + "' é vinculada a outro arquivo e não pode ser lida aqui.");
    const auto page = static_cast<PageNumber>(entry->id);
    const auto held = m_tables.find(page);
    if (held != m_tables.end())
        return held->second.get();
    auto table = std::make_unique<TableFile>(m_space, page, entry->name, propertiesOf(*entry));
    return m_tables.emplace(page, std::move(table)).first->second.get();
}

Table* StorageFile::table(std::string_view name)
{
    return tableFile(name);
}

void StorageFile::beginStatement()
{
    if (m_space.pager.inUnit())
        throw Error(ErrorKind::IoError, "Já há um comando em andamento no arquivo.");
    judgeLocation();
    m_space.pager.begin();
    m_space.halfway = false;
    m_definitionsChanged = false;
    try {
        follow();
    } catch (...) {
        rollbackStatement();
        throw;
    }
}

void StorageFile::commitStatement()
{
    if (!m_space.pager.inUnit())
        return;
    if (m_space.halfway) {
        rollbackStatement();
        throw Error(ErrorKind::IoError, "O comando falhou no meio e foi desfeito.");
    }
    try {
        m_space.pager.commit();
    } catch (...) {
        rollbackStatement();
        throw;
    }
    m_space.allocator.keepUnit();
    m_definitionsChanged = false;
}

void StorageFile::rollbackStatement() noexcept
{
    m_space.pager.rollback();
    m_space.allocator.forgetUnit();
    m_space.halfway = false;
    if (!m_definitionsChanged)
        return;
    m_definitionsChanged = false;
    try {
        m_space.header = Header(*m_space.pager.page(0));
        m_catalog.reload({});
        readCatalog();
        std::erase_if(m_tables, [this](const auto& held) {
            return std::none_of(m_entries.begin(), m_entries.end(), [&](const CatalogEntry& entry) {
                return entry.type == CatalogEntry::tableType && static_cast<PageNumber>(entry.id) == held.first;
            });
        });
        for (const CatalogEntry& entry : m_entries) {
            const auto held = m_tables.find(static_cast<PageNumber>(entry.id));
            if (entry.type == CatalogEntry::tableType && held != m_tables.end())
                held->second->reload(propertiesOf(entry));
        }
    } catch (...) {
        // The definitions could not be read back: nothing more is changed through them.
        m_space.pager.forbidWriting("O arquivo só pode ser lido: as definições dele não puderam ser relidas.");
    }
}

void StorageFile::judgeLocation()
{
    if (!m_locate)
        return;
    Location location = std::exchange(m_locate, nullptr)();
    if (!location.refusal.empty())
        m_space.pager.forbidWriting("O arquivo só pode ser lido: " + location.refusal);
    m_warnings = std::move(location.warnings);
    if (!location.refusal.empty())
        m_warnings.push_back(std::move(location.refusal));
}

std::vector<std::string> StorageFile::warnings()
{
    judgeLocation();
    std::vector<std::string> all = m_warnings;
    if (const std::string& reason = m_space.pager.suspicion(); !reason.empty())
        all.push_back(reason);
    return all;
}

void StorageFile::setDefaultEvaluator(DefaultEvaluator evaluator)
{
    m_space.evaluator = std::move(evaluator);
}

std::unique_ptr<StorageFile> openStorage(FileSystem& files, const std::filesystem::path& file,
                                         const OpenOptions& options)
{
    for (int runs = 1;; ++runs) {
        try {
            auto storage = std::make_unique<StorageFile>(files, file, options);
            if (storage->space().pager.holds() || runs == openingRuns)
                return storage;
        } catch (const Error& error) {
            // What another program is just writing looks like damage.
            if (error.kind() != ErrorKind::Damaged || runs == openingRuns)
                throw;
        }
        files.pause(openingPause);
    }
}

std::unique_ptr<Storage> Storage::open(const std::filesystem::path& file, const OpenOptions& options)
{
    auto storage = openStorage(nativeFileSystem(), file, options);
    storage->setLocator([file = storage->space().pager.file().name()] { return locationOf(file); });
    return storage;
}

} // namespace accessfile
