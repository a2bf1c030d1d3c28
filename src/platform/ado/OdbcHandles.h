#pragma once

#include "platform/ado/Error.h"

#include <QString>

#ifdef _WIN32
#include <windows.h>
#endif
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <utility>

namespace ado::odbc {

/// A handle of the driver manager, freed with its owner.
template <SQLSMALLINT Type>
class Handle
{
public:
    Handle() = default;
    /// Raises ado::Error when the manager gives none.
    explicit Handle(SQLHANDLE parent);
    ~Handle() { reset(); }
    Handle(Handle&& other) noexcept
        : m_handle(std::exchange(other.m_handle, SQLHANDLE{}))
    {}
    Handle& operator=(Handle&& other) noexcept
    {
        if (this != &other) {
            reset();
            m_handle = std::exchange(other.m_handle, SQLHANDLE{});
        }
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    [[nodiscard]] SQLHANDLE get() const { return m_handle; }

private:
    void reset()
    {
        if (m_handle) {
            SQLFreeHandle(Type, m_handle);
        }
    }

    SQLHANDLE m_handle{};
};

/// The first diagnostic of a handle: native number and the driver's text; -2147467259 where the driver gives no number.
[[nodiscard]] Error diagnosis(SQLSMALLINT type, SQLHANDLE handle, const QString& statement = {});

template <SQLSMALLINT Type>
Handle<Type>::Handle(SQLHANDLE parent)
{
    if (!SQL_SUCCEEDED(SQLAllocHandle(Type, parent, &m_handle))) {
        constexpr SQLSMALLINT ParentType = Type == SQL_HANDLE_STMT ? SQL_HANDLE_DBC : SQL_HANDLE_ENV;
        m_handle = SQLHANDLE{};
        throw diagnosis(ParentType, parent);
    }
}

/// Environment that speaks ODBC 3.
[[nodiscard]] Handle<SQL_HANDLE_ENV> makeEnvironment();

/// A live connection; disconnects when it goes.
struct Link
{
    Handle<SQL_HANDLE_ENV> environment;
    Handle<SQL_HANDLE_DBC> connection;
    bool isConnected = false;

    Link();
    ~Link();
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;
};

using Statement = Handle<SQL_HANDLE_STMT>;

/// The text as the wide entry points take it; valid while `text` lives.
[[nodiscard]] inline SQLWCHAR* wide(const QString& text)
{
    static_assert(sizeof(SQLWCHAR) == sizeof(char16_t));
    return reinterpret_cast<SQLWCHAR*>(const_cast<ushort*>(text.utf16())); // The manager only reads it.
}

/// An integer or pointer-sized value where the manager wants a pointer.
[[nodiscard]] inline SQLPOINTER asPointer(SQLULEN value)
{
    return reinterpret_cast<SQLPOINTER>(value);
}

} // namespace ado::odbc
