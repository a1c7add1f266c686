#include "ZRLabelSettings.h"

#include "ZRConfigure.h"

ZRLabelSettings ZRLabelSettings::read(const ZRConfigure &configure)
{
    ZRLabelSettings s;
    configure.labelSettings(
        s.width, s.height, s.column, s.left, s.top, s.right, s.bottom, s.padding);
    return s;
}

void ZRLabelSettings::write(ZRConfigure &configure) const
{
    configure.saveLabelSettings(width, height, column, left, top, right, bottom, padding);
}
