#include "app/ModConec.h"

#include "app/frmAguardeP.h"
#include "app/frmprincipal.h"
#include "data/StationDatabase.h"
#include "platform/ui/Boundary.h"
#include "platform/ui/Seams.h"
#include "registers/frmsenha.h"
#include "shared/Emitente.h"
#include "shared/Services.h"

#include <QApplication>
#include <QEventLoop>

namespace ModConec {

int Main(const Environment& environment)
{
    data::StationDatabase database(environment.folder);
    environment.events.DoEvents();
    Emitente emitente;
    if (!platform::orEndProgram(environment.messages, [&] {
            database.open(environment.messages);
            database.addStockCodeColumn();
            emitente = Module1::carrega_emitente(database.DataConnection());
        }))
        return 1;
    // The place of a data file may make it unsafe to share: whoever looks after it must know.
    for (const QString& warning : database.DataConnection().warnings())
        environment.messages.MsgBox(warning, platform::vbExclamation);

    const Services services{database.DataConnection(), database.dialect(), environment.messages, environment.clock,
                            environment.events};
    const SupervisorGate gate([&] { return frmsenha::ask(services, emitente, QApplication::activeWindow()); });
    bool denied = true;
    if (!platform::orEndProgram(environment.messages, [&] { denied = gate.RequireSupervisor(); }))
        return 1;
    if (denied)
        return 0;

    frmAguardeP aguarde;
    aguarde.show();
    environment.events.DoEvents();
    frmprincipal principal(services, database, gate, emitente, environment.printers);
    QEventLoop untilClosed;
    QObject::connect(&principal, &frmprincipal::encerrado, &untilClosed, &QEventLoop::quit);
    if (!platform::orEndProgram(environment.messages, [&] {
            principal.carrega();
            principal.show();
        }))
        return 1;
    aguarde.close();
    if (!principal.isClosed())
        platform::tellAndStay(environment.messages, [&] { principal.oferece_linhas(); });
    if (!principal.isClosed())
        untilClosed.exec();
    return 0;
}

} // namespace ModConec
