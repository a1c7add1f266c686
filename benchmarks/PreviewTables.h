#pragma once

#include "PreviewFigures.h"

#include <QString>

// Prints the figures, a table for each kind and a row for each player.
class PreviewTables
{
public:
    struct Row {
        QString player;
        PreviewFigures figures;
    };
    explicit PreviewTables(const QVector<Row> &rows) : rows(rows) { }

    void printStarts() const;
    void printLatencies() const;
    void printRecoveries() const;
    void printUse() const;

private:
    const QVector<Row> rows;
};
