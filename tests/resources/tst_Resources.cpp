#include <QtTest>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QXmlStreamReader>

#include <algorithm>
#include <cstdlib>

namespace {

const QString resources = QStringLiteral(SOURCE_FOLDER "/resources/");

// Where an image is shown: on a light ground, on a black one, or on a face of its own.
enum class Ground { Light, Black, Own };

struct Icon {
    const char *name;
    int size;
    Ground ground;
};

constexpr Icon icons[] = {
    {"network", 20, Ground::Light},
    {"search", 20, Ground::Light},
    {"settings", 20, Ground::Light},
    {"printer", 20, Ground::Light},
    {"print", 20, Ground::Light},
    {"play", 20, Ground::Black},
    {"pause", 20, Ground::Black},
    {"audio", 20, Ground::Black},
    {"audio_mute", 20, Ground::Black},
    {"play_black", 20, Ground::Light},
    {"ptzplusnormal", 40, Ground::Own},
    {"ptzsubnormal", 40, Ground::Own},
    {"ptzcenter", 40, Ground::Own},
    {"ptzupnormal", 40, Ground::Own},
    {"ptzdownnormal", 40, Ground::Own},
    {"focusin", 40, Ground::Own},
    {"focusout", 40, Ground::Own},
    {"zoomin", 40, Ground::Own},
    {"zoomout", 40, Ground::Own},
};
constexpr int applicationSizes[] = {16, 32, 48, 256};

struct Image {
    QString file;
    QString source;
    int pixels;
    qreal density;
};

QVector<Image> images()
{
    QVector<Image> result;
    for (const Icon &icon : icons) {
        const QString name = icon.name;
        result << Image{name + ".png", name + ".svg", icon.size, 1.0}
               << Image{name + "@2x.png", name + ".svg", icon.size * 2, 2.0};
    }
    for (const int size : applicationSizes)
        result << Image{QStringLiteral("app_%1.png").arg(size), "app.svg", size, 1.0};
    return result;
}

QImage load(const QString &file)
{
    return QImage(":/resources/" + file).convertToFormat(QImage::Format_ARGB32);
}

QImage drawn(const QString &source, int pixels)
{
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    QSvgRenderer(resources + "svg/" + source).render(&painter);
    painter.end();
    return image.convertToFormat(QImage::Format_ARGB32);
}

template <typename Function> void forEachPixel(const QImage &image, Function function)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            function(image.pixel(x, y), x, y);
    }
}

// Two engines draw the same source differently at its edges, by less than this.
constexpr int sameDrawing = 60;

// The greatest difference of two images at one pixel, on a middle grey, from 0 to 255.
int difference(const QImage &a, const QImage &b)
{
    const auto onGrey = [](QRgb pixel) {
        return (qGray(pixel) * qAlpha(pixel) + 128 * (255 - qAlpha(pixel))) / 255;
    };
    int greatest = 0;
    forEachPixel(a, [&](QRgb pixel, int x, int y) {
        greatest = std::max(greatest, std::abs(onGrey(pixel) - onGrey(b.pixel(x, y))));
    });
    return greatest;
}

QStringList sorted(QStringList list)
{
    list.removeDuplicates();
    std::sort(list.begin(), list.end());
    return list;
}

QStringList filesOf(const QString &folder, const QString &filter)
{
    return sorted(QDir(folder).entryList({filter}, QDir::Files));
}

}

class tst_Resources : public QObject
{
    Q_OBJECT

private slots:
    void imageLoads_data();
    void imageLoads();
    void imageIsItsSourceDrawn_data() { imageLoads_data(); }
    void imageIsItsSourceDrawn();
    void iconStandsOutFromItsGround_data();
    void iconStandsOutFromItsGround();
    void iconsDiffer();
    void listNamesEveryImageAndNoOther();
    void foldersHoldEveryImageAndNoOther();
    void sourceKeepsTheSharedStroke_data();
    void sourceKeepsTheSharedStroke();
};

void tst_Resources::imageLoads_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("source");
    QTest::addColumn<int>("pixels");
    QTest::addColumn<double>("density");
    for (const Image &image : images())
        QTest::newRow(qPrintable(image.file))
            << image.file << image.source << image.pixels << image.density;
}

void tst_Resources::imageLoads()
{
    QFETCH(QString, file);
    QFETCH(int, pixels);
    QFETCH(double, density);
    const QImage image(":/resources/" + file);
    QVERIFY(!image.isNull());
    QCOMPARE(image.size(), QSize(pixels, pixels));
    QCOMPARE(image.devicePixelRatio(), density);
    QVERIFY(image.hasAlphaChannel());

    int clear = 0;
    int solid = 0;
    forEachPixel(image, [&](QRgb pixel, int, int) {
        clear += qAlpha(pixel) == 0;
        solid += qAlpha(pixel) == 255;
    });
    QVERIFY(clear > 0);
    QVERIFY2(solid >= pixels, "hardly anything is drawn");
}

// A source that was changed without exporting it again shows here.
void tst_Resources::imageIsItsSourceDrawn()
{
    QFETCH(QString, file);
    QFETCH(QString, source);
    QFETCH(int, pixels);
    QVERIFY(QSvgRenderer(resources + "svg/" + source).isValid());
    const int found = difference(load(file), drawn(source, pixels));
    QVERIFY2(found < sameDrawing, qPrintable(QString::number(found)));
}

void tst_Resources::iconStandsOutFromItsGround_data()
{
    QTest::addColumn<bool>("onBlack");
    for (const Icon &icon : icons) {
        if (icon.ground != Ground::Own)
            QTest::newRow(icon.name) << (icon.ground == Ground::Black);
    }
}

void tst_Resources::iconStandsOutFromItsGround()
{
    QFETCH(bool, onBlack);
    const QImage image = load(QTest::currentDataTag() + QStringLiteral(".png"));
    int faint = 0;
    forEachPixel(image, [&](QRgb pixel, int, int) {
        faint += qAlpha(pixel) == 255 && (onBlack ? qGray(pixel) < 200 : qGray(pixel) > 80);
    });
    QCOMPARE(faint, 0);
}

// Icons of one size are told apart. The two play icons are one shape in two colours.
void tst_Resources::iconsDiffer()
{
    for (const Icon &a : icons) {
        for (const Icon &b : icons) {
            if (&a >= &b || a.size != b.size)
                continue;
            const int found =
                difference(load(QString(a.name) + ".png"), load(QString(b.name) + ".png"));
            QVERIFY2(found > sameDrawing,
                qPrintable(QString("%1 %2: %3").arg(a.name, b.name).arg(found)));
        }
    }
}

void tst_Resources::listNamesEveryImageAndNoOther()
{
    QFile file(resources + "resources.qrc");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QXmlStreamReader reader(&file);
    QStringList listed;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == "file")
            listed << reader.readElementText();
    }
    QCOMPARE(reader.error(), QXmlStreamReader::NoError);

    QStringList expected;
    for (const Image &image : images())
        expected << image.file;
    std::sort(listed.begin(), listed.end()); // a name that stands there twice stays twice
    QCOMPARE(listed, sorted(expected));
}

void tst_Resources::foldersHoldEveryImageAndNoOther()
{
    QStringList pictures;
    QStringList sources;
    for (const Image &image : images()) {
        pictures << image.file;
        sources << image.source;
    }
    QCOMPARE(filesOf(resources, "*.png"), sorted(pictures));
    QCOMPARE(filesOf(resources + "svg", "*.svg"), sorted(sources));
}

void tst_Resources::sourceKeepsTheSharedStroke_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("stroke");
    for (const Icon &icon : icons)
        QTest::newRow(icon.name) << icon.size << 2;
    QTest::newRow("app") << 256 << 256 / 16 * 2; // 2 at its smallest size
}

// One weight of line on one grid, round ends; a source's own size is the size at which it is shown.
void tst_Resources::sourceKeepsTheSharedStroke()
{
    QFETCH(int, size);
    QFETCH(int, stroke);
    QFile file(resources + "svg/" + QTest::currentDataTag() + ".svg");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QXmlStreamReader reader(&file);
    QVERIFY(reader.readNextStartElement());
    const QXmlStreamAttributes root = reader.attributes();
    QCOMPARE(root.value("width").toInt(), size);
    QCOMPARE(root.value("height").toInt(), size);
    QCOMPARE(root.value("viewBox").toString(), QString("0 0 %1 %1").arg(size));
    QCOMPARE(root.value("stroke-width").toInt(), stroke);
    QCOMPARE(root.value("stroke-linecap").toString(), QString("round"));
    QCOMPARE(root.value("stroke-linejoin").toString(), QString("round"));
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement)
            QVERIFY(!reader.attributes().hasAttribute("stroke-width"));
    }
    QCOMPARE(reader.error(), QXmlStreamReader::NoError);
}

QTEST_GUILESS_MAIN(tst_Resources)
#include "tst_Resources.moc"
