#include "Frames.h"
#include "ZRYuvPicture.h"

#include <QtTest>

class tst_ZRYuvPicture : public QObject
{
    Q_OBJECT

private slots:
    void coloursOfAFrame_data();
    void coloursOfAFrame();
    void factorsGiveWhiteAndPrimaries_data();
    void factorsGiveWhiteAndPrimaries();
    void takesTheFramesPlanes();
    void roundsChromaUp();
    void rowsInsideOfABuffer_data();
    void rowsInsideOfABuffer();
    void isInWholeFramesOnly();
};

void tst_ZRYuvPicture::coloursOfAFrame_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("space");
    QTest::addColumn<int>("range");
    QTest::addColumn<double>("kr");
    QTest::addColumn<bool>("full");

    struct Row {
        const char *name;
        AVPixelFormat format;
        AVColorSpace space;
        AVColorRange range;
        double kr;
        bool full;
    };
    const Row rows[] = {
        {"nothing said", AV_PIX_FMT_YUV420P, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED, 0.299,
            false},
        {"by the format", AV_PIX_FMT_YUVJ420P, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED,
            0.299, true},
        {"the format is stronger", AV_PIX_FMT_YUVJ420P, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_MPEG,
            0.299, true},
        {"full by name", AV_PIX_FMT_YUV420P, AVCOL_SPC_BT470BG, AVCOL_RANGE_JPEG, 0.299, true},
        {"BT.709", AV_PIX_FMT_YUV420P, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, 0.2126, false},
        {"BT.2020", AV_PIX_FMT_YUV420P, AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG, 0.2627, false},
        {"SMPTE 240M", AV_PIX_FMT_YUV420P, AVCOL_SPC_SMPTE240M, AVCOL_RANGE_MPEG, 0.212, false},
    };
    for (const Row &row : rows) {
        QTest::newRow(row.name) << int(row.format) << int(row.space) << int(row.range) << row.kr
                                << row.full;
    }
}

void tst_ZRYuvPicture::coloursOfAFrame()
{
    QFETCH(const int, format);
    QFETCH(const int, space);
    QFETCH(const int, range);
    const Frame frame = bareFrame(4, 4, format);
    frame->colorspace = AVColorSpace(space);
    frame->color_range = AVColorRange(range);

    const ZRVideoColours colours = ZRVideoColours::of(*frame);

    QTEST(colours.fullRange, "full");
    QFETCH(const double, kr);
    QVERIFY(std::abs(double(colours.kr) - kr) < 1e-6);
    QCOMPARE(colours.black(), colours.fullRange ? 0 : 16);
}

void tst_ZRYuvPicture::factorsGiveWhiteAndPrimaries_data()
{
    QTest::addColumn<float>("kr");
    QTest::addColumn<float>("kb");
    QTest::addColumn<bool>("full");
    QTest::newRow("BT.601 limited") << 0.299f << 0.114f << false;
    QTest::newRow("BT.601 full") << 0.299f << 0.114f << true;
    QTest::newRow("BT.709 limited") << 0.2126f << 0.0722f << false;
    QTest::newRow("BT.709 full") << 0.2126f << 0.0722f << true;
}

// Forwards by the definition of Y'CbCr, back by the factors.
void tst_ZRYuvPicture::factorsGiveWhiteAndPrimaries()
{
    QFETCH(const float, kr);
    QFETCH(const float, kb);
    QFETCH(const bool, full);
    const ZRVideoColours::Factors f = ZRVideoColours{kr, kb, full}.factors();
    const double colours[][3] = {{1, 1, 1}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.2, 0.5, 0.9}};
    for (const auto &[r, g, b] : colours) {
        const double luma = double(kr) * r + double(1 - kr - kb) * g + double(kb) * b;
        const double y = luma * (full ? 255 : 219);
        const double u = (b - luma) / double(1 - kb) / 2 * (full ? 255 : 224);
        const double v = (r - luma) / double(1 - kr) / 2 * (full ? 255 : 224);
        QVERIFY(std::abs(double(f.y) * y + double(f.rv) * v - 255 * r) < 0.01);
        QVERIFY(std::abs(double(f.y) * y + double(f.gu) * u + double(f.gv) * v - 255 * g) < 0.01);
        QVERIFY(std::abs(double(f.y) * y + double(f.bu) * u - 255 * b) < 0.01);
    }
}

void tst_ZRYuvPicture::takesTheFramesPlanes()
{
    const Frame frame = greyFrame(64, 48, AV_PIX_FMT_YUVJ420P);

    const ZRYuvPicture picture = ZRYuvPicture::of(*frame);

    QCOMPARE(picture.width, 64);
    QCOMPARE(picture.height, 48);
    QVERIFY(picture.colours.fullRange);
    for (int plane = 0; plane < 3; ++plane) {
        QCOMPARE(picture.planes[plane], frame->data[plane]);
        QCOMPARE(picture.strides[plane], frame->linesize[plane]);
        QCOMPARE(picture.row(plane, 3), frame->data[plane] + 3 * frame->linesize[plane]);
    }
}

void tst_ZRYuvPicture::roundsChromaUp()
{
    ZRYuvPicture picture;
    picture.width = 5;
    picture.height = 3;
    QCOMPARE(picture.rowLength(0), 5);
    QCOMPARE(picture.rows(0), 3);
    for (const int plane : {1, 2}) {
        QCOMPARE(picture.rowLength(plane), 3);
        QCOMPARE(picture.rows(plane), 2);
    }
}

void tst_ZRYuvPicture::rowsInsideOfABuffer_data()
{
    QTest::addColumn<int>("at"); // of a buffer of 100 bytes
    QTest::addColumn<int>("stride");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("rows");

    struct Row {
        const char *name;
        int at, stride, length, rows;
    };
    const Row rows[] = {
        {"as many as asked for", 0, 10, 10, 7},
        {"a last row that just fits", 30, 10, 10, 7},
        {"a last row one byte too long", 31, 10, 10, 6},
        {"a last row shorter than the stride", 34, 10, 6, 7},
        {"strides beyond the buffer", 0, 1000, 10, 1},
        {"the largest stride", 0, INT_MAX, 10, 1},
        {"a first row too long", 95, 10, 10, 0},
        {"bottom up", 60, -10, 10, 7},
        {"bottom up, too near to the start", 59, -10, 10, 6},
        {"bottom up with the largest stride", 50, INT_MIN, 10, 1},
        {"no stride", 0, 0, 10, 0},
        {"no length", 0, 10, 0, 0},
        {"a length below 0", 0, 10, -3, 0},
    };
    for (const Row &row : rows) {
        QTest::newRow(row.name) << row.at << row.stride << row.length << row.rows;
    }
}

void tst_ZRYuvPicture::rowsInsideOfABuffer()
{
    QFETCH(const int, at);
    QFETCH(const int, stride);
    QFETCH(const int, length);
    const Frame frame = bareFrame(10, 7, AV_PIX_FMT_YUV420P);
    frame->buf[0] = av_buffer_alloc(100);
    frame->data[0] = frame->buf[0]->data + at;
    QTEST(ZRYuvPicture::rowsInside(*frame, 0, stride, length, 7), "rows");

    frame->data[1] = nullptr; // and no plane at all
    QCOMPARE(ZRYuvPicture::rowsInside(*frame, 1, stride, length, 7), 0);
}

void tst_ZRYuvPicture::isInWholeFramesOnly()
{
    QVERIFY(ZRYuvPicture::isIn(*greyFrame(64, 48)));
    QVERIFY(ZRYuvPicture::isIn(*greyFrame(1, 1, AV_PIX_FMT_YUVJ420P)));
    QVERIFY(!ZRYuvPicture::isIn(*greyFrame(64, 48, AV_PIX_FMT_YUV422P)));
    QVERIFY(!ZRYuvPicture::isIn(*bareFrame(64, 48, AV_PIX_FMT_YUV420P)));
    QVERIFY(!ZRYuvPicture::isIn(*bareFrame(0, 0, AV_PIX_FMT_YUV420P)));

    const Frame noPlane = greyFrame(64, 48);
    noPlane->data[2] = nullptr;
    QVERIFY(!ZRYuvPicture::isIn(*noPlane));

    const Frame narrow = greyFrame(64, 48);
    narrow->linesize[1] = 31; // rows of 32 would overlap
    QVERIFY(!ZRYuvPicture::isIn(*narrow));

    const Frame tall = greyFrame(64, 48);
    tall->height *= 50;
    QVERIFY(!ZRYuvPicture::isIn(*tall));

    const Frame upsideDown = greyFrame(64, 48);
    for (int plane = 0; plane < 3; ++plane) {
        upsideDown->data[plane] += upsideDown->linesize[plane] * ((plane == 0 ? 48 : 24) - 1);
        upsideDown->linesize[plane] *= -1;
    }
    QVERIFY(ZRYuvPicture::isIn(*upsideDown));
}

QTEST_APPLESS_MAIN(tst_ZRYuvPicture)
#include "tst_ZRYuvPicture.moc"
