#include "samplepictures.h"

#include "windows1252.h"

#include <QBuffer>
#include <QImageWriter>
#include <QtEndian>

namespace SamplePictures {
namespace {

struct Bytes
{
    QByteArray data;
    Bytes &u8(int v) { data.append(char(v)); return *this; }
    Bytes &u16(int v) { return u8(v & 0xff).u8(v >> 8 & 0xff); }
    Bytes &u32(qint64 v) { return u16(int(v & 0xffff)).u16(int(v >> 16 & 0xffff)); }
    Bytes &raw(const QByteArray &b) { data.append(b); return *this; }
};

quint32 colorRef(const QColor &c) { return quint32(c.red()) | quint32(c.green()) << 8 | quint32(c.blue()) << 16; }

// The placeable header (its checksum the XOR of its first ten words) and the metafile header
// around `records`, the end record added.
QByteArray placeableWmf(int w, int h, QList<QByteArray> records)
{
    records.append(QByteArray::fromHex("030000000000"));
    qsizetype words = 0, largest = 0;
    for (const QByteArray &r : std::as_const(records)) {
        words += r.size() / 2;
        largest = std::max(largest, r.size() / 2);
    }
    Bytes file;
    file.u32(0x9AC6CDD7).u16(0).u16(0).u16(0).u16(w).u16(h).u16(1440).u32(0);
    quint16 checksum = 0;
    for (int i = 0; i < 10; ++i)
        checksum ^= qFromLittleEndian<quint16>(file.data.constData() + 2 * i);
    file.u16(checksum).u16(1).u16(9).u16(0x0300).u32(9 + words).u16(4).u32(largest).u16(0);
    for (const QByteArray &r : std::as_const(records))
        file.raw(r);
    return file.data;
}

QByteArray wmfRecord(int function, const Bytes &params)
{
    return Bytes().u32(3 + params.data.size() / 2).u16(function).raw(params.data).data;
}

} // namespace

QImage bands(int width, int height, const QList<QColor> &colours)
{
    QImage image(width, height, QImage::Format_ARGB32);
    for (int x = 0; x < width; ++x)
        for (int y = 0; y < height; ++y)
            image.setPixel(x, y, colours.at(x * colours.size() / width).rgba());
    return image;
}

QByteArray icon(const QImage &picture, int bits, const QImage &transparent, bool cursor)
{
    const QImage image = picture.convertToFormat(QImage::Format_ARGB32);
    const int w = image.width(), h = image.height();
    QList<QRgb> palette;
    for (int y = 0; bits <= 8 && y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (!palette.contains(image.pixel(x, y) | 0xff000000))
                palette.append(image.pixel(x, y) | 0xff000000);
    if (bits <= 8)
        palette.resize(1 << bits, qRgb(0, 0, 0));
    const int xorStride = (w * bits + 31) / 32 * 4, andStride = (w + 31) / 32 * 4;
    QByteArray pixels(xorStride * h, '\0'), mask(andStride * h, '\0');
    for (int y = 0; y < h; ++y) { // bottom-up rows
        uchar *row = reinterpret_cast<uchar *>(pixels.data()) + xorStride * (h - 1 - y);
        for (int x = 0; x < w; ++x) {
            const QRgb rgb = image.pixel(x, y);
            const bool clear = !transparent.isNull() && transparent.pixelColor(x, y) == Qt::black;
            if (clear)
                mask[andStride * (h - 1 - y) + x / 8] |= char(0x80 >> (x % 8));
            if (bits <= 8)
                row[x * bits / 8] |= uchar(palette.indexOf(rgb | 0xff000000) << (8 - bits - x * bits % 8));
            else
                for (int c = 0; c < bits / 8; ++c)
                    row[x * bits / 8 + c] = uchar(c == 3 ? (clear ? 0 : qAlpha(rgb)) : rgb >> (8 * c));
        }
    }
    Bytes bmp;
    bmp.u32(40).u32(w).u32(h * 2).u16(1).u16(bits).u32(0).u32(pixels.size() + mask.size())
        .u32(0).u32(0).u32(bits <= 8 ? 1 << bits : 0).u32(0);
    for (QRgb rgb : std::as_const(palette))
        bmp.u32(rgb & 0xffffff);
    bmp.raw(pixels).raw(mask);
    return Bytes().u16(0).u16(cursor ? 2 : 1).u16(1).u8(w % 256).u8(h % 256).u8(bits <= 4 ? 1 << bits : 0).u8(0)
        .u16(!cursor).u16(cursor ? 0 : bits).u32(bmp.data.size()).u32(22).raw(bmp.data).data;
}

QByteArray animatedCursor(const QList<QByteArray> &frames)
{
    Bytes list;
    list.raw("fram");
    for (const QByteArray &frame : frames)
        list.raw("icon").u32(frame.size()).raw(frame).raw(QByteArray(frame.size() % 2, '\0'));
    Bytes body;
    body.raw("ACONanih").u32(36).u32(36).u32(frames.size()).u32(frames.size()).u32(0).u32(0).u32(0).u32(0).u32(10)
        .u32(1).raw("LIST").u32(list.data.size()).raw(list.data);
    return Bytes().raw("RIFF").u32(body.data.size()).raw(body.data).data;
}

QByteArray wmf(int width, int height, const QColor &background, const QColor &fill, const QString &text, int rectangles)
{
    const int unit = 15, W = width * unit, H = height * unit;
    QByteArray face("DejaVu Sans");
    face.resize(32, '\0');
    QByteArray chars = Windows1252::encode(text);
    const int length = int(chars.size());
    chars.resize(length + length % 2, '\0');
    QList<QByteArray> records{
        wmfRecord(0x020B, Bytes().u16(0).u16(0)),                                 // SETWINDOWORG
        wmfRecord(0x020C, Bytes().u16(H).u16(W)),                                 // SETWINDOWEXT
        wmfRecord(0x02FC, Bytes().u16(0).u32(colorRef(background)).u16(0)),       // brush 0
        wmfRecord(0x02FC, Bytes().u16(0).u32(colorRef(fill)).u16(0)),             // brush 1
        wmfRecord(0x02FA, Bytes().u16(5).u16(0).u16(0).u32(0)),                   // null pen 2
        wmfRecord(0x012D, Bytes().u16(2)), wmfRecord(0x012D, Bytes().u16(0)),     // SELECTOBJECT
        wmfRecord(0x041B, Bytes().u16(H + unit).u16(W + unit).u16(0).u16(0)),     // the page
        wmfRecord(0x012D, Bytes().u16(1)),
        wmfRecord(0x041B, Bytes().u16(H - 2 * unit).u16(W / 2).u16(2 * unit).u16(2 * unit)),
        wmfRecord(0x02FB, Bytes().u16(-20 * unit).u32(0).u16(0).u16(400).u32(0).u32(0).raw(face)), // font 3
        wmfRecord(0x012D, Bytes().u16(3)),
        wmfRecord(0x0209, Bytes().u32(0)),                                        // black text
        wmfRecord(0x0102, Bytes().u16(1)),                                        // transparent
        wmfRecord(0x0521, Bytes().u16(length).raw(chars).u16(H / 4).u16(W / 2 + 2 * unit)),
    };
    for (int i = 0; i < rectangles; ++i) {
        const int x = (i * 7) % width * unit, y = (i * 13) % height * unit;
        records.append(wmfRecord(0x041B, Bytes().u16(y + 5 * unit).u16(x + 5 * unit).u16(y).u16(x)));
    }
    return placeableWmf(W, H, records);
}

QByteArray emf(int width, int height, const QColor &background, const QColor &fill, const QString &text)
{
    Bytes records;
    int count = 1; // the header
    const auto record = [&](int type, const Bytes &params) {
        records.u32(type).u32(8 + params.data.size()).raw(params.data);
        ++count;
    };
    record(39, Bytes().u32(1).u32(0).u32(colorRef(background)).u32(0)); // CREATEBRUSHINDIRECT 1
    record(39, Bytes().u32(2).u32(0).u32(colorRef(fill)).u32(0));       // 2
    record(37, Bytes().u32(0x80000008));                                // SELECTOBJECT NULL_PEN
    record(37, Bytes().u32(1));
    record(43, Bytes().u32(-1).u32(-1).u32(width + 1).u32(height + 1));  // RECTANGLE: the page
    record(37, Bytes().u32(2));
    record(43, Bytes().u32(2).u32(2).u32(width / 2).u32(height - 2));
    QByteArray face(reinterpret_cast<const char *>(u"DejaVu Sans"), 22);
    face.resize(64, '\0');
    record(82, Bytes().u32(3).u32(-20).u32(0).u32(0).u32(0).u32(400).u32(0).u32(0).raw(face)); // font 3
    record(37, Bytes().u32(3));
    record(24, Bytes().u32(0));                                         // SETTEXTCOLOR black
    record(18, Bytes().u32(1));                                         // SETBKMODE transparent
    record(22, Bytes().u32(0));                                         // SETTEXTALIGN top, left
    QByteArray chars(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    chars.resize((chars.size() + 3) / 4 * 4, '\0');
    Bytes textOut; // bounds, GM_COMPATIBLE, scales, then the text and its advances
    textOut.u32(0).u32(0).u32(width).u32(height).u32(1).u32(0x3F800000).u32(0x3F800000).u32(width / 2 + 2)
        .u32(height / 4).u32(text.size()).u32(76).u32(0).u32(0).u32(0).u32(-1).u32(-1).u32(76 + chars.size()).raw(chars);
    for (int i = 0; i < text.size(); ++i)
        textOut.u32(12);
    record(84, textOut);
    record(14, Bytes().u32(0).u32(16).u32(20));                         // EOF
    // A device of 1024 x 768 pixels measuring 270.93 x 203.2 mm: 96 pixels to the inch.
    const auto hundredths = [](int pixels) { return qRound(pixels * 2540.0 / 96.0); };
    return Bytes().u32(1).u32(108).u32(0).u32(0).u32(width - 1).u32(height - 1).u32(0).u32(0)
        .u32(hundredths(width)).u32(hundredths(height)).u32(0x464D4520).u32(0x10000).u32(108 + records.data.size())
        .u32(count).u16(4).u16(0).u32(0).u32(0).u32(0).u32(1024).u32(768).u32(271).u32(203).u32(0).u32(0).u32(0)
        .u32(270933).u32(203200).raw(records.data).data;
}

QByteArray pngIcon(int width, int height, int count)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QByteArray png;
    QBuffer buffer(&png);
    image.save(&buffer, "PNG", 0); // the smallest file
    Bytes file;
    file.u16(0).u16(1).u16(count);
    for (int i = 0; i < count; ++i)
        file.u32(0).u16(1).u16(32).u32(png.size()).u32(6 + 16 * count);
    return file.raw(png).data;
}

QByteArray iconOfEntries(const QList<QByteArray> &icons)
{
    Bytes directory;
    directory.u16(0).u16(1).u16(int(icons.size()));
    QByteArray data;
    for (const QByteArray &single : icons) {
        directory.raw(single.mid(6, 12)).u32(6 + 16 * icons.size() + data.size());
        data += single.mid(22);
    }
    return directory.data + data;
}

QByteArray jpegWithEmptyScans(int width, int height, int emptyScans)
{
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setProgressiveScanWrite(true);
    writer.write(bands(width, height, {Qt::red, Qt::blue}));
    // The last scan refines the luminance's AC coefficients: its header again and again, no data.
    const qsizetype lastScan = jpeg.lastIndexOf(QByteArray("\xff\xda", 2));
    const QByteArray scanHeader = jpeg.mid(lastScan, 2 + qFromBigEndian<quint16>(jpeg.constData() + lastScan + 2));
    return jpeg.insert(jpeg.size() - 2, scanHeader.repeated(emptyScans));
}

} // namespace SamplePictures
