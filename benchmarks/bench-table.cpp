// bench-table [ROWS]: from setDevices to painted, and one scroll step, on the present display.
#include "CVTableWidget.h"
#include "Figures.h"
#include "VorlynDevicesWidget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QScrollBar>

namespace {

const int fillRuns = 5;
const int scrollSteps = 100;

QVector<VorlynDevice> makeDevices(int count)
{
    QVector<VorlynDevice> devices;
    for (int i = 0; i < count; ++i) {
        VorlynDevice device;
        device.setMac(QStringLiteral("02:00:00:00:%1:%2")
                          .arg(i / 256, 2, 16, QLatin1Char('0'))
                          .arg(i % 256, 2, 16, QLatin1Char('0')));
        device.setIp(QStringLiteral("10.0.%1.%2").arg(i / 256).arg(i % 256));
        devices << device;
    }
    return devices;
}

// Everything that is posted, layout and paint included, is done when it returns.
void settle(QWidget *window)
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
    window->repaint();
}

template <typename Step> double milliseconds(Step step)
{
    QElapsedTimer timer;
    timer.start();
    step();
    return timer.nsecsElapsed() / 1e6;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const int rows = application.arguments().value(1, QStringLiteral("5000")).toInt();

    VorlynDevicesWidget panel(nullptr);
    panel.resize(400, 580);
    panel.show();
    settle(&panel);

    QVector<double> fills;
    for (int i = 0; i < fillRuns; ++i) {
        const QVector<VorlynDevice> devices = makeDevices(rows);
        fills << milliseconds([&] {
            panel.setDevices(devices);
            settle(&panel);
        });
    }
    printFigures(QStringLiteral("table, %1 rows, setDevices to painted").arg(rows), fills, "ms");

    QScrollBar *bar = panel.tableWidget()->verticalScrollBar();
    QVector<double> steps;
    for (int i = 0; i < scrollSteps; ++i) {
        steps << milliseconds([&] {
            bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
            settle(&panel);
        });
    }
    printFigures(QStringLiteral("table, %1 rows, one scroll step").arg(rows), steps, "ms");
    return 0;
}
