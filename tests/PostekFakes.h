#pragma once

#include "PostekLibrary.h"
#include "PrintSpooler.h"

#include <QMap>
#include <QStringList>

// A printer's library that keeps what it is told. Commands give 0, or what `results` has for them
// under their name.
class RecordingLibrary : public PostekLibrary
{
public:
    bool load() override { return record("load", "") == 0; }
    void unload() override { record("unload", ""); }
    int openPort(const char *name) override { return record("OpenPort", name); }
    int closePort() override { return record("ClosePort", ""); }
    int clearBuffer() override { return record("PTK_ClearBuffer", ""); }
    int setLabelHeight(int height, int gap, int first, int second) override
    {
        return record("PTK_SetLabelHeight", join({height, gap, first, second}));
    }
    int setLabelWidth(int width) override { return record("PTK_SetLabelWidth", join({width})); }
    int setDarkness(int darkness) override { return record("PTK_SetDarkness", join({darkness})); }
    int setPrintSpeed(int speed) override { return record("PTK_SetPrintSpeed", join({speed})); }
    int setDirection(char direction) override
    {
        return record("PTK_SetDirection", join({direction}));
    }
    int drawText(const PostekText &t) override
    {
        return record("PTK_DrawTextTrueTypeW",
            QStringList{join({t.x, t.y, t.height, t.width}), t.font,
                join({t.orientation, t.weight, t.italic, t.underline, t.strikeOut}), t.name, t.text}
                .join(", "));
    }
    int drawQRCode(const PostekQRCode &code) override
    {
        QList<int> numbers = {code.x, code.y};
        for (int number : code.form)
            numbers.append(number);
        return record("PTK_DrawBar2D_QR", join(numbers) + ", " + code.text);
    }
    int printLabel(int sets, int copies) override
    {
        return record("PTK_PrintLabel", join({sets, copies}));
    }

    QStringList calls; // as "Name(arguments)"
    QMap<QString, int> results;

private:
    static QString join(const QList<int> &numbers)
    {
        QStringList texts;
        for (int number : numbers)
            texts.append(QString::number(number));
        return texts.join(", ");
    }

    int record(const QString &name, const QString &arguments)
    {
        calls.append(name + '(' + arguments + ')');
        return results.value(name);
    }
};

// A spooler with at most one queue, found under any name; without one it knows no name.
class RecordingSpooler : public PrintSpooler
{
public:
    Queue open(const char16_t *name) override
    {
        calls.append("open");
        this->name = QString::fromUtf16(name);
        return found ? this : nullptr;
    }

    bool read(Queue opened, PrintQueueInfo &info) override
    {
        calls.append(opened ? "read" : "read null");
        if (opened && readable)
            info = queue;
        return opened && readable;
    }

    void close(Queue opened) override { calls.append(opened ? "close" : "close null"); }

    bool found = false;
    bool readable = true;
    PrintQueueInfo queue;
    QString name; // as it was asked for
    QStringList calls;
};
