#include "FleetLabelPrinter.h"

#include "FleetLabelFolder.h"
#include "FleetLabelItems.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>

#include <climits>
#include <cstring>

namespace {

constexpr int largestSide = 20000;
constexpr int farthest = 100000; // from the label's corner
constexpr int longestText = 4096;
constexpr int mostLabels = 1000;
constexpr int highestDarkness = 20;
constexpr int palestInk = 230; // as grey

int refuse(QJsonObject &line, int result, const QString &reason)
{
    line[QStringLiteral("reason")] = reason;
    return result;
}

QJsonValue valueOf(const char *text)
{
    return text ? QJsonValue(QString::fromUtf8(text)) : QJsonValue();
}

bool isGood(const char *text)
{
    return text && std::strlen(text) <= longestText;
}

// Of the first text that is none, or an empty text.
QString complaint(std::initializer_list<const char *> texts)
{
    for (const char *text : texts) {
        if (!isGood(text))
            return QStringLiteral("a text is missing or longer than %1 bytes").arg(longestText);
    }
    return QString();
}

}

FleetLabelPrinter::FleetLabelPrinter(const QString &home) : settings(home) { }

int FleetLabelPrinter::openPort(const char *name)
{
    // A port that was left open is taken over.
    return obey("OpenPort", {{"arguments", QJsonArray{valueOf(name)}}}, [&](QJsonObject &line) {
        const FleetLabelSettings::Values &values = settings.values();
        if (!name || !(values.anyPort || values.ports.contains(QString::fromUtf8(name))))
            return refuse(line, Refused, QStringLiteral("no such port"));
        open = true;
        return int(Done);
    });
}

int FleetLabelPrinter::closePort()
{
    return command("ClosePort", {}, {}, [this](QJsonObject &) {
        open = false;
        return Done;
    });
}

int FleetLabelPrinter::clearBuffer()
{
    return command("PTK_ClearBuffer", {}, {}, [this](QJsonObject &) {
        items.clear();
        return Done;
    });
}

int FleetLabelPrinter::setLabelHeight(int height, int gap, int offset, int flag)
{
    return command("PTK_SetLabelHeight", {height, gap, offset, flag},
        {{"height", height, 1, largestSide}, {"gap", gap, 0, largestSide}}, [&](QJsonObject &) {
            this->height = height;
            return Done;
        });
}

int FleetLabelPrinter::setLabelWidth(int width)
{
    return command(
        "PTK_SetLabelWidth", {width}, {{"width", width, 1, largestSide}}, [&](QJsonObject &) {
            this->width = width;
            return Done;
        });
}

int FleetLabelPrinter::setDarkness(int darkness)
{
    return command("PTK_SetDarkness", {darkness}, {{"darkness", darkness, 0, highestDarkness}},
        [&](QJsonObject &) {
            this->darkness = darkness;
            return Done;
        });
}

int FleetLabelPrinter::setPrintSpeed(int speed)
{
    return command("PTK_SetPrintSpeed", {speed}, {{"speed", speed, 0, INT_MAX}},
        [](QJsonObject &) { return Done; });
}

int FleetLabelPrinter::setDirection(int direction)
{
    return command("PTK_SetDirection", {direction}, {}, [&](QJsonObject &line) {
        if (direction != 'B' && direction != 'T')
            return refuse(line, Refused, QStringLiteral("direction must be B (66) or T (84)"));
        upsideDown = direction == 'T';
        return int(Done);
    });
}

int FleetLabelPrinter::drawText(int x, int y, int height, int width, const char *font,
    int orientation, int weight, int italic, int underline, int strikeOut, const char *name,
    const char *text)
{
    return command("PTK_DrawTextTrueTypeW",
        {x, y, height, width, valueOf(font), orientation, weight, italic, underline, strikeOut,
            valueOf(name), valueOf(text)},
        {{"x", x, -farthest, farthest}, {"y", y, -farthest, farthest},
            {"height", height, 1, largestSide}, {"width", width, 0, largestSide},
            {"orientation", orientation, 1, 8}, {"weight", weight, 0, 1000}},
        [&](QJsonObject &line) {
            const QString problem = FleetLabelText::isPossible()
                ? complaint({font, text})
                : QStringLiteral("no text in a process without a QGuiApplication");
            if (!problem.isEmpty())
                return refuse(line, Refused, problem);
            const FleetLabelText item{x, y, height, width, QString::fromUtf8(font), orientation,
                weight, italic != 0, underline != 0, strikeOut != 0, QString::fromUtf8(text)};
            items.emplace_back([item](QPainter &painter) { item.draw(painter); });
            return int(Done);
        });
}

int FleetLabelPrinter::drawQRCode(int x, int y, int width, int height, int orientation,
    int magnification, int mode, int level, int mask, const char *text)
{
    constexpr int bytes = 2, automatic = 8;
    return command("PTK_DrawBar2D_QR",
        {x, y, width, height, orientation, magnification, mode, level, mask, valueOf(text)},
        {{"x", x, -farthest, farthest}, {"y", y, -farthest, farthest}, {"height", height, 0, 40},
            {"orientation", orientation, 0, 3}, {"magnification", magnification, 1, 100},
            {"mode", mode, bytes, bytes}, {"level", level, 0, 3},
            {"mask", mask, automatic, automatic}},
        [&](QJsonObject &line) {
            QString problem = complaint({text});
            if (!problem.isEmpty())
                return refuse(line, Refused, problem);
            const FleetLabelCode item{
                x, y, magnification, FleetLabelCode::encode(text, height, level, orientation)};
            if (item.modules.isNull())
                return refuse(line, Refused, QStringLiteral("no QR code holds this text"));
            items.emplace_back([item](QPainter &painter) { item.draw(painter); });
            return int(Done);
        });
}

int FleetLabelPrinter::printLabel(int sets, int copies)
{
    return command("PTK_PrintLabel", {sets, copies},
        {{"sets", sets, 1, mostLabels}, {"copies", copies, 1, mostLabels}},
        [&](QJsonObject &line) { return print(sets * copies, line); });
}

int FleetLabelPrinter::record(const char *call)
{
    return obey(call, {}, [](QJsonObject &) { return Done; });
}

int FleetLabelPrinter::obey(const char *call, QJsonObject line, const Act &act)
{
    const QString trouble = settings.refresh();
    const FleetLabelFolder folder(settings.values().folder);
    if (!trouble.isEmpty())
        folder.record({{"trouble", trouble}});
    const FleetLabelSettings::Failure *const failure =
        settings.failureOf(QString::fromLatin1(call));
    const int result =
        failure ? refuse(line, failure->result, QStringLiteral("as told")) : act(line);
    line[QStringLiteral("call")] = QLatin1String(call);
    line[QStringLiteral("result")] = result;
    folder.record(line);
    return result;
}

// A call that goes through the open port.
int FleetLabelPrinter::command(
    const char *call, const QJsonArray &arguments, const Limits &limits, const Act &act)
{
    return obey(call, {{"arguments", arguments}}, [&](QJsonObject &line) {
        if (!open)
            return refuse(line, PortClosed, QStringLiteral("no open port"));
        for (const Limit &limit : limits) {
            if (limit.value < limit.first || limit.value > limit.last)
                return refuse(line, Refused,
                    QStringLiteral("%1 must be %2 to %3")
                        .arg(QLatin1String(limit.what))
                        .arg(limit.first)
                        .arg(limit.last));
        }
        return act(line);
    });
}

int FleetLabelPrinter::print(int count, QJsonObject &line)
{
    if (count > mostLabels)
        return refuse(line, Refused, QStringLiteral("more than %1 labels at once").arg(mostLabels));
    if (width == 0 || height == 0)
        return refuse(line, Refused, QStringLiteral("the label has no size yet"));
    QBuffer png;
    if (!picture().save(&png, "PNG"))
        return refuse(line, NotWritten, QStringLiteral("no memory for the picture"));
    QString error;
    const QStringList names =
        FleetLabelFolder(settings.values().folder).store(png.data(), count, &error);
    line[QStringLiteral("labels")] = QJsonArray::fromStringList(names);
    return names.size() == count ? int(Done) : refuse(line, NotWritten, error);
}

QImage FleetLabelPrinter::picture() const
{
    const int ink = palestInk - palestInk * darkness / highestDarkness;
    QImage image(width, height, QImage::Format_Mono);
    image.setColorTable({qRgb(255, 255, 255), qRgb(ink, ink, ink)});
    image.fill(0);
    QPainter painter(&image);
    for (const auto &item : items)
        item(painter);
    painter.end();
    if (upsideDown)
        image = image.mirrored(true, true);
    const int dotsPerMeter = qRound(settings.values().density * 1000);
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    return image;
}
