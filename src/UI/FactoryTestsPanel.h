#pragma once

#include "VorlynDeviceContentWidget.h"
#include "ZRLocalize.h"

#include <QMap>

class QLineEdit;
class QPushButton;
class QTableWidget;
class VorlynDeviceGenerationWidget;

// The functions of the device, and the factory tests as a table: whether the device has the
// function that a test needs, "-" where it needs none, and the last result.
// The button, Enter or a double click opens the dialog of a test (FactoryTestHost.h), and blocks
// there handling events. An empty record disables the panel. GUI thread.
// Results are 1 for passed and 2 for failed; anything else is a test that has not run.
class FactoryTestsPanel : public VorlynDeviceContentWidget, public ZRLocalize
{
    Q_OBJECT

public:
    explicit FactoryTestsPanel(QWidget *parent);
    ~FactoryTestsPanel() override;

    // Another device (SameDevice.h) begins without results.
    void setDevice(const VorlynDevice &device) override;
    // Shows the results too, and what is reported to an open dialog. Not owned; it outlives the
    // panel or is taken away by null, but an open dialog keeps it: it outlives that too.
    void setGenerationWidget(VorlynDeviceGenerationWidget *widget);
    void onLanguageChanged() override;

    // By a test's id (FactoryTestList.h).
    int result(int id) const;

signals:
    void testFinished(int id, int state);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void setUpTable();
    void updateFunctions();
    void updateRow(int row);
    void updateRows();
    void updateButton();
    void openTest(int row);
    void layOut();

    QLineEdit *functionsLine;
    QTableWidget *testTable;
    QPushButton *openButton;
    QMap<int, int> results; // states by id
    VorlynDeviceGenerationWidget *generationWidget;
};
