#pragma once

#include "accessfile/Storage.h"
#include "accessfile/Value.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace accessfile {

struct CalendarDay
{
    int year = 0;
    int month = 0;
    int day = 0;
};

/// Conversions by the regional settings of the station; the platform layer supplies them, the engine has none of its
/// own.
class RegionalConversions
{
public:
    virtual ~RegionalConversions() = default;
    [[nodiscard]] virtual std::optional<double> toNumber(std::string_view utf8) const = 0;
    /// The same number with all its digits; nullopt too when 38 do not hold it.
    [[nodiscard]] virtual std::optional<Numeric> toDecimal(std::string_view utf8) const = 0;
    /// Days since 1899-12-30.
    [[nodiscard]] virtual std::optional<double> toDate(std::string_view utf8) const = 0;
    [[nodiscard]] virtual std::string numberToText(double number) const = 0;
    [[nodiscard]] virtual std::string dateToText(double serial) const = 0;

    // The functions of SQL that depend on the settings; values are Null, numbers, dates or texts.
    [[nodiscard]] virtual std::string format(const Value& value, std::string_view pattern) const = 0;
    /// The day of a date, of a number or of a text that is one; nullopt for other texts and outside the years 100 to
    /// 9999.
    [[nodiscard]] virtual std::optional<CalendarDay> day(const Value& value) const = 0;
    /// The number with which a text begins, 0 without one.
    [[nodiscard]] virtual double leadingNumber(std::string_view utf8) const = 0;
    [[nodiscard]] virtual std::string upperCase(std::string_view utf8) const = 0;
    [[nodiscard]] virtual std::string lowerCase(std::string_view utf8) const = 0;
};

/// Column of a result: its name and the type of its cells.
struct ResultColumn
{
    std::string name;
    ColumnType type = ColumnType::Text;
};

/// Receives the rows of a SELECT one cell after another, so that no second copy of a large result is made.
class RowSink
{
public:
    virtual ~RowSink() = default;
    /// Comes first, and again when the rows so far are void.
    virtual void columns(const std::vector<ResultColumn>& columns) = 0;
    virtual void cell(const Value& value) = 0;
    /// Cells of text columns come here, without a Value in between.
    virtual void textCell(std::string_view utf8) = 0;
    /// After the last cell of a row; `row` addresses it for update, when the rows are those of one table.
    virtual void endRow(std::optional<RowId> row) = 0;
};

/// A database file spoken to in SQL, with the manners of Access: names in any case and in [brackets], #dates# month
/// first, text compared without regard to case, texts assigned to numbers and dates converted by the regional settings.
class Database
{
public:
    Database(std::unique_ptr<Storage> storage, const RegionalConversions& regional);
    ~Database();

    /// Runs a SELECT into the sink. It may run again where another program changed the file meanwhile: each call of
    /// RowSink::columns begins the result anew.
    void select(std::string_view statement, RowSink& sink);
    /// Runs any other statement as one unit, whole or not at all; returns the number of rows concerned.
    std::size_t execute(std::string_view statement);

    /// Table that a one-table SELECT reads; checks its names without reading a row.
    [[nodiscard]] std::string tableOf(std::string_view select);
    /// Adds or changes one row with the assignment conversions of INSERT and UPDATE; one unit, whole or not at all.
    void addRow(std::string_view table, const std::vector<std::pair<std::string, Value>>& values);
    /// `unchanged` tells, in the state that the change is made in, whether the row is still the one that the caller
    /// read; where it is not, nothing is written and Conflict is raised.
    void updateRow(std::string_view table, RowId row, const std::vector<std::pair<std::string, Value>>& changes,
                   const std::function<bool()>& unchanged = {});

    [[nodiscard]] Storage& storage() { return *m_storage; }

private:
    std::unique_ptr<Storage> m_storage;
    const RegionalConversions& m_regional;
};

} // namespace accessfile
