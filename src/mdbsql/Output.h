#pragma once

#include "accessfile/Database.h"
#include "platform/ado/AccessConversions.h"

#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

/// Text for a terminal or a line of a table: line breaks, tabs and backslashes as \n \r \t \\, every other control
/// character (that of ISO 6429's upper half too) as \xNN.
[[nodiscard]] std::string printable(std::string_view utf8);

/// The output cannot be written: a full disk, a pipe that nobody reads any more.
class OutputError : public std::runtime_error
{
public:
    OutputError();
};

/// Raises OutputError unless everything so far has been written.
void flush(std::ostream& out);

/// Writes rows as lines of tab-separated printable text, the names first.
class TextSink : public accessfile::RowSink
{
public:
    explicit TextSink(std::ostringstream& out)
        : m_out(out)
    {}

    void columns(const std::vector<accessfile::ResultColumn>& columns) override;
    void cell(const accessfile::Value& value) override;
    void textCell(std::string_view utf8) override;
    void endRow(std::optional<accessfile::RowId> row) override;

private:
    void write(std::string_view plain);

    std::ostringstream& m_out;
    bool m_first = true;
    ado::AccessConversions m_conversions;
};
