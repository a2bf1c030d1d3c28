#include "accessfile/Error.h"

namespace accessfile {

int Error::number() const noexcept
{
    if (m_number != 0)
        return m_number;
    switch (m_kind) {
    case ErrorKind::CannotOpen:
        return -1811;
    case ErrorKind::Locked:
        return -1024;
    case ErrorKind::Conflict:
        return 3197;
    case ErrorKind::NotADatabase:
        return -1206;
    case ErrorKind::WrongPassword:
        return -1905;
    case ErrorKind::Damaged:
        return -1028;
    case ErrorKind::ReadOnly:
        return -1809;
    case ErrorKind::Syntax:
        return -3500;
    case ErrorKind::MissingTable:
        return -1305;
    case ErrorKind::MissingColumn:
        return -3010;
    case ErrorKind::TypeMismatch:
        return -3030;
    case ErrorKind::DuplicateKey:
        return -1605;
    case ErrorKind::NullNotAllowed:
        return -3701;
    case ErrorKind::TooLong:
        return -3163;
    case ErrorKind::Duplicate:
        return -1303;
    case ErrorKind::DivisionByZero:
        return -3061;
    case ErrorKind::Overflow:
        return -3062;
    case ErrorKind::IoError:
        return -1022;
    }
    return -1;
}

} // namespace accessfile
