#include "app/ModConec.h"
#include "platform/ado/Session.h"
#include "platform/print/PrintDialog.h"
#include "platform/print/SystemPrinters.h"
#include "platform/ui/Application.h"
#include "platform/ui/RealSeams.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QIcon>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    platform::prepareApplication(application);
#ifndef Q_OS_WIN // There the windows have the program file's icon.
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/planilha.svg")));
#endif
    QGuiApplication::setDesktopFileName(QStringLiteral("planilha-de-bombas"));
    QApplication::setApplicationVersion(QStringLiteral(PLANILHA_VERSION));
    // The start-up runs loops of its own and ends the program itself.
    QApplication::setQuitOnLastWindowClosed(false);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Planilha diária de leitura de bombas de um posto"));
    parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption folder(QStringLiteral("pasta"),
                                    QStringLiteral("Pasta com ConfigINI.ini e Host.mdb, no lugar da do programa."),
                                    QStringLiteral("DIR"), QApplication::applicationDirPath());
    parser.addOption(folder);
    if (parser.parse(QApplication::arguments()) && parser.isSet(version)) {
        QApplication::setApplicationVersion(
            QApplication::applicationVersion() + QStringLiteral("\nArquivos do Access: ") +
            (ado::hasAccessDriver() ? QStringLiteral("pelo driver instalado neste computador")
                                    : QStringLiteral("pelo próprio programa")));
    }
    parser.process(application);

    platform::MessageBoxes messages;
    platform::SystemClock clock;
    platform::ApplicationEvents events;
    platform::PrintDialog chooser;
    platform::SystemDefaultPrinter defaultPrinter;
    platform::SystemSpooler spooler;
    return ModConec::Main(
        {QDir(parser.value(folder)).absolutePath(), messages, clock, events, {chooser, defaultPrinter, spooler}});
}
