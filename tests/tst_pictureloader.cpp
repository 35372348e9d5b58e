#include "backgroundwork.h"
#include "fakeservices.h"
#include "gate.h"
#include "metafiles.h"
#include "pictureformats.h"
#include "qtpictureloader.h"
#include "samplepictures.h"
#include "testsupport.h"

#include <QDir>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <sys/stat.h>

using namespace SamplePictures;

namespace {

enum class Hostile { Fifo, IconOfHugePngs, JpegOfEmptyScans, WmfOfManyRecords, Padded, EmfShowingFile };

int maxDifference(const QImage &a, const QImage &b)
{
    int worst = a.size() == b.size() ? 0 : 1000;
    for (int y = 0; !worst && y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QColor p = a.pixelColor(x, y), q = b.pixelColor(x, y);
            worst = std::max({worst, std::abs(p.red() - q.red()), std::abs(p.green() - q.green()), std::abs(p.blue() - q.blue())});
        }
    return worst;
}

int darkPixels(const QImage &picture, const QRect &area)
{
    int dark = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            dark += qGray(picture.pixel(x, y)) < 128;
    return dark;
}

} // namespace

Q_DECLARE_METATYPE(Hostile)

// The picture loader on files of every format the viewers show, generated here.
class TestPictureLoader : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QList<QByteArray> m_samples; // every well-formed sample, for the fuzzing at the end

    QString path(const QString &name) const { return m_dir.filePath(name); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid() && QDir::setCurrent(m_dir.path())); // ImageMagick's files are named from there
        KALVEX_REQUIRE_PROGRAM(u"convert"_qs);
    }

    // Each raster format, in its variant least often read, converted by ImageMagick and read by
    // content under a name that says nothing; an animated GIF gives its first frame.
    void rasterFormats_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<int>("tolerance");
        QTest::newRow("BMP 8-bit RLE") << u"-type Palette -colors 200 -compress RLE BMP3:"_qs << 0;
        QTest::newRow("GIF animated") << u"second.png GIF:"_qs << 0;
        QTest::newRow("JPEG progressive") << u"-interlace JPEG -quality 100 JPEG:"_qs << 48;
    }
    void rasterFormats()
    {
        QFETCH(QString, options);
        QFETCH(int, tolerance);
        const QImage pattern = bands(48, 32, {Qt::black, Qt::white, Qt::red, Qt::green, Qt::blue, Qt::yellow, Qt::cyan, Qt::magenta});
        QVERIFY(pattern.save(path(u"first.png"_qs)) && bands(48, 32, {Qt::blue}).save(path(u"second.png"_qs)));
        QStringList arguments = (u"first.png "_qs + options).split(u' ');
        arguments.last() += u"NONAME"_qs;
        QVERIFY(TestSupport::run(u"convert"_qs, arguments));
        m_samples.append(TestSupport::readFile(path(u"NONAME"_qs)));
        const QImage image = QtPictureLoader().loadPicture(path(u"NONAME"_qs));
        QVERIFY2(maxDifference(image, pattern) <= tolerance, qPrintable(QString::number(maxDifference(image, pattern))));
    }

    // Icons of every depth, and an animated cursor's first frame: the colours, and the AND mask's
    // pixels transparent (Qt leaves those of a 24-bit icon opaque by itself).
    void icons_data()
    {
        QTest::addColumn<int>("bits");
        QTest::addColumn<bool>("animated");
        for (int bits : {1, 4, 8, 24, 32})
            QTest::addRow("%d-bit", bits) << bits << false;
        QTest::newRow("animated cursor") << 24 << true;
    }
    void icons()
    {
        QFETCH(int, bits);
        QFETCH(bool, animated);
        const QImage picture = bits == 1 ? bands(32, 32, {Qt::black, Qt::white}) : bands(32, 32, {Qt::red, Qt::green, Qt::blue, Qt::yellow});
        const QImage mask = bands(32, 32, {Qt::black, Qt::white, Qt::white, Qt::white}); // the left quarter is transparent
        m_samples.append(animated ? animatedCursor({icon(picture, bits, mask, true), icon(bands(32, 32, {Qt::blue}), 24, {}, true)})
                                  : icon(picture, bits, mask));
        QVERIFY(!animated || PictureFormats::firstAniIcon(m_samples.last().left(40)).isEmpty());
        const QImage image = QtPictureLoader::readPicture(m_samples.last());
        QCOMPARE(image.size(), QSize(32, 32));
        QCOMPARE(qAlpha(image.pixel(3, 3)), 0);
        QVERIFY(image.pixel(20, 20) == picture.pixel(20, 20) && image.pixel(31, 0) == picture.pixel(31, 0));
    }

    // The metafiles at their natural size, with their fills, and accented text drawn as such.
    void metafiles_data()
    {
        QTest::addColumn<bool>("enhanced");
        QTest::newRow("WMF") << false;
        QTest::newRow("EMF") << true;
    }
    void metafiles()
    {
        QFETCH(bool, enhanced);
        const auto make = [enhanced](const QString &text) {
            const QColor fill(0, 0, 200);
            return enhanced ? emf(240, 120, Qt::white, fill, text) : wmf(240, 120, Qt::white, fill, text);
        };
        const QByteArray accented = make(u"ÉÈÊ<&>"_qs);
        m_samples.append(accented);
        const QImage image = QtPictureLoader::readPicture(accented);
        QCOMPARE(image.size(), QSize(240, 120));
        QVERIFY(image.pixelColor(60, 60) == QColor(0, 0, 200) && image.pixelColor(230, 110) == QColor(Qt::white)); // fill, page
        // The text right of the fill, a quarter down; its accents stand above the capitals.
        const QImage plain = QtPictureLoader::readPicture(make(u"EEE<&>"_qs));
        const QRect text(122, 30, 110, 30);
        QVERIFY2(darkPixels(image, text) > darkPixels(plain, text), "the accents were not drawn");
    }

    // Files made to kill, freeze or exhaust the reader: nothing comes of them, at once; an EMF whose
    // text smuggles an image in is drawn without it.
    void hostileFiles_data()
    {
        QTest::addColumn<Hostile>("hostile");
        QTest::newRow("FIFO") << Hostile::Fifo;
        QTest::newRow("ICO of 256 PNG of 2048 x 2048") << Hostile::IconOfHugePngs;
        QTest::newRow("JPEG of 5,000 empty scans") << Hostile::JpegOfEmptyScans;
        QTest::newRow("WMF of 40,000 records") << Hostile::WmfOfManyRecords;
        QTest::newRow("JPEG padded past 32 MB") << Hostile::Padded;
        QTest::newRow("EMF text showing a file") << Hostile::EmfShowingFile;
    }
    void hostileFiles()
    {
        QFETCH(Hostile, hostile);
        const QString file = path(QStringLiteral("hostile%1.ico").arg(int(hostile)));
        const QString shown = path(u"shown.png"_qs);
        const QByteArray smuggling = emf(240, 120, Qt::white, Qt::blue, QStringLiteral(
            "]]></text><image xlink:href=\"%1\" x=\"0\" y=\"0\" width=\"240\" height=\"120\"/><text><![CDATA[").arg(shown));
        switch (hostile) {
        case Hostile::Fifo: QCOMPARE(mkfifo(QFile::encodeName(file).constData(), 0600), 0); break;
        case Hostile::IconOfHugePngs: QVERIFY(TestSupport::writeFile(file, pngIcon(2048, 2048, 256))); break;
        case Hostile::JpegOfEmptyScans: QVERIFY(TestSupport::writeFile(file, jpegWithEmptyScans(1024, 1024, 5000))); break;
        case Hostile::WmfOfManyRecords: QVERIFY(TestSupport::writeFile(file, wmf(240, 120, Qt::white, Qt::red, u"x"_qs, 40000))); break;
        case Hostile::Padded: // sparse: nothing written past the picture
            QVERIFY(TestSupport::writeFile(file, jpegWithEmptyScans(64, 64, 0)) && QFile(file).resize(33 << 20));
            break;
        case Hostile::EmfShowingFile: QVERIFY(bands(240, 120, {Qt::red}).save(shown)); break;
        }
        QtPictureLoader loader;
        if (hostile >= Hostile::EmfShowingFile) {
            QVERIFY(TestSupport::writeFile(file, smuggling));
            QCOMPARE(loader.loadPicture(file).pixelColor(60, 60), QColor(Qt::blue));
        } else {
            QVERIFY(loader.loadIcon(file).isNull());
            QVERIFY(loader.loadPicture(file).isNull());
        }
    }

    // Icons keep the sizes the windows draw, up to 64 pixels or the smallest larger one; the
    // preview shows the first entry.
    void iconSizesKept_data()
    {
        QTest::addColumn<QList<int>>("sides");
        QTest::addColumn<QList<int>>("kept");
        QTest::newRow("16, 32, 48, 256") << QList<int>{16, 32, 48, 256} << QList<int>{16, 32, 48};
        QTest::newRow("16, 128, 96") << QList<int>{16, 128, 96} << QList<int>{16, 96};
        QTest::newRow("48, 64") << QList<int>{48, 64} << QList<int>{48, 64};
    }
    void iconSizesKept()
    {
        QFETCH(QList<int>, sides);
        QFETCH(QList<int>, kept);
        QList<QByteArray> entries;
        for (int side : std::as_const(sides))
            entries.append(icon(bands(side, side, {Qt::red, Qt::blue}), 24, {}));
        const QByteArray ico = iconOfEntries(entries);
        QList<int> sizes;
        for (const QImage &image : QtPictureLoader::readIconImages(ico))
            sizes.append(image.width());
        QCOMPARE(sizes, kept);
        QCOMPARE(QtPictureLoader::readPicture(ico).width(), sides.first());
    }

    // The SVG of a metafile keeps its drawing and loses what could reach outside it.
    void safeSvg()
    {
        const QByteArray drawing = "<g clip-path=\"url(#c)\"><rect x=\"1\" y=\"1\" width=\"8\" height=\"8\" fill=\"#0000C8\"/></g>";
        const QByteArray inlined = "<image xlink:href=\"data:image/png;base64,AAAA\" width=\"2\" height=\"2\"/>";
        const QByteArray safe = Metafiles::safeSvg(
            "<?xml version=\"1.0\"?>\n<!DOCTYPE svg [<!ENTITY secret SYSTEM \"file:///etc/passwd\">]>\n"
            "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"10\" height=\"10\">\n"
            "<style>@import url(sheet.css);</style>\n<defs><clipPath id=\"c\"><rect width=\"5\" height=\"5\"/></clipPath></defs>\n"
            + drawing + "<image xlink:href=\"/etc/passwd\" width=\"10\" height=\"10\"/><use xlink:href=\"other.svg#a\"/>\n" + inlined
            + "<rect width=\"10\" height=\"10\" style=\"fill:url(other.svg#p)\"/><text x=\"1\" y=\"9\"><![CDATA[a<b]]>&secret;</text>\n</svg>");
        QVERIFY2(safe.contains(drawing) && safe.contains(inlined) && safe.contains("a&lt;b"), safe);
        for (const char *gone : {"passwd", "ENTITY", "secret", "style", "import", "use", "other.svg"})
            QVERIFY2(!safe.contains(gone), gone);
        QCOMPARE(safe.count("<image"), 1);
        QVERIFY(Metafiles::safeSvg("<html><svg/></html>").isEmpty());
    }

    // Work that outlives its deadline is given up while the caller's events go on; the stuck
    // worker refuses further work at once until it ends.
    void backgroundWorkIsBounded()
    {
        Gate gate;
        const auto release = qScopeGuard([&gate] { // even when a check fails
            gate.open();
            while (BackgroundWork::busy())
                QThread::yieldCurrentThread();
        });
        FakeClock clock;
        bool eventsRan = false;
        QTimer::singleShot(0, this, [&eventsRan] { eventsRan = true; });
        clock.onRead = [&clock, &eventsRan] { clock.current = clock.current.addSecs(eventsRan ? 60 : 0); };
        QVERIFY(!BackgroundWork::call<int>([&gate] { gate.pass(); return 1; }, clock, 10000));
        QVERIFY(eventsRan && gate.waitForArrivals(1));

        FakeClock later;
        const QDateTime asked = later.current;
        later.onRead = [&later] { later.current = later.current.addSecs(1); };
        bool ran = false;
        QVERIFY(!BackgroundWork::run([&ran] { ran = true; }, later, 10000));
        QVERIFY(!ran && asked.secsTo(later.current) < 10);

        gate.open();
        QTRY_VERIFY(!BackgroundWork::busy());
        QCOMPARE(BackgroundWork::call<int>([] { return 7; }, FakeClock(), 10000), std::optional<int>(7));
    }

    // What the loader's bounds rest on: a JPEG's scans, a WMF's records (a record under 3 words is
    // broken), an icon entry larger than it says; a WMF without placeable header has no size.
    void headers()
    {
        QCOMPARE(PictureFormats::jpegScanCount(jpegWithEmptyScans(64, 64, 500)), PictureFormats::jpegScanCount(jpegWithEmptyScans(64, 64, 0)) + 500);
        const QByteArray placeable = wmf(100, 50, Qt::white, Qt::red, u"x"_qs);
        QByteArray records = wmf(100, 50, Qt::white, Qt::red, u"x"_qs, 20);
        QCOMPARE(PictureFormats::wmfRecordCount(records), 15 + 20 + 1); // the drawing, the rectangles, the end
        records[22 + 18 + 10] = 2; // the second record says 2 words
        QCOMPARE(PictureFormats::wmfRecordCount(records), -1);
        const auto entries = PictureFormats::iconEntries(pngIcon(300, 20, 2));
        QVERIFY(entries.size() == 2 && entries.at(1).real == QSize(300, 20) && !PictureFormats::entryIsConsistent(entries.at(1)));
        QCOMPARE(PictureFormats::kindOf(placeable.mid(22)), PictureFormats::Kind::Wmf);
        QCOMPARE(PictureFormats::wmfNaturalSize(placeable.mid(22)), QSize());
        QCOMPARE(PictureFormats::wmfNaturalSize(placeable.left(14) + QByteArray(2, 0) + placeable.mid(16)), QSize()); // no units
    }

    // Truncated and bit-flipped files of every format: no crash, no hang, nothing past the bound.
    void fuzz()
    {
        QVERIFY(m_samples.size() >= 10);
        QRandomGenerator random(13);
        for (const QByteArray &sample : std::as_const(m_samples)) {
            for (int i = 0; i < 12; ++i) {
                QByteArray broken = sample;
                if (i % 3 == 0)
                    broken.truncate(random.bounded(qint32(sample.size())));
                for (int flip = 0; i % 3 && flip <= i; ++flip) {
                    const int at = random.bounded(qint32(sample.size()));
                    broken[at] = char(broken[at] ^ (1 << random.bounded(8)));
                }
                const QImage image = QtPictureLoader::readPicture(broken);
                QVERIFY(qint64(image.width()) * image.height() <= PictureFormats::kLargestPicturePixels);
                QtPictureLoader::readIconImages(broken);
            }
        }
    }
};

QTEST_MAIN(TestPictureLoader)
#include "tst_pictureloader.moc"
