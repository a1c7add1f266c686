#pragma once

#include <functional>

#include <QApplication>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <QtTest>

// Acts on a modal dialog while its exec() blocks the test function:
//
//     ModalDriver<ZRAlertDialog> driver([](ZRAlertDialog &dialog) { dialog.accept(); });
//     QCOMPARE(ZRAlertDialog::alert("Sure?"), int(QDialog::Accepted));
//
// It waits until the active modal widget is a Dialog that shows, and acts once. Several drivers
// at once serve dialogs that open each other. The test fails if the dialog hasn't come when the
// driver is destroyed; one that waits in vain, or whose action failed a check, closes what blocks
// the test, so that a failing test ends.
template <class Dialog> class ModalDriver
{
public:
    using Action = std::function<void(Dialog &)>;

    explicit ModalDriver(Action action, int timeout = 30000) : action(action), timeout(timeout)
    {
        // Qt's own dialogs, as nobody can act on those that a system has in their place.
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        clock.start();
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] { poll(); });
        timer.start(5);
    }

    ~ModalDriver()
    {
        if (!acted) {
            QTest::qFail("The expected modal dialog never came", __FILE__, __LINE__);
        }
    }

    bool hasActed() const { return acted; }

private:
    Q_DISABLE_COPY(ModalDriver)

    void poll()
    {
        QWidget *modal = QApplication::activeModalWidget();
        auto *dialog = dynamic_cast<Dialog *>(modal); // not every dialog class has a meta-object
        if (dialog && dialog->isVisible()) {
            act(dialog);
        } else if (modal && clock.hasExpired(timeout)) {
            modal->close();
        }
    }

    void act(Dialog *dialog)
    {
        timer.stop();
        acted = true;
        const QPointer<QWidget> guard(dialog);
        action(*dialog);
        if (guard && QTest::currentTestFailed()) {
            guard->close();
        }
    }

    Action action;
    int timeout; // ms
    bool acted = false;
    QElapsedTimer clock;
    QTimer timer;
};
