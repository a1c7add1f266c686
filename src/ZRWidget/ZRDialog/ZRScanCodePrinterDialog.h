#pragma once

#include "ZRDialog.h"
#include "ZRLocalize.h"

class QLabel;
class QLineEdit;

// The scan station: a barcode scanner types a code and a carriage return, a product label is
// printed, and the serial moves on by one, for as long as the dialog is open. Only the window's
// close control ends it.
class ZRScanCodePrinterDialog : public ZRDialog, public ZRLocalize
{
public:
    // Prints one label; true when it went to the printer. Blocks the GUI thread.
    using PrintLabel = bool (*)(const QString &code, const QString &model, QString &sn);

    ZRScanCodePrinterDialog(QWidget *parent, PrintLabel printLabel);
    ~ZRScanCodePrinterDialog() override;

    void onLanguageChanged() override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void showMargins();
    void saveMargins();
    // Otherwise a message says what is missing.
    bool hasModelAndSerial();
    // Moves the serial on when it succeeds.
    void print(const QString &code);

    QLabel *titleLabel;
    QLineEdit *scanEdit; // the scanner's target
    QLabel *modelLabel;
    QLineEdit *modelEdit;
    QLabel *snLabel;
    QLineEdit *snEdit; // the serial to print next
    QLabel *leftLabel;
    QLabel *topLabel;
    QLineEdit *leftEdit; // millimetres, as topEdit
    QLineEdit *topEdit;
    PrintLabel printLabel;
};
