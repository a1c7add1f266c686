#pragma once

#include "VorlynDevice.h"
#include "ZRWidget.h"

class CVTableWidget;
class QCheckBoxHeaderWidget;
class VLCheckItemWidget;

// The device table and the program's working list of devices: row i shows the record with index i.
// Callers get copies and hand changed ones back through updateDevices(). GUI thread only.
class VorlynDevicesWidget : public ZRWidget
{
    Q_OBJECT

public:
    explicit VorlynDevicesWidget(QWidget *parent);

    // Replaces the list and numbers it anew. An empty list leaves the old rows blank.
    void setDevices(QVector<VorlynDevice> devices);
    // Merges changed records by their index, as a device's MAC may be what has changed. Records of
    // unknown index are skipped.
    void updateDevices(QVector<VorlynDevice> devices);
    // An empty record for a row that is out of range.
    VorlynDevice device(int row) const;
    // The ticked ones, in row order.
    QVector<VorlynDevice> selectedDevices() const;
    CVTableWidget *tableWidget() const;
    void setCurrentCell(int row, int column);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void deleteCells();
    void setUpColumns();
    void addDeviceRow(int row, const VorlynDevice &device);
    void updateDeviceRow(int row, const VorlynDevice &device);
    VLCheckItemWidget *checkCell(int row) const;
    void onHeaderCheckClicked();
    void onItemCheckClicked(bool checked, int row);

    QVector<VorlynDevice> devices;
    CVTableWidget *tableWidget_;
    QCheckBoxHeaderWidget *headerWidget;
};
