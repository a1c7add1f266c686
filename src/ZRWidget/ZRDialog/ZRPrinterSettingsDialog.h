#pragma once

#include "ZRDialog.h"
#include "ZRLocalize.h"

#include <array>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
struct ZRLabelSettings;

// Asks for the label printer and the shape of its labels, in millimetres. Ends accepted only when a
// valid size was saved: the settings then hold all that it shows. GUI thread only.
class ZRPrinterSettingsDialog : public ZRDialog, public ZRLocalize
{
public:
    explicit ZRPrinterSettingsDialog(QWidget *parent);
    ~ZRPrinterSettingsDialog() override;

    void onLanguageChanged() override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    // An edit and what it holds.
    struct Size {
        QLineEdit *edit;
        double ZRLabelSettings::*value;
    };

    std::array<Size, 7> sizes() const;
    void showNumbers(const ZRLabelSettings &settings);
    void addPrinters(const QString &saved);
    void save();

    QLabel *printerLabel;
    QComboBox *printerCombo;
    QLabel *widthLabel;
    QLabel *heightLabel;
    QLabel *columnLabel;
    QLabel *paddingLabel;
    QLabel *leftLabel;
    QLabel *rightLabel;
    QLabel *topLabel;
    QLabel *bottomLabel;
    QLineEdit *widthEdit;
    QLineEdit *heightEdit;
    QLineEdit *columnEdit; // labels side by side
    QLineEdit *paddingEdit; // between two labels
    QLineEdit *leftEdit;
    QLineEdit *rightEdit;
    QLineEdit *topEdit;
    QLineEdit *bottomEdit;
    QPushButton *saveButton;
};
