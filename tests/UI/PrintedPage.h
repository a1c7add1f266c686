#pragma once

#include <QRectF>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

// Pages that came out of the test's print server, as independent programs read them: lpstat,
// poppler's and ImageMagick's tools and a barcode reader. Pixels are those of the screen on which
// the label was laid out, 96 to the inch. What fails is empty, after a warning.

// Names of all jobs so far, QUEUE-NUMBER.
QStringList printJobs();

class PrintedPage
{
public:
    // Waits until the job is printed.
    explicit PrintedPage(const QString &job);

    qint64 bytes() const;
    int pageCount() const;
    QSizeF millimetres() const;
    // The filled rectangles in the order in which they were drawn, without their outlines.
    QVector<QRectF> rects() const;
    int outlines() const;
    // How many things were drawn in all: fills, outlines, pictures and letters.
    int drawings() const;
    // What is written on it, without space around it.
    QString writing() const;
    // The text of the code that fills a square, read as a thermal printer would print it: dots of
    // heat that run into each other. `cell` is the place of one module, and `broader` what a driver
    // makes it broader than the quarter of its place as which it is drawn.
    QString read(const QRectF &square, double cell, double broader = 0) const;
    // How many codes the whole page shows, printed the same way.
    int codeCount(double cell, double broader = 0) const;

private:
    QString info(const QString &key) const;
    QString svg() const;
    QByteArray scan(double cell, double broader, const QStringList &convertOptions,
        const QStringList &scanOptions) const;

    QString file; // as it came out
    QString pdf;
    QTemporaryDir folder;
};
