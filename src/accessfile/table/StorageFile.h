#pragma once

#include "accessfile/file/Location.h"
#include "accessfile/table/TableFile.h"

#include <map>

namespace accessfile {

/// An object of the catalog.
struct CatalogEntry
{
    std::int32_t id = 0;
    std::int32_t type = 0;
    std::uint32_t flags = 0;
    std::string name;
    RowId row;

    static constexpr std::int32_t tableType = 1;
    static constexpr std::int32_t odbcLinkType = 4;
    static constexpr std::int32_t queryType = 5;
    static constexpr std::int32_t linkedType = 6;
};

class StorageFile : public Storage
{
public:
    StorageFile(FileSystem& files, const std::filesystem::path& file, const OpenOptions& options);

    [[nodiscard]] bool isReadOnly() const override { return m_space.pager.isReadOnly(); }
    [[nodiscard]] bool acceptsPassword(std::string_view password) const override;
    [[nodiscard]] std::vector<std::string> tableNames() const override;
    [[nodiscard]] Table* table(std::string_view name) override;
    void createTable(const std::string& name, std::span<const Column> columns, std::span<const Index> indexes) override;
    void addColumn(const std::string& table, const Column& column) override;
    void createIndex(const std::string& table, const Index& index) override;
    void dropTable(const std::string& table) override;
    void setPassword(std::string_view password) override;
    void read(const std::function<void()>& work) override;
    void change(const std::function<void()>& work) override;
    [[nodiscard]] std::uint64_t state() const override { return m_space.pager.state(); }
    void takeTurn() override { m_space.pager.takeTurn(); }
    void giveTurnBack() noexcept override { m_space.pager.giveTurnBack(); }
    void beginStatement() override;
    void commitStatement() override;
    void rollbackStatement() noexcept override;
    void setDefaultEvaluator(DefaultEvaluator evaluator) override;
    [[nodiscard]] SelfCheck verify() override; // check/Verify.cpp
    void backup(const std::filesystem::path& to) override;
    [[nodiscard]] std::vector<std::string> warnings() override;
    /// How the place of the file is judged, once, before the first change or when somebody asks.
    void setLocator(std::function<Location()> locate) { m_locate = std::move(locate); }

    /// Number of the definition page of a table, system tables included; 0 when there is none.
    [[nodiscard]] TableFile* tableFile(std::string_view name);
    /// The property blob of a table.
    [[nodiscard]] Bytes propertiesOf(const CatalogEntry& entry);
    [[nodiscard]] TableSpace& space() { return m_space; }
    [[nodiscard]] TableFile& catalog() { return m_catalog; }
    [[nodiscard]] const std::vector<CatalogEntry>& entries() const { return m_entries; }

private:
    void define(const std::function<void()>& work);
    [[nodiscard]] TableFile& definable(const std::string& table);
    [[nodiscard]] TableFile rights();
    void checkNewText(const Column& column) const;
    void addCatalogRow(const std::string& name, PageNumber page, const Bytes& properties);
    void touchCatalogRow(PageNumber page, std::optional<Bytes> properties);
    void addRights(std::int32_t object);
    [[nodiscard]] Bytes ownerOf(std::int32_t object);
    void follow();
    void judgeLocation();
    void readCatalog();
    void checkCut(PageNumber missing);
    /// Waits after a run that another program spoilt.
    void waitForOthers(Patience& patience, int runs) { m_space.pager.waitForOthers(patience, runs); }
    [[nodiscard]] const CatalogEntry* find(std::string_view name) const;

    TableSpace m_space;
    std::string m_password;
    TableFile m_catalog;
    std::uint64_t m_generation = 0; ///< Of the pages that catalog and definitions were read from.
    std::function<Location()> m_locate;
    std::vector<std::string> m_warnings;
    bool m_reading = false;
    std::vector<CatalogEntry> m_entries;
    std::map<PageNumber, std::unique_ptr<TableFile>> m_tables;
    bool m_definitionsChanged = false;
};

/// Makes a blank file through a file system of the caller's; Storage::create uses the real one.
void createStorage(FileSystem& files, const std::filesystem::path& file, std::string_view password);

/// Opens through a file system of the caller's; Storage::open uses the real one.
[[nodiscard]] std::unique_ptr<StorageFile> openStorage(FileSystem& files, const std::filesystem::path& file,
                                                       const OpenOptions& options);

} // namespace accessfile
