#include "PostekPrinter.h"

#include "PostekLibrary.h"
#include "PrintSpooler.h"
#include "ZRConfigure.h"
#include "ZRLabelSettings.h"
#include "ZRPrinterSettingsDialog.h"

#include <QDebug>
#include <QRect>

#include <cmath>

namespace {
constexpr const char *logName = "PostekPrinter::printMR2XQRCode";

struct LabelTexts {
    QByteArray model;
    QByteArray sn;
    QByteArray code;
};

// `dotSize` is in tenths of a millimetre.
class DotScale
{
public:
    explicit DotScale(double dotSize) : dotSize(dotSize) { }

    int ofMillimetres(double length) const { return whole(length * 10.0 / dotSize + 0.5); }
    int ofTenths(double length) const { return whole(length / dotSize); }
    int stripWidth(int columns, int columnWidth) const
    {
        return whole((columns - 1) * (20.0 / dotSize) + double(columnWidth) * columns);
    }

private:
    // Cut to the whole. A saved margin may be anything: what is no number counts as 0, and the
    // bound leaves room for the sums of a layout.
    static int whole(double dots)
    {
        constexpr double most = 1e8;
        return std::isnan(dots) ? 0 : int(qBound(-most, dots, most));
    }

    double dotSize;
};

struct TextStyle {
    double height; // tenths of a millimetre
    const char *font;
    int orientation;
    int weight;
    const char *name;
};
constexpr TextStyle modelStyle = {21.5, "Arial", 1, 500, "ModelStr"};
constexpr TextStyle codeStyle = {13.5, "Arial Narrow", 5, 700, "P2PIDStr"};
constexpr TextStyle serialStyle = {19.8, "Arial", 1, 600, "SNStr"};
constexpr std::array<int, 7> qrForm = {1, 2, 0, 8, 2, 1, 8};

bool loadLibrary(PostekLibrary &library)
{
    if (library.load()) {
        return true;
    }
    library.unload(); // what an earlier print left loaded
    qDebug("init postek failure");
    return false;
}

// The label is a fixed product: only the saved margins count, and the rest is saved as it is here.
ZRLabelSettings forceSettings(ZRConfigure &configure)
{
    ZRLabelSettings settings = ZRLabelSettings::read(configure);
    settings.width = settings.height = 45.0;
    settings.column = 1;
    settings.padding = 2.0;
    settings.write(configure);
    return settings;
}

// An accepted choice of a printer takes effect at the next print; this one goes on as it began.
bool isPostekOrAccepted(const QString &printerName)
{
    return printerName.contains("POSTEK")
        || ZRPrinterSettingsDialog(nullptr).exec() == QDialog::Accepted;
}

// The spooler's, where it knows the queue.
double dotSizeFor(const QString &printerName, double known)
{
    if (known >= 1e-08) {
        return known;
    }
    return printerName.contains("G6000") ? 0.425 : 0.85;
}

// False at the first command that fails, and what follows it is not given.
bool setUp(PostekLibrary &library, const DotScale &scale, const QRect &labelRect, int columns)
{
    return library.clearBuffer() == 0
        && library.setLabelHeight(labelRect.height(), scale.ofTenths(2.0), 0, 0) == 0
        && library.setLabelWidth(scale.stripWidth(columns, labelRect.width())) == 0
        && library.setDarkness(14) == 0 && library.setPrintSpeed(5) == 0
        && library.setDirection('B') == 0;
}

// Failures are not noticed.
void draw(PostekLibrary &library, const DotScale &scale, const ZRLabelSettings &settings,
    const LabelTexts &texts)
{
    const auto d = [&scale](double tenths) { return scale.ofTenths(tenths); };
    const auto drawText = [&](const TextStyle &style, const QPoint &at, const QByteArray &text) {
        library.drawText({at.x(), at.y(), d(style.height), 0, style.font, style.orientation,
            style.weight, 0, 0, 0, style.name, text.constData()});
    };
    const QPoint margin(scale.ofMillimetres(settings.left), scale.ofMillimetres(settings.top));
    const QPoint qr = margin + QPoint(d(61), d(180));

    drawText(modelStyle, margin + QPoint(d(227), d(147)), texts.model);
    library.drawQRCode({qr.x(), qr.y(), qrForm, texts.code.constData()});
    // The left margin counts once more than in the QR code's own place.
    drawText(codeStyle, qr + QPoint(margin.x() + d(45), d(98) + d(1)), texts.code);
    drawText(serialStyle, margin + QPoint(d(160), d(348)), texts.sn);
}
}

bool PostekPrinter::printMR2XQRCode(const QString &code, const QString &model, QString &sn)
{
    WinpskLibrary library;
    return printMR2XQRCodeBy(library, PrintSpooler::system(), code, model, sn);
}

// Only the whole road closes the port and unloads the library; the others leave them as they are.
bool PostekPrinter::printMR2XQRCodeBy(PostekLibrary &library, PrintSpooler &spooler,
    const QString &code, const QString &model, const QString &sn)
{
    if (!loadLibrary(library)) {
        return false;
    }
    const LabelTexts texts = {model.toUtf8(), sn.toUtf8(), code.toUtf8()};
    ZRConfigure configure;
    const QString printerName = configure.printerName();
    const ZRLabelSettings settings = forceSettings(configure);
    if (!isPostekOrAccepted(printerName)) {
        return false;
    }
    // The state is never -1 and so doesn't stop a print: an offline queue still gets its job.
    double dotSize = 0.0;
    if (getPrinterStatus(printerName, &dotSize, spooler) == -1
        || library.openPort(printerName.toUtf8().constData()) != 0) {
        return false;
    }
    dotSize = dotSizeFor(printerName, dotSize);
    qDebug("%s %d %lf %s %s %s\n", logName, __LINE__, dotSize, texts.model.constData(),
        texts.sn.constData(), texts.code.constData());

    const DotScale scale(dotSize);
    const QRect labelRect(
        0, 0, scale.ofMillimetres(settings.width), scale.ofMillimetres(settings.height));
    if (!setUp(library, scale, labelRect, settings.column)) {
        return false;
    }
    qDebug("%s %d rect 1 = (%d,%d,%d,%d)\n", logName, __LINE__, labelRect.left(), labelRect.top(),
        labelRect.right(), labelRect.bottom());
    draw(library, scale, settings, texts);
    library.printLabel(1, 1);
    library.closePort();
    library.unload();
    return true;
}
