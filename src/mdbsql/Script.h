#pragma once

#include <istream>
#include <string>

/// Cuts a script into statements: each ends with a ; at the end of a line, outside of quotes. Lines that begin with --
/// are remarks.
class ScriptReader
{
public:
    explicit ScriptReader(std::istream& input)
        : m_input(input)
    {}

    /// Reads the next statement, without its ;. False at the end of the script.
    bool next(std::string& statement);
    /// Line, counted from 1, on which the statement begins.
    [[nodiscard]] int line() const { return m_begin; }

private:
    std::istream& m_input;
    int m_line = 0;
    int m_begin = 0;
};
