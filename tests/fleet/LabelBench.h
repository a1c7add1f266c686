#pragma once

#include "HostProcess.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QTemporaryDir>
#include <QtTest>

// A home for one simulated label printer, and eyes for what it leaves there.
class LabelBench
{
public:
    QString home() const { return folder.path(); }
    QString path(const QString &name) const { return folder.filePath(name); }

    void configure(const QByteArray &json) const
    {
        QFile file(path("label-printer.json"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(json), qint64(json.size()));
    }

    QStringList labels(const QString &in = "labels") const
    {
        return QDir(path(in)).entryList({"*.png"}, QDir::Files, QDir::Name);
    }

    // The label with the highest number.
    QImage label() const { return QImage(path("labels/" + labels().value(labels().size() - 1))); }

    QVector<QJsonObject> lines(const QString &in = "labels") const
    {
        QFile file(path(in + "/calls.jsonl"));
        QVector<QJsonObject> objects;
        if (file.open(QIODevice::ReadOnly)) {
            for (const QByteArray &line : file.readAll().trimmed().split('\n'))
                objects.append(QJsonDocument::fromJson(line).object());
        }
        return objects;
    }

    QJsonObject line() const { return lines().isEmpty() ? QJsonObject() : lines().last(); }

private:
    QTemporaryDir folder;
};

namespace LabelEyes {

// The smallest rectangle around everything that isn't white.
inline QRect ink(const QImage &label)
{
    const QImage grey = label.convertToFormat(QImage::Format_Grayscale8);
    int left = grey.width(), top = -1, right = -1, bottom = -1;
    for (int y = 0; y < grey.height(); ++y) {
        const uchar *const row = grey.constScanLine(y);
        for (int x = 0; x < grey.width(); ++x) {
            if (row[x] == 255)
                continue;
            left = qMin(left, x);
            right = qMax(right, x);
            top = top < 0 ? y : top;
            bottom = y;
        }
    }
    return bottom < 0 ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

inline int inkDots(const QImage &label)
{
    const QImage grey = label.convertToFormat(QImage::Format_Grayscale8);
    int count = 0;
    for (int y = 0; y < grey.height(); ++y) {
        for (int x = 0; x < grey.width(); ++x)
            count += grey.constScanLine(y)[x] != 255;
    }
    return count;
}

// What a scanner reads from this part of the label, which gets a margin of its own.
inline QString decoded(const QImage &label, const QRect &area)
{
    constexpr int margin = 40;
    QImage part(area.size() + 2 * QSize(margin, margin), QImage::Format_RGB32);
    part.fill(Qt::white);
    QPainter(&part).drawImage(margin, margin, label.copy(area));
    const QTemporaryDir folder;
    const QString file = folder.filePath("part.png");
    part.save(file);
    const QStringList arguments = {"--quiet", "--nodbus", "--raw", HostProcess::path(file)};
    return HostProcess::output("zbarimg", arguments).trimmed();
}

// Within so many dots on each side.
inline bool isNear(const QRect &a, const QRect &b, int dots)
{
    return qAbs(a.left() - b.left()) <= dots && qAbs(a.top() - b.top()) <= dots
        && qAbs(a.right() - b.right()) <= dots && qAbs(a.bottom() - b.bottom()) <= dots;
}

}

// The product label as the program draws it on a printer of 0.0425 millimetres a dot, without
// margins: `d` converts tenths of a millimetre.
namespace ProductLabel {

constexpr int d(double tenths)
{
    return int(tenths / 0.425);
}

constexpr int side = 1059; // 45 millimetres
constexpr char code[] = "KVMR2G0001A2B3C4";
constexpr char model[] = "MR2X-A1";
constexpr char serial[] = "2408-00001";

struct Text {
    int x, y, height;
    const char *font;
    int orientation, weight;
    const char *name, *text;
};

constexpr Text modelText{d(227), d(147), d(21.5), "Arial", 1, 500, "ModelStr", model};
constexpr Text codeText{
    d(61) + d(45), d(180) + d(98) + d(1), d(13.5), "Arial Narrow", 5, 700, "P2PIDStr", code};
constexpr Text serialText{d(160), d(348), d(19.8), "Arial", 1, 600, "SNStr", serial};
constexpr int qrX = d(61);
constexpr int qrY = d(180);
constexpr int qrSide = 25 * 8; // version 2, eight dots a module

// Everything before the drawing. `Printer` is the class or the loaded library.
template <class Printer> void setUp(Printer &printer)
{
    QCOMPARE(printer.openPort("POSTEK G6000"), 0);
    QCOMPARE(printer.clearBuffer(), 0);
    QCOMPARE(printer.setLabelHeight(side, d(2.0), 0, 0), 0);
    QCOMPARE(printer.setLabelWidth(side), 0);
    QCOMPARE(printer.setDarkness(14), 0);
    QCOMPARE(printer.setPrintSpeed(5), 0);
    QCOMPARE(printer.setDirection('B'), 0);
}

template <class Printer> void draw(Printer &printer, const Text &text)
{
    QCOMPARE(printer.drawText(text.x, text.y, text.height, 0, text.font, text.orientation,
                 text.weight, 0, 0, 0, text.name, text.text),
        0);
}

template <class Printer> void drawCode(Printer &printer)
{
    QCOMPARE(printer.drawQRCode(qrX, qrY, 1, 2, 0, 8, 2, 1, 8, code), 0);
}

template <class Printer> void print(Printer &printer)
{
    setUp(printer);
    draw(printer, modelText);
    drawCode(printer);
    draw(printer, codeText);
    draw(printer, serialText);
    QCOMPARE(printer.printLabel(1, 1), 0);
    QCOMPARE(printer.closePort(), 0);
}

}
