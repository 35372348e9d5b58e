#include "samplepictures.h"

#include "windows1252.h"

#include <QBuffer>
#include <QImageWriter>
#include <QPainter>
#include <QtEndian>

namespace SamplePictures {
namespace {

struct Bytes
{
    QByteArray data;
    Bytes &u8(int v) { data.append(char(v)); return *this; }
    Bytes &u16(int v) { char b[2]; qToLittleEndian<quint16>(quint16(v), b); data.append(b, 2); return *this; }
    Bytes &u32(qint64 v) { char b[4]; qToLittleEndian<quint32>(quint32(v), b); data.append(b, 4); return *this; }
    Bytes &raw(const QByteArray &b) { data.append(b); return *this; }
    Bytes &zeros(int n) { data.append(QByteArray(n, '\0')); return *this; }
};

QByteArray pngChunk(const char *type, const QByteArray &data)
{
    QByteArray chunk(4, '\0');
    qToBigEndian<quint32>(quint32(data.size()), chunk.data());
    const QByteArray body = QByteArray(type, 4) + data;
    // CRC-32 of the type and data, as zlib computes it.
    quint32 crc = 0xffffffff;
    for (char c : body) {
        crc ^= uchar(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xedb88320 & (0 - (crc & 1)));
    }
    QByteArray sum(4, '\0');
    qToBigEndian<quint32>(~crc, sum.data());
    return chunk + body + sum;
}

// Placeable header and metafile header around `body`, the end record added.
QByteArray placeableWmf(int width, int height, int unit, const QByteArray &records, qint64 maxRecord)
{
    const QByteArray body = records + QByteArray::fromHex("030000000000");
    Bytes file;
    file.u32(0x9AC6CDD7).u16(0).u16(0).u16(0).u16(width * unit).u16(height * unit).u16(1440).u32(0);
    quint16 checksum = 0;
    for (int i = 0; i < 10; ++i)
        checksum ^= qFromLittleEndian<quint16>(file.data.constData() + 2 * i);
    file.u16(checksum);
    file.u16(1).u16(9).u16(0x0300).u32(9 + body.size() / 2).u16(4).u32(std::max<qint64>(maxRecord, 3)).u16(0);
    file.raw(body);
    return file.data;
}

quint32 colorRef(const QColor &c)
{
    return quint32(c.red()) | quint32(c.green()) << 8 | quint32(c.blue()) << 16;
}

} // namespace

QImage bands(int width, int height, const QList<QColor> &colours)
{
    QImage image(width, height, QImage::Format_ARGB32);
    for (int x = 0; x < width; ++x) {
        const QRgb rgb = colours.at(x * colours.size() / width).rgba();
        for (int y = 0; y < height; ++y)
            image.setPixel(x, y, rgb);
    }
    return image;
}

QByteArray icon(const QImage &picture, int bits, const QImage &transparent, bool cursor)
{
    const QImage image = picture.convertToFormat(QImage::Format_ARGB32);
    const int w = image.width(), h = image.height();
    QList<QRgb> palette;
    if (bits <= 8) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                if (!palette.contains(image.pixel(x, y) | 0xff000000))
                    palette.append(image.pixel(x, y) | 0xff000000);
        Q_ASSERT(palette.size() <= (1 << bits));
        palette.resize(1 << bits, qRgb(0, 0, 0));
    }
    const int xorStride = ((w * bits + 31) / 32) * 4;
    const int andStride = ((w + 31) / 32) * 4;
    QByteArray pixels(xorStride * h, '\0');
    QByteArray mask(andStride * h, '\0');
    for (int y = 0; y < h; ++y) {
        char *row = pixels.data() + xorStride * (h - 1 - y);
        char *maskRow = mask.data() + andStride * (h - 1 - y);
        for (int x = 0; x < w; ++x) {
            const QRgb rgb = image.pixel(x, y);
            const bool clear = !transparent.isNull() && transparent.pixelColor(x, y) == Qt::black;
            if (clear)
                maskRow[x / 8] = char(maskRow[x / 8] | (0x80 >> (x % 8)));
            if (bits <= 8) {
                const int index = int(palette.indexOf(rgb | 0xff000000));
                const int shift = 8 - bits - (x * bits) % 8;
                row[x * bits / 8] = char(row[x * bits / 8] | (index << shift));
            } else {
                uchar *p = reinterpret_cast<uchar *>(row) + x * (bits / 8);
                p[0] = uchar(qBlue(rgb)); p[1] = uchar(qGreen(rgb)); p[2] = uchar(qRed(rgb));
                if (bits == 32)
                    p[3] = uchar(clear ? 0 : qAlpha(rgb));
            }
        }
    }
    Bytes bmp;
    bmp.u32(40).u32(w).u32(h * 2).u16(1).u16(bits).u32(0).u32(pixels.size() + mask.size())
        .u32(0).u32(0).u32(bits <= 8 ? (1 << bits) : 0).u32(0);
    for (QRgb rgb : std::as_const(palette))
        bmp.u8(qBlue(rgb)).u8(qGreen(rgb)).u8(qRed(rgb)).u8(0);
    bmp.raw(pixels).raw(mask);

    Bytes file;
    file.u16(0).u16(cursor ? 2 : 1).u16(1);
    file.u8(w >= 256 ? 0 : w).u8(h >= 256 ? 0 : h).u8(bits <= 4 ? (1 << bits) : 0).u8(0)
        .u16(cursor ? 0 : 1).u16(cursor ? 0 : bits).u32(bmp.data.size()).u32(22);
    file.raw(bmp.data);
    return file.data;
}

QByteArray animatedCursor(const QList<QByteArray> &frames)
{
    Bytes list;
    list.raw("fram");
    for (const QByteArray &frame : frames) {
        list.raw("icon").u32(frame.size()).raw(frame);
        if (frame.size() % 2)
            list.u8(0);
    }
    Bytes header;
    header.u32(36).u32(int(frames.size())).u32(int(frames.size())).u32(0).u32(0).u32(0).u32(0).u32(10).u32(1);
    Bytes body;
    body.raw("ACON").raw("anih").u32(36).raw(header.data).raw("LIST").u32(list.data.size()).raw(list.data);
    Bytes file;
    file.raw("RIFF").u32(body.data.size()).raw(body.data);
    return file.data;
}

QByteArray wmf(int width, int height, const QColor &background, const QColor &fill, const QString &text)
{
    const int unit = 15;
    const int W = width * unit, H = height * unit;
    QList<QByteArray> records;
    auto record = [&records](int function, const Bytes &params) {
        Bytes r;
        r.u32(3 + params.data.size() / 2).u16(function).raw(params.data);
        records.append(r.data);
    };
    record(0x020B, Bytes().u16(0).u16(0));                 // SETWINDOWORG y, x
    record(0x020C, Bytes().u16(H).u16(W));                 // SETWINDOWEXT y, x
    record(0x02FC, Bytes().u16(0).u32(colorRef(background)).u16(0)); // brush 0
    record(0x02FC, Bytes().u16(0).u32(colorRef(fill)).u16(0));       // brush 1
    record(0x02FA, Bytes().u16(5).u16(0).u16(0).u32(0)); // CREATEPENINDIRECT: null pen (object 2)
    record(0x012D, Bytes().u16(2));                         // select the null pen
    record(0x012D, Bytes().u16(0));
    record(0x041B, Bytes().u16(H + unit).u16(W + unit).u16(0).u16(0)); // the page
    record(0x012D, Bytes().u16(1));
    record(0x041B, Bytes().u16(H - 2 * unit).u16(W / 2).u16(2 * unit).u16(2 * unit));
    QByteArray face("DejaVu Sans");
    face.resize(32, '\0');
    record(0x02FB, Bytes().u16(-20 * unit).u16(0).u16(0).u16(0).u16(400).u8(0).u8(0).u8(0).u8(0)
                       .u8(0).u8(0).u8(0).u8(0).raw(face)); // font: object 3
    record(0x012D, Bytes().u16(3));
    record(0x0209, Bytes().u32(0));                         // black text
    record(0x0102, Bytes().u16(1));                         // transparent background
    QByteArray chars = Windows1252::encode(text);
    const int length = int(chars.size());
    if (chars.size() % 2)
        chars.append('\0');
    record(0x0521, Bytes().u16(length).raw(chars).u16(H / 4).u16(W / 2 + 2 * unit));
    record(0x0000, Bytes());

    Bytes body;
    for (const QByteArray &r : std::as_const(records))
        body.raw(r);
    qint64 maxRecord = 0;
    for (const QByteArray &r : std::as_const(records))
        maxRecord = std::max<qint64>(maxRecord, r.size() / 2);
    Bytes file;
    file.u32(0x9AC6CDD7).u16(0).u16(0).u16(0).u16(W).u16(H).u16(1440).u32(0);
    quint16 checksum = 0;
    for (int i = 0; i < 10; ++i)
        checksum ^= qFromLittleEndian<quint16>(file.data.constData() + 2 * i);
    file.u16(checksum);
    file.u16(1).u16(9).u16(0x0300).u32(9 + body.data.size() / 2).u16(4).u32(maxRecord).u16(0);
    file.raw(body.data);
    return file.data;
}

QByteArray emf(int width, int height, const QColor &background, const QColor &fill, const QString &text)
{
    QList<QByteArray> records;
    auto record = [&records](int type, const Bytes &params) {
        Bytes r;
        r.u32(type).u32(8 + params.data.size()).raw(params.data);
        records.append(r.data);
    };
    record(39, Bytes().u32(1).u32(0).u32(colorRef(background)).u32(0)); // CREATEBRUSHINDIRECT 1
    record(39, Bytes().u32(2).u32(0).u32(colorRef(fill)).u32(0));       // 2
    record(37, Bytes().u32(0x80000008));                                // SELECTOBJECT NULL_PEN
    record(37, Bytes().u32(1));
    record(43, Bytes().u32(-1).u32(-1).u32(width + 1).u32(height + 1));  // RECTANGLE: the page
    record(37, Bytes().u32(2));
    record(43, Bytes().u32(2).u32(2).u32(width / 2).u32(height - 2));
    Bytes font;
    font.u32(3).u32(-20).u32(0).u32(0).u32(0).u32(400).u8(0).u8(0).u8(0).u8(0).u8(0).u8(0).u8(0).u8(0);
    QByteArray face = QByteArray(reinterpret_cast<const char *>(u"DejaVu Sans"), 22);
    face.resize(64, '\0');
    font.raw(face);
    record(82, font);                                                   // EXTCREATEFONTINDIRECTW 3
    record(37, Bytes().u32(3));
    record(24, Bytes().u32(0));                                         // SETTEXTCOLOR black
    record(18, Bytes().u32(1));                                         // SETBKMODE transparent
    record(22, Bytes().u32(0));                                         // SETTEXTALIGN top, left
    QByteArray chars(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    while (chars.size() % 4)
        chars.append('\0');
    Bytes dx;
    for (int i = 0; i < text.size(); ++i)
        dx.u32(12);
    Bytes textOut;
    textOut.u32(0).u32(0).u32(width).u32(height).u32(1).u32(0x3F800000).u32(0x3F800000) // bounds, GM_COMPATIBLE, scales
        .u32(width / 2 + 2).u32(height / 4).u32(text.size()).u32(76).u32(0).u32(0).u32(0).u32(-1).u32(-1)
        .u32(76 + chars.size()).raw(chars).raw(dx.data);
    record(84, textOut);
    record(14, Bytes().u32(0).u32(16).u32(20));                         // EOF

    qint64 size = 108;
    for (const QByteArray &r : std::as_const(records))
        size += r.size();
    // Device of 1024 x 768 pixels measuring 270.93 x 203.2 mm: 96 pixels to the inch.
    const auto hundredths = [](int pixels) { return qRound(pixels * 2540.0 / 96.0); };
    Bytes header;
    header.u32(1).u32(108).u32(0).u32(0).u32(width - 1).u32(height - 1)
        .u32(0).u32(0).u32(hundredths(width)).u32(hundredths(height))
        .u32(0x464D4520).u32(0x10000).u32(size).u32(records.size() + 1).u16(4).u16(0)
        .u32(0).u32(0).u32(0).u32(1024).u32(768).u32(271).u32(203)
        .u32(0).u32(0).u32(0).u32(270933).u32(203200);
    Bytes file;
    file.raw(header.data);
    for (const QByteArray &r : std::as_const(records))
        file.raw(r);
    return file.data;
}

QByteArray emptyPng(int width, int height)
{
    Bytes header;
    header.u32(0).u32(0).u8(8).u8(6).u8(0).u8(0).u8(0); // 8-bit RGBA
    qToBigEndian<quint32>(quint32(width), header.data.data());
    qToBigEndian<quint32>(quint32(height), header.data.data() + 4);
    // Each row: filter byte 0, then zeros. qCompress writes a 4-byte length, then a zlib stream.
    const QByteArray zlib = qCompress(QByteArray(qsizetype(height) * (1 + 4 * qsizetype(width)), '\0'), 9).mid(4);
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + pngChunk("IHDR", header.data) + pngChunk("IDAT", zlib)
           + pngChunk("IEND", {});
}

QByteArray iconOfPngs(const QByteArray &png, int count)
{
    Bytes file;
    file.u16(0).u16(1).u16(count);
    for (int i = 0; i < count; ++i)
        file.u8(0).u8(0).u8(0).u8(0).u16(1).u16(32).u32(png.size()).u32(6 + 16 * count);
    file.raw(png);
    return file.data;
}

QByteArray iconOfEntries(const QList<QByteArray> &icons)
{
    Bytes directory;
    directory.u16(0).u16(1).u16(int(icons.size()));
    QByteArray data;
    for (const QByteArray &single : icons) {
        const QByteArray entry = single.mid(22);
        directory.raw(single.mid(6, 12)).u32(6 + 16 * icons.size() + data.size());
        data += entry;
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
    // The last scan is a refinement of the luminance's AC coefficients: its header again and again,
    // without data, before the end of the image.
    const qsizetype lastScan = jpeg.lastIndexOf(QByteArray("\xff\xda", 2));
    const QByteArray scanHeader = jpeg.mid(lastScan, 2 + qFromBigEndian<quint16>(jpeg.constData() + lastScan + 2));
    QByteArray scans;
    for (int i = 0; i < emptyScans; ++i)
        scans += scanHeader;
    return jpeg.insert(jpeg.size() - 2, scans);
}

QByteArray wmfOfRectangles(int width, int height, int count)
{
    const int unit = 15;
    Bytes records;
    records.u32(5).u16(0x020B).u16(0).u16(0);                                    // SETWINDOWORG
    records.u32(5).u16(0x020C).u16(height * unit).u16(width * unit);             // SETWINDOWEXT
    for (int i = 0; i < count; ++i) {
        const int x = (i * 7) % width * unit, y = (i * 13) % height * unit;
        records.u32(7).u16(0x041B).u16(y + 5 * unit).u16(x + 5 * unit).u16(y).u16(x); // RECTANGLE
    }
    return placeableWmf(width, height, unit, records.data, 7);
}

} // namespace SamplePictures
