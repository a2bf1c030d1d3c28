#include "mdbsql/Script.h"

namespace {

/// What closes the text or bracketed name that is open at the end of `text`, when `open` would at its begin; '\0' for
/// none.
char quoteAfter(const std::string& text, char open)
{
    for (const char c : text) {
        if (open != '\0')
            open = c == open ? '\0' : open;
        else if (c == '\'' || c == '"' || c == '`')
            open = c;
        else if (c == '[')
            open = ']';
    }
    return open;
}

} // namespace

bool ScriptReader::next(std::string& statement)
{
    statement.clear();
    char quote = '\0';
    std::string line;
    while (std::getline(m_input, line)) {
        ++m_line;
        if (m_line == 1 && line.starts_with("\xEF\xBB\xBF"))
            line.erase(0, 3);
        const std::size_t first = line.find_first_not_of(" \t");
        const bool remark = first != std::string::npos && line.compare(first, 2, "--") == 0;
        const bool blank = first == std::string::npos || line[first] == '\r';
        if (quote == '\0' && (blank || remark))
            continue;
        if (statement.empty())
            m_begin = m_line;
        else
            statement += '\n';
        quote = quoteAfter(line, quote);
        // Inside a text the line end belongs to it, whichever it is.
        if (quote == '\0' && !line.empty() && line.back() == '\r')
            line.pop_back();
        statement += line;
        const std::size_t last = statement.find_last_not_of(" \t");
        if (quote == '\0' && last != std::string::npos && statement[last] == ';') {
            statement.erase(last);
            return true;
        }
    }
    return !statement.empty();
}
