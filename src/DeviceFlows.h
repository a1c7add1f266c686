#pragma once

class QModelIndex;
class QString;
class VorlynDevice;
class VorlynDeviceVideoView;
class VorlynDevicesWidget;

// What a window with a device table, a preview and a header does, whatever else it shows. Those
// that open a dialog block in it, handling events. GUI thread.
namespace DeviceFlows {

// On the network of the settings. Without a usable interface it starts all the same, on none: its
// threads go on trying. The SDK exists.
void startSavedNetwork();
void stopNetwork();
// The network dialog. True when another network was started, and a search is due.
bool chooseNetwork();
// The search dialog. The preview stops; when the dialog is accepted, the table has its devices and
// the first one is current.
void search(VorlynDeviceVideoView &preview, VorlynDevicesWidget &table);
// What a new current cell means to the preview. `currentRow` is the window's: whose stream is
// shown.
void showStream(
    VorlynDeviceVideoView &preview, const VorlynDevice &device, int row, int &currentRow);
// What is on the path, from the start. The view keeps nothing of the stream before: pictures of
// another hardware decoder look like those of the same one, and can't be drawn on its device.
void startStream(VorlynDeviceVideoView &preview, const QString &path);
// A double click on the table: the device's page in the browser, if it was on the address.
void openDevicePage(const VorlynDevicesWidget &table, const QModelIndex &index);
void openSettings();
void openPrinterSettings();
void openScanCode();

}
