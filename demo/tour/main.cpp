// A day at the demonstration station: the program as it is, worked by keys and mouse from a second thread. Needs a
// display with a window manager, and xdotool. Ends with 0 only when every step did what it should.

#include "app/ModConec.h"
#include "platform/print/PrintDialog.h"
#include "platform/print/SystemPrinters.h"
#include "platform/ui/Application.h"
#include "platform/ui/RealSeams.h"
#include "tour/Operator.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QIcon>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <iostream>
#include <thread>

namespace {

constexpr auto PatienceToEnd = std::chrono::seconds(20);

/// What the program's thread tells the person's.
struct Course
{
    std::atomic<bool> dayIsOver = false;
    std::promise<void> programEnded;
};

/// The whole day in the person's thread. A day that fails ends the process where it stands.
void live(const QString& folder, Course& course)
{
    try {
        tour::Operator person(folder);
        try {
            tour::day(person);
            course.dayIsOver = true;
            person.say(QStringLiteral("Escape ends the program"));
            person.key(QStringLiteral("Escape"));
            if (course.programEnded.get_future().wait_for(PatienceToEnd) != std::future_status::ready)
                throw tour::Failed(QStringLiteral("the program did not end"));
            person.say(QStringLiteral("the day is over: %1 pictures").arg(person.pictures()));
            return;
        } catch (const tour::Failed& failed) {
            person.say(QStringLiteral("FAILED: ") + QString::fromUtf8(failed.what()));
            person.picture(QStringLiteral("falha"));
        }
    } catch (const tour::Failed& failed) {
        std::cerr << failed.what() << std::endl;
    }
    std::_Exit(1);
}

} // namespace

int main(int argc, char* argv[])
{
    // Windows stand where they open, and no queue of this machine gets the papers.
    qputenv("PLANILHA_NO_PLACEMENT", "1");
    qputenv("CUPS_SERVER", "/nonexistent");
    QApplication application(argc, argv);
    platform::prepareApplication(application);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/planilha.svg")));
    QApplication::setQuitOnLastWindowClosed(false);

    QCommandLineParser parser;
    const QCommandLineOption station(QStringLiteral("pasta"), QStringLiteral("The station's folder."),
                                     QStringLiteral("DIR"));
    const QCommandLineOption output(QStringLiteral("destino"), QStringLiteral("Where pictures, papers and log go."),
                                    QStringLiteral("DIR"));
    parser.addOptions({station, output});
    parser.process(application);
    const QString folder = QDir(parser.value(output)).absolutePath();
    if (!parser.isSet(station) || !parser.isSet(output) || !QDir().mkpath(folder)) {
        std::cerr << "usage: tour --pasta DIR --destino DIR" << std::endl;
        return 2;
    }
    const QString stationFolder = QDir(parser.value(station)).absolutePath();
    // The print dialog takes a file's name alone as one in the home folder.
    qputenv("HOME", QFile::encodeName(folder));
    for (const QString& old : QDir(folder).entryList({QStringLiteral("*.png"), QStringLiteral("*.pdf")}, QDir::Files))
        QFile::remove(QDir(folder).filePath(old));

    platform::MessageBoxes messages;
    platform::SystemClock clock;
    platform::ApplicationEvents events;
    platform::PrintDialog chooser;
    platform::SystemDefaultPrinter defaultPrinter;
    platform::SystemSpooler spooler;

    Course course;
    std::thread person([&] { live(folder, course); });
    const int result = ModConec::Main({stationFolder, messages, clock, events, {chooser, defaultPrinter, spooler}});
    if (!course.dayIsOver) {
        // The person still waits for something that will not come any more.
        std::cerr << "the program ended before the day did" << std::endl;
        std::_Exit(1);
    }
    course.programEnded.set_value();
    person.join();
    return result;
}
