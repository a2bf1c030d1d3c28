#include "shared/Emitente.h"

#include "platform/ado/Recordset.h"
#include "platform/ui/Boundary.h"

Emitente Module1::carrega_emitente(ado::Connection& connection)
{
    Emitente emitente;
    platform::leaveQuietly([&] {
        ado::Recordset datEmit;
        datEmit.Open(QStringLiteral("Select * from DatEmit;"), connection);
        const auto step = [&](QString& target, const std::function<QString()>& read) {
            platform::carryOn([&] { target = read(); });
        };
        step(emitente.RazaoSocial, [&] { return datEmit.Fields(u"RazaoSocial").textOrEmpty(); });
        step(emitente.IE, [&] { return datEmit.Fields(u"IE").textOrEmpty(); });
        step(emitente.CNPJ, [&] { return datEmit.Fields(u"CNPJ").textOrEmpty(); });
        step(emitente.endereco, [&] {
            return datEmit.Fields(u"endereco").textOrEmpty() + QStringLiteral(", ") +
                   datEmit.Fields(u"Municipio").textOrEmpty() + QStringLiteral(", ") +
                   datEmit.Fields(u"telefone").textOrEmpty();
        });
    });
    return emitente;
}
