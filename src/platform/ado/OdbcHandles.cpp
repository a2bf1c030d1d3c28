#include "platform/ado/OdbcHandles.h"

#include <array>

namespace ado::odbc {

Error diagnosis(SQLSMALLINT type, SQLHANDLE handle, const QString& statement)
{
    std::array<SQLWCHAR, 6> state{};
    SQLINTEGER native = 0;
    std::array<SQLWCHAR, 1024> text{};
    SQLSMALLINT length = 0;
    const SQLRETURN result = SQLGetDiagRecW(type, handle, 1, state.data(), &native, text.data(),
                                            static_cast<SQLSMALLINT>(text.size()), &length);
    QString message;
    if (SQL_SUCCEEDED(result)) {
        message = QString::fromUtf16(reinterpret_cast<const char16_t*>(text.data())); // Ends in a NUL, cut or not.
    }
    if (message.isEmpty()) {
        message = QStringLiteral("Erro não especificado do driver ODBC.");
    }
    constexpr int Unspecified = -2147467259;
    return Error(native != 0 ? static_cast<int>(native) : Unspecified, message, statement,
                 QString::fromUtf16(reinterpret_cast<const char16_t*>(state.data())));
}

Handle<SQL_HANDLE_ENV> makeEnvironment()
{
    Handle<SQL_HANDLE_ENV> environment{SQLHANDLE{}};
    SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, asPointer(SQL_OV_ODBC3), 0);
    return environment;
}

Link::Link()
    : environment(makeEnvironment())
    , connection(environment.get())
{}

Link::~Link()
{
    if (isConnected) {
        SQLDisconnect(connection.get());
    }
}

} // namespace ado::odbc
