#pragma once

#include <QString>

namespace ado {

/// Appends one line, `open ` or `exec ` and the statement (line breaks as \n), to the file named by the environment
/// variable PLANILHA_SQL_TRACE; does nothing without it. Statements that AddNew and Update make up are not the
/// program's and are not traced.
void traceOpen(const QString& statement);
void traceExecute(const QString& statement);

} // namespace ado
