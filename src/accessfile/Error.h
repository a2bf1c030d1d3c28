#pragma once

#include <stdexcept>
#include <string>

namespace accessfile {

/// What went wrong, for callers that react to the kind. The message is for the operator: that of a statement in the
/// words of the Access driver, that of a file in Portuguese.
enum class ErrorKind {
    CannotOpen,   ///< Missing file, no permission, I/O error.
    Locked,       ///< Another program has the file and does not leave it in time.
    Conflict,     ///< Another program changed what the caller had read; nothing was written.
    NotADatabase, ///< Not a file of this format, or a generation that is not served.
    WrongPassword,
    Damaged,  ///< Structure that cannot be followed safely.
    ReadOnly, ///< Write to a file or table that can only be read; the message says why.
    Syntax,   ///< Statement that is not understood.
    MissingTable,
    MissingColumn, ///< An unknown name is a parameter without value.
    TypeMismatch,
    DuplicateKey,
    NullNotAllowed,
    TooLong,   ///< Text or row over its limit.
    Duplicate, ///< Table, column or index that exists already.
    DivisionByZero,
    Overflow,
    IoError ///< Reading or writing failed midway; the statement was undone.
};

class Error : public std::runtime_error
{
public:
    Error(ErrorKind kind, const std::string& message)
        : std::runtime_error(message)
        , m_kind(kind)
    {}

    /// With the driver's number for this very message, where its kind has several.
    Error(ErrorKind kind, const std::string& message, int number)
        : std::runtime_error(message)
        , m_kind(kind)
        , m_number(number)
    {}

    [[nodiscard]] ErrorKind kind() const noexcept { return m_kind; }
    /// The number that the Access driver reports for the message, else for its kind.
    [[nodiscard]] int number() const noexcept;

private:
    ErrorKind m_kind;
    int m_number = 0; ///< 0: the kind's.
};

} // namespace accessfile
