#pragma once

#include "Painting.h"

#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

// What both image buttons do. setImage(button, path, width) gives the button its image.
namespace ImageButtonChecks {

// Files of one colour, gone with the object.
class Images
{
public:
    QString save(const QSize &size, const QColor &color)
    {
        const QString path = folder.filePath(QStringLiteral("%1.png").arg(++count));
        QImage image(size, QImage::Format_ARGB32);
        image.fill(color);
        return image.save(path) ? path : QString();
    }
    QString missing() { return folder.filePath(QStringLiteral("missing%1.png").arg(++count)); }

private:
    QTemporaryDir folder;
    int count = 0;
};

inline void sizeHintRows()
{
    QTest::addColumn<QSize>("image"); // empty: no such file
    QTest::addColumn<int>("width");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("the file's own") << QSize(40, 20) << 0 << QSize(40, 20);
    QTest::newRow("narrower") << QSize(40, 20) << 20 << QSize(20, 10);
    QTest::newRow("wider") << QSize(40, 20) << 60 << QSize(60, 30);
    QTest::newRow("height cut to a whole pixel") << QSize(40, 23) << 20 << QSize(20, 11);
    QTest::newRow("no image") << QSize() << 20 << QSize(20, 20);
    QTest::newRow("no image, no width") << QSize() << 0 << QSize(0, 0);
}

template <class Button, class SetImage> void sizeHint(SetImage setImage)
{
    QFETCH(QSize, image);
    QFETCH(int, width);
    QFETCH(QSize, expected);
    Images images;
    Button button(nullptr);
    setImage(button, image.isEmpty() ? images.missing() : images.save(image, Qt::red), width);
    QCOMPARE(button.sizeHint(), expected);
}

template <class Button, class SetImage> void imageFillsButtonOverBackground(SetImage setImage)
{
    Images images;
    Button button(nullptr);
    button.resize(50, 30);
    QVERIFY(paintedArea(painted(button)).isNull());

    QImage expected(50, 30, QImage::Format_ARGB32_Premultiplied);
    button.setBackgroundColor(Qt::blue);
    expected.fill(Qt::blue);
    QCOMPARE(painted(button), expected);

    setImage(button, images.save({40, 20}, Qt::red), 10);
    expected.fill(Qt::red);
    QCOMPARE(painted(button), expected);

    setImage(button, images.missing(), 10);
    expected.fill(Qt::blue);
    QCOMPARE(painted(button), expected);
}

template <class Button> void clicksOnRelease()
{
    class Parent : public QWidget
    {
    public:
        void mouseReleaseEvent(QMouseEvent *) override { ++releases; }
        int releases = 0;
    } parent;
    parent.resize(20, 20);
    Button button(&parent);
    button.resize(20, 20);
    QSignalSpy clicked(&button, &Button::clicked);
    int clicks = 0;
    for (Qt::MouseButton any : {Qt::LeftButton, Qt::RightButton}) {
        QTest::mousePress(&button, any);
        QCOMPARE(clicked.count(), clicks);
        QTest::mouseRelease(&button, any);
        QCOMPARE(clicked.count(), ++clicks);
        QCOMPARE(parent.releases, clicks); // the plain widget's handling lets the release through
    }
}

template <class Button> void pointingHand()
{
    QCOMPARE(Button(nullptr).cursor().shape(), Qt::PointingHandCursor);
}

}
