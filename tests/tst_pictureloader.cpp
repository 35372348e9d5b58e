#include "backgroundwork.h"
#include "fakeservices.h"
#include "gate.h"
#include "metafiles.h"
#include "pictureformats.h"
#include "qtpictureloader.h"
#include "samplepictures.h"
#include "testsupport.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QScopeGuard>
#include <QThread>
#include <QTimer>
#include <QTest>
#include <QtEndian>

#include <functional>

#include <sys/stat.h>

using namespace SamplePictures;

namespace {

enum class Hostile { LinkToZero, Fifo, IconOfHugePngs, JpegOfEmptyScans, WmfOfManyRecords, Padded, EmfShowingFile, EmfShowingFifo };

} // namespace

// The picture loader on files of every format the viewers show, generated here.
Q_DECLARE_METATYPE(Hostile)

class TestPictureLoader : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QImage m_pattern; // 48 x 32, eight bands of plain colours
    QList<QByteArray> m_samples;

    QString path(const QString &name) const { return m_dir.filePath(name); }

    // Converts the pattern with ImageMagick; the file's bytes.
    QByteArray convert(const QStringList &options, const QString &target)
    {
        const QString source = path(QStringLiteral("pattern.png"));
        if (!QFile::exists(source))
            m_pattern.save(source);
        QProcess process;
        process.start(QStringLiteral("convert"), QStringList{source} + options + QStringList{target});
        if (!process.waitForFinished(60000) || process.exitCode() != 0)
            return {};
        return TestSupport::readFile(target.section(QLatin1Char(':'), -1));
    }

    static int maxDifference(const QImage &a, const QImage &b)
    {
        if (a.size() != b.size())
            return 1000;
        int worst = 0;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x) {
                const QColor p = a.pixelColor(x, y), q = b.pixelColor(x, y);
                worst = std::max({worst, std::abs(p.red() - q.red()), std::abs(p.green() - q.green()),
                                  std::abs(p.blue() - q.blue())});
            }
        return worst;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());

        m_pattern = bands(48, 32, {Qt::black, Qt::white, Qt::red, Qt::green, Qt::blue,
                                   Qt::yellow, Qt::cyan, Qt::magenta});
        KALVEX_REQUIRE_PROGRAM(QStringLiteral("convert"));
    }

    // Each raster format, in the variant least often read, gives the pattern's pixels back.
    void rasterFormats_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("target");
        QTest::addColumn<int>("headerBits"); // bits per pixel the BMP header must say; 0: not a BMP
        QTest::addColumn<int>("tolerance");
        QTest::newRow("BMP 8-bit RLE") << u"-type Palette -colors 200 -compress RLE"_qs << u"BMP3:p8rle.bmp"_qs << 8 << 0;
        QTest::newRow("BMP 32-bit") << u"-type TrueColorAlpha"_qs << u"BMP:p32.bmp"_qs << 32 << 0;
        QTest::newRow("GIF interlaced") << u"-interlace GIF"_qs << u"GIF:pi.gif"_qs << 0 << 0;
        QTest::newRow("JPEG progressive") << u"-interlace JPEG -quality 100"_qs << u"JPEG:pp.jpg"_qs << 0 << 48;
    }
    void rasterFormats()
    {
        QFETCH(QString, options);
        QFETCH(QString, target);
        QFETCH(int, headerBits);
        QFETCH(int, tolerance);
        const QString file = path(target.section(QLatin1Char(':'), -1));
        const QByteArray bytes = convert(options.split(QLatin1Char(' ')), target.section(QLatin1Char(':'), 0, 0) + QLatin1Char(':') + file);
        QVERIFY(!bytes.isEmpty());
        if (headerBits) {
            QCOMPARE(int(qFromLittleEndian<quint16>(bytes.constData() + 28)), headerBits);
            const bool rle = target.contains(QLatin1String("rle"));
            QCOMPARE(qFromLittleEndian<quint32>(bytes.constData() + 30) == 1, rle); // BI_RLE8
        }
        m_samples.append(bytes);
        // The name says nothing: the loader judges by content.
        const QString renamed = path(QStringLiteral("NONAME"));
        QVERIFY(TestSupport::writeFile(renamed, bytes));
        const QImage image = QtPictureLoader().loadPicture(renamed);
        QCOMPARE(image.size(), m_pattern.size());
        QVERIFY2(maxDifference(image, m_pattern) <= tolerance, qPrintable(QString::number(maxDifference(image, m_pattern))));
    }

    void animatedGifGivesItsFirstFrame()
    {
        const QImage first = bands(20, 10, {Qt::red});
        const QImage second = bands(20, 10, {Qt::blue});
        first.save(path(QStringLiteral("f1.png")));
        second.save(path(QStringLiteral("f2.png")));
        QProcess process;
        process.start(QStringLiteral("convert"), {QStringLiteral("-delay"), QStringLiteral("10"), path(QStringLiteral("f1.png")),
                                                  path(QStringLiteral("f2.png")), path(QStringLiteral("anim.gif"))});
        QVERIFY(process.waitForFinished(60000));
        const QByteArray bytes = TestSupport::readFile(path(QStringLiteral("anim.gif")));
        m_samples.append(bytes);
        QCOMPARE(maxDifference(QtPictureLoader::readPicture(bytes), first), 0);
    }

    // Icons of every depth: the colours, and the AND mask's pixels transparent (Qt leaves those of
    // a 24-bit icon opaque by itself).
    void icons_data()
    {
        QTest::addColumn<int>("bits");
        QTest::addColumn<bool>("cursor");
        QTest::newRow("1-bit") << 1 << false;
        QTest::newRow("4-bit") << 4 << false;
        QTest::newRow("8-bit") << 8 << false;
        QTest::newRow("24-bit") << 24 << false;
        QTest::newRow("32-bit") << 32 << false;
        QTest::newRow("24-bit cursor") << 24 << true;
    }
    void icons()
    {
        QFETCH(int, bits);
        QFETCH(bool, cursor);
        const QImage picture = bits == 1 ? bands(32, 32, {Qt::black, Qt::white}) : bands(32, 32, {Qt::red, Qt::green, Qt::blue, Qt::yellow});
        QImage mask(32, 32, QImage::Format_RGB32);
        mask.fill(Qt::white);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x)
                mask.setPixelColor(x, y, Qt::black); // the top-left corner is transparent
        const QByteArray bytes = icon(picture, bits, mask, cursor);
        m_samples.append(bytes);
        const QImage image = QtPictureLoader::readPicture(bytes);
        QCOMPARE(image.size(), QSize(32, 32));
        QCOMPARE(qAlpha(image.pixel(3, 3)), 0);
        QCOMPARE(qAlpha(image.pixel(20, 20)), 255);
        QCOMPARE(image.pixel(20, 20) | 0xff000000, picture.pixel(20, 20));
        QCOMPARE(image.pixel(31, 0) | 0xff000000, picture.pixel(31, 0));
    }

    void animatedCursorGivesItsFirstIcon()
    {
        const QByteArray red = icon(bands(32, 32, {Qt::red}), 24, {}, true);
        const QByteArray blue = icon(bands(32, 32, {Qt::blue}), 24, {}, true);
        const QByteArray ani = animatedCursor({red, blue});
        m_samples.append(ani);
        QCOMPARE(PictureFormats::kindOf(ani), PictureFormats::Kind::Ani);
        QCOMPARE(PictureFormats::firstAniIcon(ani), red);
        QCOMPARE(QtPictureLoader::readPicture(ani).pixel(5, 5), qRgb(255, 0, 0));
        QVERIFY(PictureFormats::firstAniIcon(ani.left(40)).isEmpty());
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
            return enhanced ? emf(240, 120, Qt::white, QColor(0, 0, 200), text)
                            : wmf(240, 120, Qt::white, QColor(0, 0, 200), text);
        };
        const QByteArray accented = make(QStringLiteral("ÉÈÊ<&>"));
        const QByteArray plain = make(QStringLiteral("EEE<&>"));
        m_samples.append(accented);
        QCOMPARE(enhanced ? PictureFormats::emfNaturalSize(accented) : PictureFormats::wmfNaturalSize(accented), QSize(240, 120));
        const QImage image = QtPictureLoader::readPicture(accented);
        QCOMPARE(image.size(), QSize(240, 120));
        QCOMPARE(image.pixelColor(60, 60).rgb(), QColor(0, 0, 200).rgb()); // the fill
        QCOMPARE(image.pixelColor(230, 110).rgb(), QColor(Qt::white).rgb()); // the page
        // Text is drawn right of the fill, a quarter down; its accents stand above the capitals.
        const auto darkPixels = [](const QImage &picture, const QRect &area) {
            int dark = 0;
            for (int y = area.top(); y <= area.bottom(); ++y)
                for (int x = area.left(); x <= area.right(); ++x)
                    dark += qGray(picture.pixel(x, y)) < 128;
            return dark;
        };
        const QImage withoutAccents = QtPictureLoader::readPicture(plain);
        const QRect text(122, 30, 110, 30);
        QVERIFY2(darkPixels(image, text) > 40, "no text drawn");
        QVERIFY2(darkPixels(image, text) > darkPixels(withoutAccents, text), "the accents were not drawn");
    }

    // Files made to kill, freeze or exhaust the reader: nothing comes of them, at once; an EMF whose
    // text smuggles an image in is drawn without it.
    void hostileFiles_data()
    {
        QTest::addColumn<Hostile>("hostile");
        QTest::newRow("link to /dev/zero") << Hostile::LinkToZero;
        QTest::newRow("FIFO") << Hostile::Fifo;
        QTest::newRow("ICO of 256 PNG of 2048 x 2048") << Hostile::IconOfHugePngs;
        QTest::newRow("JPEG of 5,000 empty scans") << Hostile::JpegOfEmptyScans;
        QTest::newRow("WMF of 40,000 records") << Hostile::WmfOfManyRecords;
        QTest::newRow("JPEG padded past 32 MB") << Hostile::Padded;
        QTest::newRow("EMF text showing a file") << Hostile::EmfShowingFile;
        QTest::newRow("EMF text showing a FIFO") << Hostile::EmfShowingFifo;
    }
    void hostileFiles()
    {
        QFETCH(Hostile, hostile);
        const QString file = path(QStringLiteral("hostile%1.ico").arg(int(hostile)));
        const QColor fill(0, 0, 200);
        const auto smuggling = [&](const QString &shown) {
            return emf(240, 120, Qt::white, fill, QStringLiteral("]]></text><image xlink:href=\"%1\" x=\"0\" y=\"0\" "
                                                                 "width=\"240\" height=\"120\"/><text><![CDATA[").arg(shown));
        };
        switch (hostile) {
        case Hostile::LinkToZero:
            QVERIFY(QFile::link(QStringLiteral("/dev/zero"), file));
            break;
        case Hostile::Fifo:
            QCOMPARE(mkfifo(QFile::encodeName(file).constData(), 0600), 0);
            break;
        case Hostile::IconOfHugePngs:
            QVERIFY(TestSupport::writeFile(file, iconOfPngs(emptyPng(2048, 2048), 256)));
            break;
        case Hostile::JpegOfEmptyScans:
            QVERIFY(TestSupport::writeFile(file, jpegWithEmptyScans(1024, 1024, 5000)));
            break;
        case Hostile::WmfOfManyRecords:
            QVERIFY(TestSupport::writeFile(file, wmfOfRectangles(240, 120, 40000)));
            break;
        case Hostile::Padded: {
            QVERIFY(TestSupport::writeFile(file, jpegWithEmptyScans(64, 64, 0)));
            QFile padded(file);
            QVERIFY(padded.resize(33 * 1024 * 1024)); // sparse: nothing written
            break;
        }
        case Hostile::EmfShowingFile: {
            const QString shown = path(QStringLiteral("shown.png"));
            QVERIFY(bands(240, 120, {Qt::red}).save(shown));
            QVERIFY(TestSupport::writeFile(file, smuggling(shown)));
            break;
        }
        case Hostile::EmfShowingFifo: {
            const QString shown = path(QStringLiteral("shown.fifo"));
            QCOMPARE(mkfifo(QFile::encodeName(shown).constData(), 0600), 0);
            QVERIFY(TestSupport::writeFile(file, smuggling(shown)));
            break;
        }
        }
        QtPictureLoader loader;
        if (hostile == Hostile::EmfShowingFile || hostile == Hostile::EmfShowingFifo) {
            const QImage image = loader.loadPicture(file);
            QCOMPARE(image.size(), QSize(240, 120));
            QCOMPARE(image.pixelColor(60, 60), fill);
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
        const QByteArray hostile =
            "<?xml version=\"1.0\"?>\n"
            "<!DOCTYPE svg [<!ENTITY secret SYSTEM \"file:///etc/passwd\">]>\n"
            "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"10\" height=\"10\">\n"
            "<style>@import url(sheet.css);</style>\n"
            "<defs><clipPath id=\"clip-1\"><rect x=\"0\" y=\"0\" width=\"5\" height=\"5\"/></clipPath></defs>\n"
            "<g clip-path=\"url(#clip-1)\"><rect x=\"1\" y=\"1\" width=\"8\" height=\"8\" fill=\"#0000C8\"/></g>\n"
            "<image xlink:href=\"/etc/passwd\" width=\"10\" height=\"10\"/><use xlink:href=\"other.svg#a\"/>\n"
            "<image xlink:href=\"data:image/png;base64,AAAA\" width=\"2\" height=\"2\"/>\n"
            "<rect width=\"10\" height=\"10\" style=\"fill:url(other.svg#p)\"/><text x=\"1\" y=\"9\"><![CDATA[a<b]]>&secret;</text>\n"
            "</svg>";
        const QByteArray safe = Metafiles::safeSvg(hostile);
        const QByteArray drawing = "<g clip-path=\"url(#clip-1)\"><rect x=\"1\" y=\"1\" width=\"8\" height=\"8\" fill=\"#0000C8\"/></g>";
        QVERIFY2(safe.contains(drawing), safe);
        QVERIFY2(safe.contains("a&lt;b"), safe);
        for (const char *gone : {"passwd", "ENTITY", "secret", "style", "import", "use", "other.svg"})
            QVERIFY2(!safe.contains(gone), gone);
        QCOMPARE(safe.count("<image"), 1); // the inline bitmap only
        QVERIFY2(safe.contains("<image xlink:href=\"data:image/png;base64,AAAA\" width=\"2\" height=\"2\"/>"), safe);
        QVERIFY(Metafiles::safeSvg("<html><svg/></html>").isEmpty());
    }

    // Work that outlives its deadline is given up while the caller's events go on; the stuck
    // worker refuses further work until it ends.
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
        clock.onRead = [&clock, &eventsRan] {
            if (eventsRan)
                clock.current = clock.current.addSecs(60);
        };
        QVERIFY(!BackgroundWork::call<int>([&gate] { gate.pass(); return 1; }, clock, 10000));
        QVERIFY(eventsRan);
        QVERIFY(gate.waitForArrivals(1));

        // Refused at once: well before its own deadline.
        FakeClock later;
        const QDateTime asked = later.current;
        later.onRead = [&later] { later.current = later.current.addSecs(1); };
        bool ran = false;
        QVERIFY(!BackgroundWork::run([&ran] { ran = true; }, later, 10000));
        QVERIFY(!ran);
        QVERIFY(asked.secsTo(later.current) < 10);

        gate.open();
        QTRY_VERIFY(!BackgroundWork::busy());
        QCOMPARE(BackgroundWork::call<int>([] { return 7; }, FakeClock(), 10000), std::optional<int>(7));
    }

    void headers()
    {
        QCOMPARE(PictureFormats::jpegScanCount(jpegWithEmptyScans(64, 64, 500)), PictureFormats::jpegScanCount(jpegWithEmptyScans(64, 64, 0)) + 500);
        QVERIFY(PictureFormats::jpegScanCount(jpegWithEmptyScans(64, 64, 0)) <= 12);
        QCOMPARE(PictureFormats::wmfRecordCount(wmfOfRectangles(10, 10, 20)), 2 + 20 + 1);
        QByteArray brokenRecord = wmfOfRectangles(10, 10, 20);
        brokenRecord[22 + 18 + 10] = 2; // the second record says 2 words
        QCOMPARE(PictureFormats::wmfRecordCount(brokenRecord), -1);
        const auto entries = PictureFormats::iconEntries(iconOfPngs(emptyPng(300, 20), 2));
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries.at(1).real, QSize(300, 20));
        QVERIFY(!PictureFormats::entryIsConsistent(entries.at(1))); // declared 256 x 256

        const QByteArray placeable = wmf(100, 50, Qt::white, Qt::red, QStringLiteral("x"));
        QCOMPARE(PictureFormats::kindOf(placeable), PictureFormats::Kind::Wmf);
        QCOMPARE(PictureFormats::kindOf(placeable.mid(22)), PictureFormats::Kind::Wmf); // without the placeable header
        QCOMPARE(PictureFormats::wmfNaturalSize(placeable.mid(22)), QSize());
        QCOMPARE(PictureFormats::wmfNaturalSize(placeable.left(21)), QSize());
        QByteArray noUnits = placeable;
        noUnits[14] = 0;
        noUnits[15] = 0;
        QCOMPARE(PictureFormats::wmfNaturalSize(noUnits), QSize());
        QCOMPARE(PictureFormats::emfNaturalSize(emf(100, 50, Qt::white, Qt::red, QStringLiteral("x"))), QSize(100, 50));
        QCOMPARE(PictureFormats::emfNaturalSize(emf(100, 50, Qt::white, Qt::red, QStringLiteral("x")).left(43)), QSize());
    }

    // Truncated and bit-flipped files of every format: no crash, no hang, nothing past the bound.
    void fuzz()
    {
        QVERIFY(m_samples.size() >= 10);
        QRandomGenerator random(13);
        for (const QByteArray &sample : std::as_const(m_samples)) {
            for (int i = 0; i < 12; ++i) {
                QByteArray broken = sample;
                if (i % 3 == 0) {
                    broken.truncate(random.bounded(qint32(sample.size())));
                } else {
                    for (int flips = 0; flips < 1 + i; ++flips) {
                        const int at = random.bounded(qint32(sample.size()));
                        broken[at] = char(broken[at] ^ (1 << random.bounded(8)));
                    }
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
