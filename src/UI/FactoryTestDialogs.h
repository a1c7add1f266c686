#pragma once

#include "FactoryDialog.h"

class QLabel;
class QVBoxLayout;

struct FactoryStatus;

// What the operator is to do, what the device last reported, and the two answers, from top to
// bottom. Each update slot shows one report; the last one decides. A prompt stays as it is.
class FactoryTestDialog : public FactoryDialog
{
protected:
    FactoryTestDialog(QWidget *parent, const char *titleKey);

    // New controls, each below those before it.
    QLabel *addPrompt(const char *key); // over a status
    QLabel *addTask(const char *key); // a prompt without a status
    QLabel *addStatus(const char *key); // before the first report
    void addControl(QWidget *control);
    // Returns the one that passes; `passes` without a report when the operator judges.
    QPushButton *addAnswers(bool passes);

    // The first row for the word, in any case, of a table that ends with the row for all others.
    // Without a label the rows have neither text nor style sheet.
    static void showStatus(const FactoryStatus *table, const QString &status,
        QPushButton *passButton, QLabel *statusLabel = nullptr);

private:
    QLabel *addLabel(const char *name, const char *key, int pointSize);

    QVBoxLayout *column;
};

// The operator alone judges: nothing is reported.
class FactoryBeepTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Beep";

    explicit FactoryBeepTestDialog(QWidget *parent);
};

class FactoryFallTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Fall";

    explicit FactoryFallTestDialog(QWidget *parent);

private slots:
    void updateStatus(QString status);

private:
    QLabel *promptLabel;
    QPushButton *passButton;
};

class FactoryBreeTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Bree";

    explicit FactoryBreeTestDialog(QWidget *parent);

private slots:
    void updateStatus(QString status);

private:
    QLabel *promptLabel;
    QLabel *statusLabel;
    QPushButton *passButton;
};

class FactoryConfirmDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Confirm";

    explicit FactoryConfirmDialog(QWidget *parent);

public slots:
    void updateImage();

private:
    QLabel *statusLabel;
};

// One detection is enough: no later report takes the pass away.
class FactoryCryingDetectionDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Crying Detection";

    explicit FactoryCryingDetectionDialog(QWidget *parent);

private slots:
    void updateCryingStatus(QString status);

private:
    QLabel *statusLabel;
    QPushButton *passButton;
};

class FactoryExtTemperatureTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Ext Temperature";

    explicit FactoryExtTemperatureTestDialog(QWidget *parent);

private slots:
    void updateTemperature(double temperature);

private:
    QLabel *statusLabel;
};

class FactoryImageTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Image";

    explicit FactoryImageTestDialog(QWidget *parent);

public slots:
    void updateImage();

private:
    QLabel *statusLabel;
};

class FactoryKeyCallTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Key Call";

    explicit FactoryKeyCallTestDialog(QWidget *parent);

private slots:
    void updateStatus(QString status);

private:
    QLabel *promptLabel;
    QLabel *statusLabel;
    QPushButton *passButton;
};

class FactoryKeyWordTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Key Word";

    explicit FactoryKeyWordTestDialog(QWidget *parent);

private slots:
    void updateStatus(QString status);

private:
    QLabel *promptLabel;
    QLabel *statusLabel;
    QPushButton *passButton;
};

class FactoryMicrophoneTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Microphone";

    explicit FactoryMicrophoneTestDialog(QWidget *parent);

public slots:
    void updateMicrophone();

private:
    QLabel *statusLabel;
};

class FactoryMillimeterWaveDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Millimeter Wave";

    explicit FactoryMillimeterWaveDialog(QWidget *parent);

private slots:
    void updateStatus(QString status);

private:
    QLabel *promptLabel;
    QLabel *statusLabel;
    QPushButton *passButton;
};

// A pad whose commands go to the device that was set. Each blocks the GUI thread until the device
// answers, for as long as 3 s. A motor that still moves is stopped at the end.
class FactoryPTZTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test PTZ";

    explicit FactoryPTZTestDialog(QWidget *parent);
    ~FactoryPTZTestDialog() override;

    void setDevice(const VorlynDevice &device) override;

private:
    void send(const QString &command);

    VorlynDevice device;
    bool moving = false; // the last command was no stop
};

// Sizes in megabytes.
class FactorySDCardTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test SDCard";

    explicit FactorySDCardTestDialog(QWidget *parent);

public slots:
    void updateSDCard(int totalSize, int freeSize);

private:
    QLabel *statusLabel;
};

class FactorySpeakerTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Speaker";

    explicit FactorySpeakerTestDialog(QWidget *parent);

public slots:
    void updateSpeaker();

private:
    QLabel *statusLabel;
};

class FactoryTemperatureTestDialog : public FactoryTestDialog
{
    Q_OBJECT

public:
    static constexpr char title[] = "Test Temperature";

    explicit FactoryTemperatureTestDialog(QWidget *parent);

private slots:
    void updateTemperature(double temperature);

private:
    QLabel *statusLabel;
};
