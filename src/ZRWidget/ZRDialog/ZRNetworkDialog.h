#pragma once

#include "ZRDialog.h"

#include <QList>
#include <QNetworkAddressEntry>
#include <QNetworkInterface>

class QComboBox;
class QLabel;
class QPushButton;

// Asks on which interface and IPv4 address the program speaks to the devices. Only OK counts: it
// stores the choice in the settings before exec() returns. Restarting the network is the caller's.
class ZRNetworkDialog : public ZRDialog
{
    Q_OBJECT

public:
    explicit ZRNetworkDialog(QWidget *parent);
    ~ZRNetworkDialog() override;

    // One row for each IPv4 address of each interface.
    void setInterfaces(QList<QNetworkInterface> interfaces);
    // Selects the row of the address, if there is one; the interface isn't looked at.
    void setCurrentEntry(QNetworkInterface interface, QNetworkAddressEntry entry);
    // 0, or -1 with both arguments left alone when no row is selected.
    int selectedInterface(QNetworkInterface &interface, QNetworkAddressEntry &entry);

protected:
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void onClickOkButton(bool checked);
    void onComoBoxIndexChanged(int index);

private:
    QLabel *titleLabel;
    QComboBox *networkComboBox;
    QPushButton *okButton;
    QList<QNetworkInterface> interfaces; // a row's user data is its position here
    QList<QNetworkAddressEntry> addressEntries; // one a row
};
