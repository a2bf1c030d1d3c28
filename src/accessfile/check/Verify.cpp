#include "accessfile/check/Verify.h"

#include "accessfile/Error.h"
#include "accessfile/format/DataPage.h"
#include "accessfile/format/TextCodec.h"

#include <algorithm>

// The self-check of a whole file: who owns which page, and what the catalog says.
namespace accessfile {

namespace {

constexpr PageNumber mapsPage = 1;
constexpr PageNumber firstSystemPage = 2;
constexpr PageNumber systemTableCount = 4;
constexpr std::size_t mostLines = 200; ///< Of faults, and of notes.
constexpr std::size_t shortAccount = 2;

std::string numbered(const char* what, std::uint32_t number)
{
    return std::string(what) + " " + std::to_string(number);
}

} // namespace

void VerifyRecord::fault(const std::string& text)
{
    enter(m_found.faults, m_moreFaults, text);
}

void VerifyRecord::note(const std::string& text)
{
    enter(m_found.notes, m_moreNotes, text);
}

void VerifyRecord::enter(std::vector<std::string>& list, std::size_t& more, const std::string& text)
{
    if (list.size() < mostLines)
        list.push_back(text);
    else
        ++more;
}

SelfCheck VerifyRecord::found() const
{
    SelfCheck found = m_found;
    if (m_moreFaults > 0)
        found.faults.push_back("Mais " + std::to_string(m_moreFaults) + " falhas, que não são listadas.");
    if (m_moreNotes > 0)
        found.notes.push_back("Mais " + std::to_string(m_moreNotes) + " notas, que não são listadas.");
    return found;
}

void VerifyRecord::claim(PageNumber page, const std::string& owner)
{
    if (page == 0 || page >= m_space.pager.pageCount()) {
        fault(owner + ": a página " + std::to_string(page) + " não existe.");
        return;
    }
    if (m_names.empty() || m_names.back() != owner)
        m_names.push_back(owner);
    std::uint32_t& held = m_owners[page];
    if (held != 0)
        return fault(numbered("A página", page) + " pertence a dois donos: " + m_names[held - 1] + "; " + owner + ".");
    held = static_cast<std::uint32_t>(m_names.size());
    if (m_space.allocator.isFree(page))
        fault(numbered("A página", page) + " está em uso (" + owner + ") e marcada como livre.");
}

void VerifyRecord::claimMap(RowId row, const std::string& owner)
{
    if (row.page == 0) {
        fault(owner + ": não tem mapa de páginas.");
        return;
    }
    const auto [held, fresh] = m_mapRows.emplace(row, owner);
    if (!fresh)
        fault("O mapa de páginas " + std::to_string(row.page) + "/" + std::to_string(row.slot) +
              " serve a dois donos: " + held->second + "; " + owner + ".");
    if (row.page != mapsPage && m_mapPages.insert(row.page).second) {
        claim(row.page, "mapas de páginas");
        if (row.page < m_space.pager.pageCount() && datapage::owner(*m_space.pager.page(row.page)) != 0)
            fault(numbered("A página", row.page) + " guarda mapas e tem outro dono.");
    }
}

void VerifyRecord::attempt(const std::string& what, const std::function<void()>& check)
{
    try {
        check();
    } catch (const Error& error) {
        fault(what + ": " + error.what());
    }
}

namespace {

/// The catalog's tables and what they say of each other.
class CatalogVerifier
{
public:
    CatalogVerifier(StorageFile& storage, VerifyRecord& record)
        : m_storage(storage)
        , m_space(storage.space())
        , m_record(record)
    {}

    void run()
    {
        m_record.attempt("mapa de páginas livres", [this] { checkGlobalMaps(); });
        m_record.attempt("catálogo", [this] { checkEntries(); });
        for (const CatalogEntry& entry : m_storage.entries()) {
            if (entry.type == CatalogEntry::tableType)
                m_record.attempt("Tabela '" + entry.name + "'", [&] { checkTable(entry); });
        }
        m_record.attempt("contas", [this] { checkAccounts(); });
        m_record.attempt("páginas", [this] { checkLostPages(); });
    }

private:
    void checkGlobalMaps()
    {
        m_record.claim(mapsPage, "mapas do arquivo");
        for (const std::uint8_t slot : {std::uint8_t{0}, std::uint8_t{1}}) {
            for (const PageNumber page : UsageMap(m_space.pager, {mapsPage, slot}).bitmapPages())
                m_record.claim(page, "mapas do arquivo");
        }
    }

    void checkEntries()
    {
        std::set<std::string> names;
        std::set<std::int32_t> ids;
        for (const CatalogEntry& entry : m_storage.entries()) {
            if (!ids.insert(entry.id).second)
                m_record.fault("Catálogo: o objeto " + std::to_string(entry.id) + " está duas vezes.");
            const bool named = entry.type == CatalogEntry::tableType || entry.type == CatalogEntry::queryType ||
                               entry.type == CatalogEntry::linkedType || entry.type == CatalogEntry::odbcLinkType;
            if (named && !names.insert(foldName(entry.name)).second)
                m_record.fault("Catálogo: o nome '" + entry.name + "' está duas vezes.");
        }
        for (PageNumber page = firstSystemPage; page < firstSystemPage + systemTableCount; ++page) {
            if (!ids.contains(static_cast<std::int32_t>(page)))
                m_record.fault("Catálogo: falta a tabela do sistema da página " + std::to_string(page) + ".");
        }
    }

    void checkTable(const CatalogEntry& entry)
    {
        TableFile table(m_space, static_cast<PageNumber>(entry.id), entry.name, m_storage.propertiesOf(entry));
        if (!table.properties().readable())
            m_record.fault("Tabela '" + entry.name + "': as propriedades não são legíveis.");
        TableVerifier(m_space, m_record, table).run();
    }

    void checkAccounts()
    {
        std::set<std::int32_t> served;
        eachAccount(m_storage.catalog(), "Owner", "Id", [](std::int32_t) {});
        const auto rights = m_storage.tableFile("MSysACEs");
        if (rights == nullptr)
            return;
        eachAccount(*rights, "SID", "ObjectId", [&](std::int32_t object) { served.insert(object); });
        for (const CatalogEntry& entry : m_storage.entries()) {
            if (entry.type == CatalogEntry::tableType && !served.contains(entry.id))
                m_record.fault("Tabela '" + entry.name + "': ninguém tem direitos sobre ela.");
        }
    }

    /// Account ids are masked with a key of the header: those of the fixed accounts tell whether it is the right one.
    void eachAccount(const TableFile& table, const char* account, const char* object,
                     const std::function<void(std::int32_t)>& take)
    {
        static const std::set<Bytes> known = {{3, 1}, {2, 1}, {2, 3}, {2, 4}};
        const int accountColumn = table.columnIndex(account);
        const int objectColumn = table.columnIndex(object);
        if (accountColumn < 0 || objectColumn < 0)
            throwDamaged("tabela '" + table.name() + "'");
        for (const auto cursor = table.scan(); cursor->next();) {
            const Value id = cursor->value(objectColumn);
            const std::int32_t number = std::holds_alternative<std::int32_t>(id) ? std::get<std::int32_t>(id) : 0;
            take(number);
            const Value masked = cursor->value(accountColumn);
            if (!std::holds_alternative<Bytes>(masked))
                continue;
            Bytes plain = std::get<Bytes>(masked);
            applyRc4(m_space.header.accountKey(), plain);
            if (plain.size() == shortAccount && !known.contains(plain))
                m_record.fault("Tabela '" + table.name() + "': a conta do objeto " + std::to_string(number) +
                               " não confere com o cabeçalho.");
        }
    }

    void checkLostPages()
    {
        std::size_t lost = 0;
        PageNumber first = 0;
        for (PageNumber page = 1; page < m_space.pager.pageCount(); ++page) {
            if (!m_record.isClaimed(page) && !m_space.allocator.isFree(page) && lost++ == 0)
                first = page;
        }
        if (lost > 0)
            m_record.note("Páginas que não são livres nem de ninguém: " + std::to_string(lost) + ", a primeira é a " +
                          std::to_string(first) + ".");
    }

    StorageFile& m_storage;
    TableSpace& m_space;
    VerifyRecord& m_record;
};

} // namespace

SelfCheck StorageFile::verify()
{
    SelfCheck found;
    read([&] {
        VerifyRecord record(m_space);
        CatalogVerifier(*this, record).run();
        found = record.found();
    });
    return found;
}

} // namespace accessfile
