#pragma once

#include "VorlynDevice.h"
#include "ZRProgressDialog.h"

// A search under a busy bar: construct, setSearchSeconds(), start(), exec(). When exec() accepts,
// devices() is the list sorted by MAC, empty when nobody answered.
class VorlynSearchDialog : public ZRProgressDialog
{
public:
    explicit VorlynSearchDialog(QWidget *parent);
    ~VorlynSearchDialog() override;

    void run() override;
    void cancel() override;

    // 3 by default. 0 or below searches until the operator cancels.
    void setSearchSeconds(int seconds);
    QVector<VorlynDevice> devices() const;

private:
    int searchSeconds;
    QVector<VorlynDevice> devices_;
};
