#include "ZRNetworkDialog.h"

#include "ZRConfigure.h"
#include "ZRLocalize.h"
#include "ZRNamedChild.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>

ZRNetworkDialog::ZRNetworkDialog(QWidget *parent) :
    ZRDialog(parent),
    titleLabel(namedChild<QLabel>(this, "titleLabel")),
    networkComboBox(namedChild<QComboBox>(this, "networkComboBox")),
    okButton(namedChild<QPushButton>(this, "okButton"))
{
    titleLabel->setText(ZRLocalize::translate("Please select network"));
    titleLabel->setAlignment(Qt::AlignCenter);
    okButton->setText(ZRLocalize::translate("OK"));
    connect(okButton, SIGNAL(clicked(bool)), this, SLOT(onClickOkButton(bool)));
    connect(
        networkComboBox, SIGNAL(currentIndexChanged(int)), this, SLOT(onComoBoxIndexChanged(int)));

    resize(500, 200);
    if (parent && parent->width() > 0 && parent->height() > 0)
        move((parent->width() - width()) / 2, (parent->height() - height()) / 2);
}

ZRNetworkDialog::~ZRNetworkDialog() = default;

void ZRNetworkDialog::setInterfaces(QList<QNetworkInterface> interfaces)
{
    networkComboBox->clear();
    addressEntries.clear();
    this->interfaces = interfaces;
    for (int i = 0; i < interfaces.size(); ++i) {
        for (const QNetworkAddressEntry &entry : interfaces[i].addressEntries()) {
            if (entry.ip().protocol() != QAbstractSocket::IPv4Protocol)
                continue;
            const QString text = QStringLiteral("%1 %2").arg(
                interfaces[i].humanReadableName(), entry.ip().toString());
            networkComboBox->addItem(text, i);
            addressEntries.append(entry);
        }
    }
}

void ZRNetworkDialog::setCurrentEntry(QNetworkInterface, QNetworkAddressEntry entry)
{
    const int row = addressEntries.indexOf(entry);
    if (row >= 0)
        networkComboBox->setCurrentIndex(row);
}

int ZRNetworkDialog::selectedInterface(QNetworkInterface &interface, QNetworkAddressEntry &entry)
{
    const int row = networkComboBox->currentIndex();
    if (row < 0 || row >= addressEntries.size())
        return -1;
    interface = interfaces[networkComboBox->currentData().toInt()];
    entry = addressEntries[row];
    return 0;
}

void ZRNetworkDialog::onClickOkButton(bool)
{
    QNetworkInterface interface;
    QNetworkAddressEntry entry;
    selectedInterface(interface, entry);
    if (interface.isValid()) {
        ZRConfigure configure;
        configure.setNetworkName(interface.humanReadableName());
        configure.setNetworkIp(entry.ip().toString());
    }
    accept();
}

// The choice counts at OK only.
void ZRNetworkDialog::onComoBoxIndexChanged(int) { }

void ZRNetworkDialog::resizeEvent(QResizeEvent *event)
{
    ZRDialog::resizeEvent(event);
    titleLabel->setGeometry(0, 0, width(), 40);
    networkComboBox->setGeometry(10, (height() - 160) / 2 + 40, width() - 20, 30);
    okButton->setGeometry((width() - 60) / 2, height() - 60, 60, 40);
}
