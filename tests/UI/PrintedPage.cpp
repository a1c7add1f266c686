#include "PrintedPage.h"

#include "HostProcess.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QtTest>

#include <cmath>

namespace {

constexpr double pointsOfPixel = 72.0 / 96;
constexpr double millimetresOfPoint = 25.4 / 72;
constexpr double dotsOfCell = 10; // enough to see a module that is a quarter as wide as its place

// How many modules of a code's surroundings are read with it.
constexpr double quietModules = 4;

// Closes the gaps between modules, with a dot to spare, and no light module.
int spreadDots(double cell, double broader)
{
    const double gap = 0.75 - broader / cell; // of a module's place
    return int(std::lround(1 + gap * dotsOfCell / 2));
}

int resolutionFor(double cell)
{
    return int(std::lround(96 * dotsOfCell / cell));
}

// The dots of a rectangle, as convert is told them.
QString cropOf(const QRectF &rect, double dotsOfPixel)
{
    return QString::asprintf("%ldx%ld%+ld%+ld", std::lround(rect.width() * dotsOfPixel),
        std::lround(rect.height() * dotsOfPixel), std::lround(rect.x() * dotsOfPixel),
        std::lround(rect.y() * dotsOfPixel));
}

}

QStringList printJobs()
{
    QStringList jobs;
    const QString list = HostProcess::output("lpstat", {"-W", "all", "-o"});
    for (const QString &line : list.split('\n')) {
        if (!line.isEmpty())
            jobs.append(line.section(' ', 0, 0));
    }
    return jobs;
}

PrintedPage::PrintedPage(const QString &job) :
    file(QStringLiteral("%1/%2.pdf")
             .arg(qEnvironmentVariable("VORLYN_TEST_PRINT_FOLDER"), job.section('-', -1))),
    pdf(file)
{
    if (!QTest::qWaitFor([this] { return QFileInfo::exists(file); }, 60000))
        qWarning("%s isn't printed", qPrintable(job));
    QFile page(file);
    if (page.open(QIODevice::ReadOnly) && page.peek(4) == "%!PS") {
        pdf = HostProcess::path(folder.filePath("page.pdf"));
        HostProcess::run("ps2pdf", {file, pdf});
    }
}

QString PrintedPage::info(const QString &key) const
{
    const QString lines = HostProcess::output("pdfinfo", {pdf});
    const QRegularExpression line(
        QStringLiteral("^%1: +(.*)$").arg(key), QRegularExpression::MultilineOption);
    return line.match(lines).captured(1);
}

qint64 PrintedPage::bytes() const
{
    return QFileInfo(file).size();
}

int PrintedPage::pageCount() const
{
    return info("Pages").toInt();
}

QSizeF PrintedPage::millimetres() const
{
    const QStringList words = info("Page size").split(' ');
    return QSizeF(words.value(0).toDouble(), words.value(2).toDouble()) * millimetresOfPoint;
}

QString PrintedPage::svg() const
{
    return HostProcess::output("pdftocairo", {"-svg", pdf, "-"});
}

QVector<QRectF> PrintedPage::rects() const
{
    const QString drawn = svg();
    const QString number = QStringLiteral("(-?[0-9.]+)");
    const QRegularExpression path(QStringLiteral(
        "fill-rule:evenodd;[^>]* d=\"M %1 %1 L %1 %1 L %1 %1 L %1 %1 (Z|L %1 %1 ?\")")
                                      .arg(number));
    QVector<QRectF> rects;
    for (auto matches = path.globalMatch(drawn); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const auto corner = [&match](int first) {
            return QPointF(match.captured(first).toDouble(), match.captured(first + 1).toDouble())
                / pointsOfPixel;
        };
        rects.append(QRectF(corner(1), corner(5)));
    }
    return rects;
}

// An outline is a path around both of its edges.
int PrintedPage::outlines() const
{
    return svg().count("fill-rule:nonzero;fill:rgb(0%,0%,0%)");
}

int PrintedPage::drawings() const
{
    return svg().count(QRegularExpression("<(?!svg\\b|g\\b)[a-z]"));
}

QString PrintedPage::writing() const
{
    return QString(HostProcess::output("pdftotext", {pdf, "-"})).trimmed();
}

QByteArray PrintedPage::scan(double cell, double broader, const QStringList &convertOptions,
    const QStringList &scanOptions) const
{
    const QString page = HostProcess::path(folder.filePath("page"));
    const QString print = HostProcess::path(folder.filePath("print.png"));
    HostProcess::run("pdftoppm",
        {"-r", QString::number(resolutionFor(cell)), "-gray", "-png", "-singlefile", pdf, page});
    HostProcess::run("convert",
        QStringList(page + ".png") + convertOptions
            + QStringList({"-colorspace", "gray", "-threshold", "60%", "-morphology", "Erode",
                QStringLiteral("Square:%1").arg(spreadDots(cell, broader)), print}));
    return HostProcess::output("zbarimg",
        QStringList({"--quiet", "--nodbus", "-Sdisable", "-Sqrcode.enable"}) + scanOptions
            + QStringList(print));
}

QString PrintedPage::read(const QRectF &square, double cell, double broader) const
{
    const double quiet = quietModules * cell;
    const QRectF part = square.adjusted(-quiet, -quiet, quiet, quiet);
    return scan(cell, broader, {"-crop", cropOf(part, resolutionFor(cell) / 96.0), "+repage"},
        {"--raw", "-Sbinary"});
}

int PrintedPage::codeCount(double cell, double broader) const
{
    return scan(cell, broader, {}, {}).count("QR-Code:");
}
