#include "ZRDialog.h"

#include "Painting.h"
#include "ToastChecks.h"
#include "ZROutline.h"

#include <QPainter>
#include <QtTest>

class tst_ZRDialog : public QObject
{
    Q_OBJECT

private slots:
    void addsNoMetaObject();
    void losesTheHelpButtonAlone();
    void paintsNothingOfItsOwn();
    void paintsTheBackground();
    void paintsByItsFields_data();
    void paintsByItsFields();
    void toastHasFirstClaimOnClicks();

    void placement_data() { ToastChecks::placementRows(); }
    void placement() { ToastChecks::placement<ZRDialog>(); }
    void look() { ToastChecks::look<ZRDialog>(); }
    void secondReplacesFirst() { ToastChecks::secondReplacesFirst<ZRDialog>(); }
    void hides() { ToastChecks::hides<ZRDialog>(); }
    void livesTwoSeconds() { ToastChecks::livesTwoSeconds<ZRDialog>(); }
    void earlierTimerCutsSecondShort() { ToastChecks::earlierTimerCutsSecondShort<ZRDialog>(); }
    void clickHidesAfterTheSignal() { ToastChecks::clickHidesAfterTheSignal<ZRDialog>(); }
    void hostMayGoFirst() { ToastChecks::hostMayGoFirst<ZRDialog>(); }
};

void tst_ZRDialog::addsNoMetaObject()
{
    QCOMPARE(ZRDialog(nullptr).metaObject(), &QDialog::staticMetaObject);
}

void tst_ZRDialog::losesTheHelpButtonAlone()
{
    const ZRDialog dialog(nullptr);
    QVERIFY(!(dialog.windowFlags() & Qt::WindowContextHelpButtonHint));
    const QDialog plain;
    QCOMPARE(dialog.windowFlags() | Qt::WindowContextHelpButtonHint,
        plain.windowFlags() | Qt::WindowContextHelpButtonHint);
    QVERIFY(!dialog.testAttribute(Qt::WA_TranslucentBackground));
}

void tst_ZRDialog::paintsNothingOfItsOwn()
{
    ZRDialog dialog(nullptr);
    dialog.resize(60, 40);
    QVERIFY(paintedArea(painted(dialog)).isNull());
    // The plain dialog's background shows through.
    QCOMPARE(painted(dialog, QWidget::DrawWindowBackground).pixelColor(30, 20),
        dialog.palette().color(QPalette::Window));
}

void tst_ZRDialog::paintsTheBackground()
{
    class Hooked : public ZRDialog
    {
    public:
        Hooked() : ZRDialog(nullptr) { }
        void paintBackground(QPainter &painter, int width, int height) override
        {
            size = QSize(width, height);
            antialiased = painter.testRenderHint(QPainter::Antialiasing);
            painter.fillRect(0, 0, width, height, Qt::green);
        }
        QSize size;
        bool antialiased = true;
    } dialog;
    dialog.resize(60, 40);
    QCOMPARE(painted(dialog).pixelColor(30, 20), QColor(Qt::green));
    QCOMPARE(dialog.size, QSize(60, 40));
    QVERIFY(!dialog.antialiased);
}

void tst_ZRDialog::paintsByItsFields_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("borderWidth");
    QTest::newRow("outlined") << QSize(60, 40) << 6;
    QTest::newRow("larger") << QSize(151, 97) << 1;
    QTest::newRow("no outline") << QSize(60, 40) << 0;
}

// Over the whole dialog; the outline is as thin as the painter's own pen, whatever its width.
void tst_ZRDialog::paintsByItsFields()
{
    class Coloured : public ZRDialog
    {
    public:
        explicit Coloured(int width) : ZRDialog(nullptr)
        {
            radius = 12;
            borderWidth = width;
            borderColor = Qt::red;
            backgroundColor = Qt::blue;
        }
    };
    QFETCH(QSize, size);
    QFETCH(int, borderWidth);
    Coloured dialog(borderWidth);
    dialog.resize(size);

    QImage expected(size, QImage::Format_ARGB32_Premultiplied);
    expected.fill(Qt::transparent);
    QPainter painter(&expected);
    painter.setPen(borderWidth > 0 ? QPen(Qt::red) : QPen(Qt::NoPen));
    painter.setBrush(Qt::blue);
    painter.drawPath(ZROutline::path(12, size.width(), size.height()));
    painter.end();
    QCOMPARE(painted(dialog), expected);
}

void tst_ZRDialog::toastHasFirstClaimOnClicks()
{
    ZRDialog dialog(nullptr);
    dialog.resize(300, 200);
    QWidget child(&dialog);
    child.setGeometry(0, 0, 300, 200);
    dialog.showToast(QStringLiteral("message"), Qt::AlignCenter, 5, 5);
    QCOMPARE(dialog.childAt(150, 100), static_cast<QWidget *>(ToastChecks::toastOf(dialog)));
}

QTEST_MAIN(tst_ZRDialog)
#include "tst_ZRDialog.moc"
