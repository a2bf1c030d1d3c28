#pragma once

#include <QLoggingCategory>

#include <exception>

namespace platform {

/// What the program passes over without a word, for support. Off, unless the environment switches it on:
/// QT_LOGGING_RULES="planilha.erros=true".
Q_DECLARE_LOGGING_CATEGORY(ignoredErrors)

/// Notes an error that nobody is told of: its number, for a data source also the SQLSTATE, text and statement. A
/// password in a statement is left out.
void noteIgnored(const std::exception& error);

} // namespace platform
