#pragma once

#include <QStringList>
#include <QTemporaryDir>

namespace support {

/// Has the statement trace written to a file of its own while it lives.
class StatementTrace
{
public:
    StatementTrace();
    ~StatementTrace();
    StatementTrace(const StatementTrace&) = delete;
    StatementTrace& operator=(const StatementTrace&) = delete;

    /// Lines since the beginning or the last clear(): "open ..." and "exec ...".
    [[nodiscard]] QStringList lines() const;
    void clear();

private:
    [[nodiscard]] QString path() const { return m_folder.filePath(QStringLiteral("trace.txt")); }

    QTemporaryDir m_folder;
};

} // namespace support
