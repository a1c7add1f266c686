#pragma once

#include <functional>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

enum class Answer { Pass, Failure, Esc, Close, Nothing };
Q_DECLARE_METATYPE(Answer)

// An operator at the bench, who answers one modal dialog after the other for as long as he lives:
//
//     OperatorAnswers answers({Answer::Pass, Answer::Esc});
//     panel.testSpeaker();
//     QCOMPARE(answers.questions(), QStringList("Test Speaker Result"));
//
// Dialogs beyond the list of answers get the last one again.
// Thread: the GUI's.
class OperatorAnswers
{
public:
    explicit OperatorAnswers(QVector<Answer> answers) : answers(answers)
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] { poll(); });
        timer.start(5);
    }

    // Messages of the dialogs so far.
    QStringList questions() const { return questions_; }
    // Texts of the buttons under the last one of them.
    QStringList buttons() const { return buttons_; }

    // Called with each dialog right before its answer.
    std::function<void(QWidget &)> onDialog = [](QWidget &) {};

private:
    Q_DISABLE_COPY(OperatorAnswers)

    void poll()
    {
        QWidget *modal = QApplication::activeModalWidget();
        // A dialog that is gone leaves null, even if the next one stands where it stood.
        if (!modal || !modal->isVisible() || modal == current)
            return;
        current = modal;
        note(*modal);
        onDialog(*modal);
        if (current)
            give(answers.size() > 1 ? answers.takeFirst() : answers.first());
    }

    void note(const QWidget &dialog)
    {
        const auto *message = dialog.findChild<QLabel *>("messageLabel");
        questions_.append(message ? message->text() : QString());
        buttons_.clear();
        for (const char *name : {"okButton", "cancelButton"}) {
            if (const auto *button = dialog.findChild<QPushButton *>(name))
                buttons_.append(button->text());
        }
    }

    void give(Answer answer)
    {
        switch (answer) {
        case Answer::Pass:
            press("okButton");
            break;
        case Answer::Failure:
            press("cancelButton");
            break;
        case Answer::Esc:
            QTest::keyClick(current.data(), Qt::Key_Escape);
            break;
        case Answer::Close:
            current->close();
            break;
        case Answer::Nothing:
            break;
        }
    }

    // A dialog without buttons is a wait, which the operator leaves alone.
    void press(const char *name)
    {
        if (auto *button = current->findChild<QPushButton *>(name))
            QTest::mouseClick(button, Qt::LeftButton);
    }

    QVector<Answer> answers;
    QStringList questions_;
    QStringList buttons_;
    QPointer<QWidget> current;
    QTimer timer;
};
