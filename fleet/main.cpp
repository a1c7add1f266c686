#include "Fleet.h"
#include "FleetCommandLine.h"
#include "FleetStream.h"
#include "StandardInput.h"
#include "StopSignals.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

enum Exit { Ended = 0, NetworkRefused = 1, WrongUse = 2 };

// Returns the status.
int complain(const QString &text, Exit status)
{
    std::fprintf(stderr, "vorlyn-fleet: %s\n", qPrintable(text));
    return status;
}

void print(const QString &text)
{
    std::fprintf(stdout, "%s\n", qPrintable(text));
    std::fflush(stdout);
}

int run(const FleetOptions &options)
{
    StopSignals stopSignals;
    QObject::connect(&stopSignals, &StopSignals::raised, qApp, &QCoreApplication::quit);
    Fleet fleet(options);
    QString error;
    const Fleet::Start result = fleet.start(&error);
    if (result != Fleet::Started)
        return complain(error, result == Fleet::BadScenario ? WrongUse : NetworkRefused);
    print(QStringLiteral("READY cameras=%1 interface=%2 first=%3 last=%4 http=%5 rtsp=%6")
              .arg(fleet.count())
              .arg(options.interface, fleet.address(0).toString(),
                  fleet.address(fleet.count() - 1).toString())
              .arg(options.httpPort)
              .arg(FleetStream::isAvailable() ? options.rtspPortOf(0) : 0));
    StandardInput input;
    QObject::connect(&input, &StandardInput::line, &fleet, [&fleet](const QByteArray &line) {
        QString problem;
        if (!fleet.order(line, &problem))
            complain(problem, WrongUse);
    });
    return QCoreApplication::exec();
}

}

int main(int argc, char *argv[])
{
    StandardInput::claim();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vorlyn-fleet"));
    FleetOptions options;
    QString text;
    switch (FleetCommandLine::read(QCoreApplication::arguments(), options, &text)) {
    case FleetCommandLine::Help:
        print(text.trimmed());
        return Ended;
    case FleetCommandLine::Version:
        print(QStringLiteral("vorlyn-fleet " VORLYN_FLEET_VERSION));
        return Ended;
    case FleetCommandLine::Wrong:
        return complain(text + QStringLiteral("; --help tells more"), WrongUse);
    case FleetCommandLine::Good:
        break;
    }
    return run(options);
}
