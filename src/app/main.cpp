#include "app/ModConec.h"
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
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/planilha.svg")));
    QGuiApplication::setDesktopFileName(QStringLiteral("planilha-de-bombas"));
    QApplication::setApplicationVersion(QStringLiteral(PLANILHA_VERSION));
    // The start-up runs loops of its own and ends the program itself.
    QApplication::setQuitOnLastWindowClosed(false);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Planilha diária de leitura de bombas de um posto"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption folder(QStringLiteral("pasta"),
                                    QStringLiteral("Pasta com ConfigINI.ini e Host.mdb, no lugar da do programa."),
                                    QStringLiteral("DIR"), QApplication::applicationDirPath());
    parser.addOption(folder);
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
