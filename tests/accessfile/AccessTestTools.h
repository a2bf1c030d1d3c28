#pragma once

#include "accessfile/Error.h"
#include "accessfile/FaultyFiles.h"
#include "accessfile/table/StorageFile.h"

#include <QString>

#include <random>

// What the tests of the storage share.
namespace accesstest {

using Rows = std::vector<std::vector<std::string>>;
/// A row to insert: nullopt takes the autonumber, the default or Null.
using Cells = std::vector<std::optional<accessfile::Value>>;
using Changes = std::vector<std::pair<int, accessfile::Value>>;

/// A cell as the other reader shows it; null is the empty text.
[[nodiscard]] std::string cellText(const accessfile::Value& value);
/// Cells of every row as texts, in the order of a scan; null and the empty text look the same.
[[nodiscard]] Rows rowsOf(const accessfile::Table& table);
[[nodiscard]] bool exporterInstalled();
/// First difference between the tables and rows that the engine reads and those that another reader of the format
/// does; empty when there is none.
[[nodiscard]] QString exportDifference(accessfile::Storage& storage, const QString& file, std::size_t* cells = nullptr);

/// Everything a file holds, for comparing two states of it.
[[nodiscard]] std::string contentOf(accessfile::Storage& storage);
[[nodiscard]] QString joined(const std::vector<std::string>& lines);
/// Faults and notes.
[[nodiscard]] QString joined(const accessfile::SelfCheck& check);

/// Folder of the real files, empty when it is not there.
[[nodiscard]] QString sharedFolder();
[[nodiscard]] QByteArray fileBytes(const QString& file);
[[nodiscard]] std::vector<accessfile::RowId> rowIdsOf(const accessfile::Table& table);

[[nodiscard]] accessfile::Column column(const char* name, accessfile::ColumnType type, int length = 0);
[[nodiscard]] accessfile::Index index(const char* name, std::vector<accessfile::IndexColumn> columns,
                                      bool unique = false);
/// Kind of the error that `action` raises; nullopt when it raises none.
[[nodiscard]] std::optional<accessfile::ErrorKind> errorOf(const std::function<void()>& action);

/// A data file on files in memory.
class MemoryStation
{
public:
    /// A blank file, or one with the content given.
    explicit MemoryStation(const accessfile::OpenOptions& options = {}, const accessfile::Bytes& content = {});
    accessfile::StorageFile* operator->() { return m_storage.get(); }
    accessfile::StorageFile& operator*() { return *m_storage; }
    FaultyFiles& files() { return m_files; }
    [[nodiscard]] accessfile::Bytes bytes() const { return m_files.content(stationFile); }
    void reopen(const accessfile::OpenOptions& options = {});
    /// What the self-check finds.
    [[nodiscard]] QString faults() { return joined(m_storage->verify()); }

private:
    FaultyFiles m_files;
    std::unique_ptr<accessfile::StorageFile> m_storage;
};

/// Random values of a column's type.
class ValueMaker
{
public:
    explicit ValueMaker(unsigned seed)
        : m_engine(seed)
    {}
    [[nodiscard]] accessfile::Value value(const accessfile::Column& column);
    /// A value for every column but the autonumbers.
    [[nodiscard]] Cells row(const std::vector<accessfile::Column>& columns);
    /// A number from 0 up to the limit, which is left out; 0 where it is 0.
    [[nodiscard]] std::size_t below(std::size_t limit);

private:
    [[nodiscard]] std::string text(std::size_t length);
    std::mt19937 m_engine;
};

} // namespace accesstest
