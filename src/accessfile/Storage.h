#pragma once

#include "accessfile/Value.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The file as tables of rows: what the SQL layer stands on. Standard C++ only. All functions raise accessfile::Error.
namespace accessfile {

struct Column
{
    std::string name;
    ColumnType type = ColumnType::Text;
    int length = 0; ///< Characters for Text, bytes for Binary; 0 where the type fixes it.
    std::uint8_t precision = 0;
    std::uint8_t scale = 0;
    bool autonumber = false;
    bool required = false;
    bool allowZeroLength = true;
    std::optional<std::string> defaultExpression; ///< Text of the expression as stored: 0, "x", Date(), Now().
};

struct IndexColumn
{
    int column = 0; ///< Position in Table::columns().
    bool ascending = true;
};

struct Index
{
    std::string name;
    std::vector<IndexColumn> columns;
    bool unique = false;
    bool primary = false;
    bool required = false;
    bool ignoreNulls = false;
};

/// Bounds of a range over an index's first column; an absent bound is open. Both ends by the index's own order.
struct KeyRange
{
    std::optional<Value> lower;
    bool lowerInclusive = true;
    std::optional<Value> upper;
    bool upperInclusive = true;
};

/// Walks rows. Cells are decoded only when asked for. Not valid any more once the table has been changed.
class Cursor
{
public:
    virtual ~Cursor() = default;
    virtual bool next() = 0;
    [[nodiscard]] virtual RowId rowId() const = 0;
    [[nodiscard]] virtual Value value(int column) const = 0;
    /// Fast path for Text columns: appends the UTF-8 of the cell to `out`; false when the cell is Null.
    virtual bool appendText(int column, std::string& out) const = 0;
};

class Table
{
public:
    virtual ~Table() = default;
    [[nodiscard]] virtual const std::string& name() const = 0;
    [[nodiscard]] virtual const std::vector<Column>& columns() const = 0;
    [[nodiscard]] virtual const std::vector<Index>& indexes() const = 0;
    /// Position of a column, case ignored; -1 when there is none.
    [[nodiscard]] virtual int columnIndex(std::string_view name) const = 0;

    [[nodiscard]] virtual std::unique_ptr<Cursor> scan() const = 0;
    /// Rows whose first key column lies in the range, in index order. Nulls are never in a range. Only for indexes that
    /// hold every non-null row and whose keys are computable; usableForRange tells.
    [[nodiscard]] virtual bool usableForRange(int index) const = 0;
    [[nodiscard]] virtual std::unique_ptr<Cursor> range(int index, const KeyRange& range) const = 0;

    /// Adds a row. `values` has one entry per column, already of the column's type; nullopt takes the autonumber, the
    /// default or Null. Constraints are checked before anything is changed.
    virtual RowId insert(std::span<const std::optional<Value>> values) = 0;
    virtual void update(RowId row, std::span<const std::pair<int, Value>> changes) = 0;
    virtual void erase(RowId row) = 0;
};

struct OpenOptions
{
    std::string password;
    bool readOnly = false;
    std::size_t cachePages = 4096;
    /// How long a statement waits for other programs that have the file; counted anew as long as they are writing, up
    /// to a minute.
    std::chrono::milliseconds wait = std::chrono::seconds(10);
    /// Called with true when such a wait becomes noticeable, and with false at its end.
    std::function<void(bool)> waiting = {};
};

/// Evaluates a stored default expression to a value of the column's type; set by the SQL layer.
using DefaultEvaluator = std::function<Value(const Column&, std::string_view expression)>;

/// What a self-check finds, a line each.
struct SelfCheck
{
    std::vector<std::string> faults; ///< What a reader may stumble over, or what gets lost.
    std::vector<std::string> notes;  ///< What Access leaves behind and nothing suffers from: lost space, old counts.
};

/// An open file, which other programs may have open too; opened read-only where it cannot be written.
/// A statement is the unit of change: between beginStatement and commitStatement everything is in memory; commit makes
/// it durable through the rollback journal, all or nothing; rollback forgets it.
class Storage
{
public:
    virtual ~Storage() = default;
    [[nodiscard]] static std::unique_ptr<Storage> open(const std::filesystem::path& file, const OpenOptions& options);
    /// Makes a blank file, with a database password when one is given; an existing file is an error.
    static void create(const std::filesystem::path& file, std::string_view password = {});

    [[nodiscard]] virtual bool isReadOnly() const = 0;
    /// Whether the open file would open with that password; one without password opens with any.
    [[nodiscard]] virtual bool acceptsPassword(std::string_view password) const = 0;
    /// User tables, in catalog order.
    [[nodiscard]] virtual std::vector<std::string> tableNames() const = 0;
    /// Table by name, case ignored; nullptr when there is none. The pointer stays good until the next statement, which
    /// may find the table changed by another program.
    [[nodiscard]] virtual Table* table(std::string_view name) = 0;

    virtual void createTable(const std::string& name, std::span<const Column> columns,
                             std::span<const Index> indexes) = 0;
    virtual void addColumn(const std::string& table, const Column& column) = 0;
    virtual void createIndex(const std::string& table, const Index& index) = 0;
    virtual void dropTable(const std::string& table) = 0;

    /// Sets, changes or (empty) removes the database password; account ids are masked anew with it.
    virtual void setPassword(std::string_view password) = 0;

    /// Runs `work`, which reads only, so that all it reads is of one state of the file. It runs again when another
    /// program changed the file meanwhile: what an earlier run gave is void then. Locked when that has no end.
    virtual void read(const std::function<void()>& work) = 0;
    /// Runs `work` as a statement and commits it. It may run again, undone before, when another program changed the
    /// file meanwhile. What reading alone answers (an error, nothing to change) waits for nobody.
    virtual void change(const std::function<void()>& work) = 0;
    /// Another number for each state of the file, whoever changed it: what was read at another number may be outdated.
    [[nodiscard]] virtual std::uint64_t state() const = 0;
    /// Keeps all others from writing until giveTurnBack, so that several statements follow on each other. Locked when
    /// somebody else has the file and does not leave it in time. Turns may be taken one within another.
    virtual void takeTurn() = 0;
    virtual void giveTurnBack() noexcept = 0;

    // A statement in pieces, for callers that are alone: Conflict at its commit when they are not.
    virtual void beginStatement() = 0;
    virtual void commitStatement() = 0;
    virtual void rollbackStatement() noexcept = 0;

    virtual void setDefaultEvaluator(DefaultEvaluator evaluator) = 0;
    /// Self-check of the whole file.
    [[nodiscard]] virtual SelfCheck verify() = 0;
    /// Copies the file as it is now to a new one, whole or not at all; an existing file is an error.
    virtual void backup(const std::filesystem::path& to) = 0;
    /// What the operator should know about sharing the file from where it lies, as sentences.
    [[nodiscard]] virtual std::vector<std::string> warnings() = 0;
};

/// Sort key of a text in the file format's General order; equal keys mean equal texts (case and trailing blanks
/// ignored, accents not). nullopt for a character outside the order.
[[nodiscard]] std::optional<std::string> textSortKey(std::string_view utf8);

} // namespace accessfile
