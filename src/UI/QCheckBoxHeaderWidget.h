#pragma once

#include <QHeaderView>

class QCheckBox;

// A table header with a check-all box over its first section.
class QCheckBoxHeaderWidget : public QHeaderView
{
public:
    explicit QCheckBoxHeaderWidget(QWidget *parent);

    QCheckBox *const checkBox; // on the viewport, so that it paints over the section

protected:
    // Centres the box in the first section, and does nothing of what the base does.
    void updateGeometries() override;

private:
    void onSectionResized(int logicalIndex, int oldSize, int newSize);
};
