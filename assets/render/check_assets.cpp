// kalvex2-check-assets: verifies the files staged beside the program and the
// icon/picture rendering code they come from.
//
//   kalvex2-check-assets staged PROGRAM_DIR   checks the staged files
//   kalvex2-check-assets selftest             checks the writer and renderer

#include "icowriter.h"
#include "svgrender.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImageReader>
#include <QRegularExpression>
#include <QSet>
#include <QStringDecoder>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextDocument>
#include <QtEndian>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

using namespace kalvex2::assets;

namespace {

// The file names the program loads, spelled as they are staged.
const QStringList kIconFiles = {
    QStringLiteral("file005.ico"),  QStringLiteral("cross003.ico"), QStringLiteral("binoculr.ico"),
    QStringLiteral("crdfle10.ico"), QStringLiteral("foldrs01.ico"), QStringLiteral("words003.ico"),
    QStringLiteral("note14.ico"),   QStringLiteral("hlp.ico"),      QStringLiteral("Gtico000.ico"),
    QStringLiteral("inkjet.ico"),   QStringLiteral("MAGNI001.ico"), QStringLiteral("compu008.ico"),
    QStringLiteral("land002.ico"),  QStringLiteral("chart009.ico"), QStringLiteral("misc24.ico"),
    QStringLiteral("drag1pg.ico"),  QStringLiteral("camer002.ico"), QStringLiteral("note02.ico"),
    QStringLiteral("beide.ico"),    QStringLiteral("truck.ico"),    QStringLiteral("keys03.ico"),
    QStringLiteral("card002.ico"),  QStringLiteral("discimg.ico"),  QStringLiteral("imgfoldr.ico"),
};
const QString kPictureFile = QStringLiteral("kalvex.jpg");
const QSize kPictureSize(480, 320);
const QStringList kHelpFiles = {QStringLiteral("kalvex2.htm"), QStringLiteral("demo.htm")};
const QString kQuestionAnchor = QStringLiteral("contexte-1000");

int g_failures = 0;

void fail(const QString &where, const QString &what)
{
    ++g_failures;
    std::fprintf(stderr, "FAIL %s: %s\n", qPrintable(where), qPrintable(what));
}

quint16 u16At(const QByteArray &data, qsizetype pos)
{
    return qFromLittleEndian<quint16>(data.constData() + pos);
}

quint32 u32At(const QByteArray &data, qsizetype pos)
{
    return qFromLittleEndian<quint32>(data.constData() + pos);
}

// Structure of an icon as Windows sees it: one DIB entry per directory
// entry, 32 bits per pixel, every entry inside the file.  Returns the
// problem found, or an empty string.
QString icoStructureProblem(const QByteArray &data, int expectedCount)
{
    if (data.size() < 6 || u16At(data, 0) != 0 || u16At(data, 2) != 1)
        return QStringLiteral("no icon directory");
    const int count = u16At(data, 4);
    if (count != expectedCount)
        return QStringLiteral("%1 entries instead of %2").arg(count).arg(expectedCount);
    if (data.size() < 6 + 16 * count)
        return QStringLiteral("truncated directory");
    for (int i = 0; i < count; ++i) {
        const qsizetype entry = 6 + 16 * i;
        const int width = quint8(data.at(entry)) == 0 ? 256 : quint8(data.at(entry));
        const int height = quint8(data.at(entry + 1)) == 0 ? 256 : quint8(data.at(entry + 1));
        const quint32 size = u32At(data, entry + 8);
        const quint32 offset = u32At(data, entry + 12);
        if (u16At(data, entry + 6) != 32)
            return QStringLiteral("entry %1 is not 32-bit").arg(i);
        if (offset + quint64(size) > quint64(data.size()) || size < 40)
            return QStringLiteral("entry %1 lies outside the file").arg(i);
        if (u32At(data, offset) != 40 || qint32(u32At(data, offset + 4)) != width
            || qint32(u32At(data, offset + 8)) != 2 * height || u16At(data, offset + 14) != 32)
            return QStringLiteral("entry %1 has a header that does not match its directory entry").arg(i);
        const quint32 expectedSize = 40 + width * 4 * height + ((width + 31) / 32) * 4 * height;
        if (size != expectedSize)
            return QStringLiteral("entry %1 holds %2 bytes instead of %3").arg(i).arg(size).arg(expectedSize);
    }
    return {};
}

// Reads every image of an icon with Qt's ico reader, as the program does.
QList<QImage> readIcoImages(QIODevice *device)
{
    QImageReader reader(device, QByteArrayLiteral("ico"));
    QList<QImage> images;
    const int count = reader.imageCount();
    for (int i = 0; i < count; ++i) {
        if (!reader.jumpToImage(i))
            break;
        QImage img = reader.read();
        if (img.isNull())
            break;
        images.append(img.convertToFormat(QImage::Format_ARGB32));
    }
    return images;
}

// Share of pixels that are at least half opaque.
double coverage(const QImage &img)
{
    qsizetype opaque = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x)
            opaque += qAlpha(img.pixel(x, y)) >= 128;
    return double(opaque) / double(img.width() * img.height());
}

// ----------------------------------------------------------------- staged

void checkStagedIcon(const QDir &dir, const QString &name)
{
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::ReadOnly)) {
        fail(name, QStringLiteral("missing from %1").arg(dir.path()));
        return;
    }
    const QByteArray data = file.readAll();
    if (const QString problem = icoStructureProblem(data, 3); !problem.isEmpty())
        fail(name, problem);

    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    const QList<QImage> images = readIcoImages(&buffer);
    if (images.size() != 3) {
        fail(name, QStringLiteral("Qt reads %1 images instead of 3").arg(images.size()));
        return;
    }
    QSet<int> sizes;
    for (const QImage &img : images) {
        const QString where = QStringLiteral("%1 (%2 px)").arg(name).arg(img.width());
        if (img.width() != img.height())
            fail(where, QStringLiteral("image is not square"));
        sizes.insert(img.width());
        // A drawing on a transparent ground: neither empty nor a full square.
        const double part = coverage(img);
        if (part < 0.15)
            fail(where, QStringLiteral("almost nothing visible (%1 %)").arg(part * 100, 0, 'f', 1));
        if (part > 0.97)
            fail(where, QStringLiteral("no transparent background"));
    }
    if (sizes != QSet<int>{16, 32, 48})
        fail(name, QStringLiteral("sizes are not 16, 32 and 48 px"));
}

void checkStagedPicture(const QDir &dir)
{
    QImageReader reader(dir.filePath(kPictureFile), QByteArrayLiteral("jpeg"));
    const QImage img = reader.read();
    if (img.isNull()) {
        fail(kPictureFile, QStringLiteral("cannot be read: %1").arg(reader.errorString()));
        return;
    }
    if (img.size() != kPictureSize)
        fail(kPictureFile, QStringLiteral("is %1x%2").arg(img.width()).arg(img.height()));
    // The drawing must actually be there, not just the white ground.
    QSet<QRgb> colours;
    for (int y = 0; y < img.height(); y += 8)
        for (int x = 0; x < img.width(); x += 8)
            colours.insert(img.pixel(x, y) & 0xf0f0f0);
    if (colours.size() < 20)
        fail(kPictureFile, QStringLiteral("looks blank (%1 colours)").arg(colours.size()));
}

void checkStagedHelp(const QDir &dir, const QString &name)
{
    QFile file(dir.filePath(name));
    if (!file.open(QIODevice::ReadOnly)) {
        fail(name, QStringLiteral("missing from %1").arg(dir.path()));
        return;
    }
    const QByteArray data = file.readAll();
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString html = decoder(data);
    if (decoder.hasError())
        fail(name, QStringLiteral("is not valid UTF-8"));
    if (!html.contains(QLatin1String("<meta charset=\"utf-8\">"), Qt::CaseInsensitive))
        fail(name, QStringLiteral("does not declare its UTF-8 encoding"));
    static const QRegularExpression external(
        QStringLiteral(R"((?:src|href)\s*=\s*"(?:https?:|//|file:))"), QRegularExpression::CaseInsensitiveOption);
    if (html.contains(external))
        fail(name, QStringLiteral("refers to an external resource"));

    // Every internal link must lead to an anchor Qt's rich text finds.
    QTextDocument doc;
    doc.setHtml(html);
    QSet<QString> anchors;
    for (QTextBlock block = doc.begin(); block.isValid(); block = block.next())
        for (auto it = block.begin(); !it.atEnd(); ++it)
            for (const QString &anchor : it.fragment().charFormat().anchorNames())
                anchors.insert(anchor);
    static const QRegularExpression link(QStringLiteral("href=\"#([^\"]+)\""));
    for (auto it = link.globalMatch(html); it.hasNext();) {
        const QString target = it.next().captured(1);
        if (!anchors.contains(target))
            fail(name, QStringLiteral("link to missing anchor #%1").arg(target));
    }
    if (name == QLatin1String("demo.htm") && !anchors.contains(kQuestionAnchor))
        fail(name, QStringLiteral("has no #%1 section for the question boxes").arg(kQuestionAnchor));
}

int checkStaged(const QString &programDir)
{
    const QDir dir(programDir);
    const QStringList present = dir.entryList(QDir::Files);
    for (const QString &name : kIconFiles) {
        // The exact spelling matters on case-sensitive file systems.
        if (!present.contains(name)) {
            const auto other = std::find_if(present.cbegin(), present.cend(), [&name](const QString &file) {
                return file.compare(name, Qt::CaseInsensitive) == 0;
            });
            if (other != present.cend()) {
                fail(name, QStringLiteral("staged as %1").arg(*other));
                continue;
            }
        }
        checkStagedIcon(dir, name);
    }
    checkStagedPicture(dir);
    for (const QString &name : kHelpFiles)
        checkStagedHelp(dir, name);
    return g_failures == 0 ? 0 : 1;
}

// --------------------------------------------------------------- selftest

// A pattern where every channel differs along both axes, so that flipped
// rows, mirrored columns or swapped channels are all detected.
QImage patternImage(int size)
{
    QImage img(size, size, QImage::Format_ARGB32);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            const int alpha = (x + y) % 4 == 0 ? 0 : (x < size / 2 ? 255 : 96 + y);
            img.setPixel(x, y, qRgba((x * 7) % 256, (y * 13) % 256, (x * 3 + y * 5) % 256, alpha));
        }
    return img;
}

// Qt's reader goes through premultiplied pixels, so translucent colours may
// come back slightly rounded; alpha itself must be exact, and the colour of
// fully transparent pixels does not matter.
bool samePixel(QRgb expected, QRgb actual)
{
    const int alpha = qAlpha(expected);
    if (qAlpha(actual) != alpha)
        return false;
    if (alpha == 0)
        return true;
    const int tolerance = alpha == 255 ? 0 : (255 + alpha - 1) / alpha;
    return std::abs(qRed(expected) - qRed(actual)) <= tolerance
        && std::abs(qGreen(expected) - qGreen(actual)) <= tolerance
        && std::abs(qBlue(expected) - qBlue(actual)) <= tolerance;
}

void selftestIcoRoundTrip()
{
    const QList<int> sizes = {16, 20, 32, 48}; // 20: mask rows need padding
    QList<QImage> originals;
    for (int s : sizes)
        originals.append(patternImage(s));

    QString error;
    const QByteArray ico = encodeIco(originals, &error);
    if (ico.isEmpty()) {
        fail(QStringLiteral("encodeIco"), error);
        return;
    }
    if (const QString problem = icoStructureProblem(ico, int(sizes.size())); !problem.isEmpty())
        fail(QStringLiteral("encodeIco structure"), problem);

    // The AND mask of the first entry: set exactly where alpha is low.
    const quint32 offset = u32At(ico, 6 + 12);
    const qsizetype maskStart = offset + 40 + 16 * 16 * 4;
    for (int y = 0; y < 16; ++y) {
        const int row = 15 - y; // bottom-up
        for (int x = 0; x < 16; ++x) {
            const bool masked = (quint8(ico.at(maskStart + row * 4 + x / 8)) >> (7 - x % 8)) & 1;
            const bool transparent = qAlpha(originals.at(0).pixel(x, y)) < kMaskAlphaThreshold;
            if (masked != transparent) {
                fail(QStringLiteral("encodeIco mask"), QStringLiteral("wrong bit at %1,%2").arg(x).arg(y));
                return;
            }
        }
    }

    QBuffer buffer;
    buffer.setData(ico);
    buffer.open(QIODevice::ReadOnly);
    const QList<QImage> decoded = readIcoImages(&buffer);
    if (decoded.size() != originals.size()) {
        fail(QStringLiteral("ico round trip"), QStringLiteral("%1 images read back").arg(decoded.size()));
        return;
    }
    for (qsizetype i = 0; i < originals.size(); ++i) {
        const QImage &a = originals.at(i);
        const QImage &b = decoded.at(i);
        if (a.size() != b.size()) {
            fail(QStringLiteral("ico round trip"), QStringLiteral("image %1 changed size").arg(i));
            continue;
        }
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x) {
                const QRgb p = a.pixel(x, y);
                const QRgb q = b.pixel(x, y);
                if (!samePixel(p, q)) {
                    fail(QStringLiteral("ico round trip"),
                         QStringLiteral("image %1 pixel %2,%3: %4 read back as %5")
                             .arg(i).arg(x).arg(y)
                             .arg(p, 8, 16, QLatin1Char('0'))
                             .arg(q, 8, 16, QLatin1Char('0')));
                    return;
                }
            }
    }
}

void selftestIcoRejects()
{
    QString error;
    if (!encodeIco({}, &error).isEmpty() || error.isEmpty())
        fail(QStringLiteral("encodeIco"), QStringLiteral("accepts an empty list"));
    error.clear();
    const QImage tooBig(257, 257, QImage::Format_ARGB32);
    if (!encodeIco({tooBig}, &error).isEmpty() || error.isEmpty())
        fail(QStringLiteral("encodeIco"), QStringLiteral("accepts a 257 px image"));
}

void selftestRender()
{
    QString error;
    // Left half red: checks orientation and scaling of the drawing.
    const QByteArray half = "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 48 48'>"
                            "<rect x='0' y='0' width='24' height='48' fill='#ff0000'/></svg>";
    const QImage img = renderSvgData(half, QSize(16, 16), Qt::transparent, &error);
    if (img.isNull()) {
        fail(QStringLiteral("render"), error);
    } else if (img.pixel(2, 8) != qRgba(255, 0, 0, 255) || qAlpha(img.pixel(13, 8)) != 0) {
        fail(QStringLiteral("render"), QStringLiteral("left-half drawing not rendered in the left half"));
    }

    // A wide drawing keeps its proportions and is centred vertically.
    const QByteArray wide = "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 96 48'>"
                            "<rect width='96' height='48' fill='#0000ff'/></svg>";
    const QImage w = renderSvgData(wide, QSize(32, 32), Qt::white, &error);
    if (w.isNull() || w.pixel(16, 2) != qRgb(255, 255, 255) || w.pixel(16, 16) != qRgb(0, 0, 255)
        || w.pixel(16, 29) != qRgb(255, 255, 255))
        fail(QStringLiteral("render"), QStringLiteral("wide drawing not letterboxed"));

    // Faulty drawings are refused rather than rendered half-way.
    const QList<QByteArray> faulty = {
        "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 48 48'><rect width='4'",
        "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 48 48'>"
        "<rect width='4' height='4' fill='url(#nowhere)'/></svg>",
        "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 48 48'>"
        "<clipPath id='c'><rect width='4' height='4'/></clipPath></svg>",
        "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 48 48'>"
        "<rect width='4' height='4' filter='url(#f)'/></svg>",
    };
    for (qsizetype i = 0; i < faulty.size(); ++i) {
        error.clear();
        if (!renderSvgData(faulty.at(i), QSize(16, 16), Qt::transparent, &error).isNull() || error.isEmpty())
            fail(QStringLiteral("render"), QStringLiteral("faulty drawing %1 accepted").arg(i));
    }
}

void selftestFiles()
{
    QTemporaryDir tmp;
    const QString svgPath = tmp.filePath(QStringLiteral("d.svg"));
    QFile svg(svgPath);
    if (!svg.open(QIODevice::WriteOnly)
        || svg.write("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 60 40'>"
                     "<circle cx='30' cy='20' r='10' fill='#008000'/></svg>") <= 0) {
        fail(QStringLiteral("files"), QStringLiteral("cannot write a test drawing"));
        return;
    }
    svg.close();

    QString error;
    const QString jpg = tmp.filePath(QStringLiteral("d.jpg"));
    if (!writeJpegFile(svgPath, jpg, QSize(120, 80), &error)) {
        fail(QStringLiteral("writeJpegFile"), error);
    } else {
        const QImage img(jpg, "jpeg");
        if (img.size() != QSize(120, 80) || qGray(img.pixel(3, 3)) < 245 || qGreen(img.pixel(60, 40)) < 100
            || qRed(img.pixel(60, 40)) > 60)
            fail(QStringLiteral("writeJpegFile"), QStringLiteral("unexpected picture"));
    }

    // A missing source must fail without creating the output.
    const QString never = tmp.filePath(QStringLiteral("never.ico"));
    if (writeIconFile(tmp.filePath(QStringLiteral("absent.svg")), never, &error) || QFile::exists(never))
        fail(QStringLiteral("writeIconFile"), QStringLiteral("succeeds without a source drawing"));
}

int selftest()
{
    selftestIcoRoundTrip();
    selftestIcoRejects();
    selftestRender();
    selftestFiles();
    return g_failures == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments().mid(1);

    int status = 2;
    if (args.size() == 2 && args.at(0) == QLatin1String("staged"))
        status = checkStaged(args.at(1));
    else if (args.size() == 1 && args.at(0) == QLatin1String("selftest"))
        status = selftest();
    else
        std::fputs("usage: kalvex2-check-assets staged PROGRAM_DIR | selftest\n", stderr);

    if (status == 0)
        std::puts("all checks passed");
    else if (status == 1)
        std::fprintf(stderr, "%d check(s) failed\n", g_failures);
    return status;
}
