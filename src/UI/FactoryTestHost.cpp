#include "FactoryTestHost.h"

#include "FactoryTestList.h"
#include "VorlynDeviceGenerationWidget.h"
#include "VorlynSDK.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QScopedPointer>

namespace {
QJsonObject *takeFromSDK()
{
    VorlynSDK *sdk = VorlynSDK::instance();
    return sdk ? sdk->takeMessage() : nullptr;
}

void discard(const FactoryReportThread::Source &source)
{
    while (const QJsonObject *message = source())
        delete message;
}

// Any thread: the slots cross by themselves.
void deliver(const VorlynReport &report, const char *slot, FactoryDialog &dialog)
{
    const auto call = [&](QGenericArgument first = {}, QGenericArgument second = {}) {
        QMetaObject::invokeMethod(&dialog, slot, Qt::DirectConnection, first, second);
    };
    switch (VorlynReport::contentOf(report.function)) {
    case VorlynReport::Content::Status:
        call(Q_ARG(QString, report.status));
        break;
    case VorlynReport::Content::Temperature:
        call(Q_ARG(double, report.temperature));
        break;
    case VorlynReport::Content::Sizes:
        call(Q_ARG(int, report.totalSize), Q_ARG(int, report.freeSize));
        break;
    case VorlynReport::Content::Networks: // setInfos() does not cross; the slot comes after it
        QMetaObject::invokeMethod(&dialog, "setInfos", Qt::QueuedConnection,
            Q_ARG(int, report.scanResult), Q_ARG(QVector<VorlynDeviceWiFiInfo>, report.networks));
        call();
        break;
    case VorlynReport::Content::Nothing:
        call();
        break;
    }
}
}

FactoryTestHost::FactoryTestHost(const VorlynDevice &device) : device(device), source(takeFromSDK)
{ }

void FactoryTestHost::setGenerationWidget(VorlynDeviceGenerationWidget *widget)
{
    generationWidget = widget;
}

void FactoryTestHost::setSource(const FactoryReportThread::Source &source)
{
    this->source = source;
}

int FactoryTestHost::run(const FactoryTest &test)
{
    const QScopedPointer<FactoryDialog> dialog(test.make(nullptr));
    dialog->setDevice(device);
    const int answer = test.slot ? runWithReports(test, *dialog) : dialog->exec();
    return answer == QDialog::Accepted ? FactoryTestPassed : FactoryTestFailed;
}

int FactoryTestHost::runWithReports(const FactoryTest &test, FactoryDialog &dialog)
{
    discard(source);
    const auto sink = [this, &test, &dialog](const VorlynReport &report) {
        if (report.function != test.report)
            return;
        deliver(report, test.slot, dialog);
        if (generationWidget)
            show(report);
    };
    const QScopedPointer<FactoryReportThread> thread(
        new FactoryReportThread(device.srcid(), source, sink));
    thread->start();
    const int answer = dialog.exec();
    thread->stop();
    thread->wait();
    if (generationWidget) // what is still on its way, before the operator's answer
        QCoreApplication::sendPostedEvents(generationWidget, QEvent::MetaCall);
    return answer;
}

// On the reports' thread.
void FactoryTestHost::show(const VorlynReport &report) const
{
    VorlynDeviceGenerationWidget *widget = generationWidget;
    switch (report.function) {
    case VorlynReport::Function::SDCard: {
        const int result = report.totalSize < 1 ? FactoryTestFailed : FactoryTestPassed;
        QMetaObject::invokeMethod(widget, "updateSDCardResult", Qt::DirectConnection,
            Q_ARG(int, result), Q_ARG(int, report.freeSize), Q_ARG(int, report.totalSize));
        break;
    }
    case VorlynReport::Function::MillimeterWave: // does not cross by itself
        QMetaObject::invokeMethod(
            widget, "updateMillimeterWave", Qt::QueuedConnection, Q_ARG(QString, report.status));
        break;
    case VorlynReport::Function::WiFi:
        QMetaObject::invokeMethod(
            widget, [widget, report] { widget->setWiFiInfos(report.networks); },
            Qt::QueuedConnection);
        break;
    default:
        break;
    }
}
