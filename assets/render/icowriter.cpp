#include "icowriter.h"

#include <QtEndian>

#include <cstdint>

namespace kalvex2::assets {

namespace {

constexpr int kIconDirSize = 6;
constexpr int kIconDirEntrySize = 16;
constexpr int kBitmapInfoHeaderSize = 40;

void putU8(QByteArray &out, quint8 v)
{
    out.append(static_cast<char>(v));
}

void putU16(QByteArray &out, quint16 v)
{
    char b[2];
    qToLittleEndian(v, b);
    out.append(b, 2);
}

void putU32(QByteArray &out, quint32 v)
{
    char b[4];
    qToLittleEndian(v, b);
    out.append(b, 4);
}

int maskStride(int width)
{
    return ((width + 31) / 32) * 4;
}

// Builds one DIB entry (header, colour pixels, AND mask) for the image.
QByteArray encodeDib(const QImage &source)
{
    const QImage img = source.convertToFormat(QImage::Format_ARGB32);
    const int w = img.width();
    const int h = img.height();
    const int colourBytes = w * 4 * h;
    const int maskBytes = maskStride(w) * h;

    QByteArray dib;
    dib.reserve(kBitmapInfoHeaderSize + colourBytes + maskBytes);
    putU32(dib, kBitmapInfoHeaderSize);
    putU32(dib, static_cast<quint32>(w));
    putU32(dib, static_cast<quint32>(2 * h)); // colour rows + mask rows
    putU16(dib, 1);                           // planes
    putU16(dib, 32);                          // bits per pixel
    putU32(dib, 0);                           // BI_RGB
    putU32(dib, static_cast<quint32>(colourBytes + maskBytes));
    putU32(dib, 0);                           // horizontal resolution
    putU32(dib, 0);                           // vertical resolution
    putU32(dib, 0);                           // colours used
    putU32(dib, 0);                           // important colours

    // Colour rows, bottom row first.
    for (int y = h - 1; y >= 0; --y) {
        const auto *line = reinterpret_cast<const QRgb *>(img.constScanLine(y));
        for (int x = 0; x < w; ++x) {
            const QRgb p = line[x];
            putU8(dib, static_cast<quint8>(qBlue(p)));
            putU8(dib, static_cast<quint8>(qGreen(p)));
            putU8(dib, static_cast<quint8>(qRed(p)));
            putU8(dib, static_cast<quint8>(qAlpha(p)));
        }
    }

    // AND mask rows, bottom row first; a set bit means transparent.
    const int stride = maskStride(w);
    for (int y = h - 1; y >= 0; --y) {
        const auto *line = reinterpret_cast<const QRgb *>(img.constScanLine(y));
        QByteArray row(stride, '\0');
        for (int x = 0; x < w; ++x) {
            if (qAlpha(line[x]) < kMaskAlphaThreshold)
                row[x / 8] = static_cast<char>(row[x / 8] | (0x80 >> (x % 8)));
        }
        dib.append(row);
    }
    return dib;
}

} // namespace

QByteArray encodeIco(const QList<QImage> &images, QString *error)
{
    auto fail = [error](const QString &message) {
        if (error)
            *error = message;
        return QByteArray();
    };

    if (images.isEmpty())
        return fail(QStringLiteral("no image to store in the icon"));
    if (images.size() > 255)
        return fail(QStringLiteral("too many images for one icon (%1)").arg(images.size()));

    QList<QByteArray> dibs;
    dibs.reserve(images.size());
    for (const QImage &img : images) {
        if (img.isNull() || img.width() > 256 || img.height() > 256)
            return fail(QStringLiteral("icon images must be 1 to 256 pixels wide and high (got %1x%2)")
                            .arg(img.width())
                            .arg(img.height()));
        dibs.append(encodeDib(img));
    }

    QByteArray out;
    putU16(out, 0);                                     // reserved
    putU16(out, 1);                                     // type: icon
    putU16(out, static_cast<quint16>(images.size()));

    quint32 offset = kIconDirSize + kIconDirEntrySize * static_cast<quint32>(images.size());
    for (qsizetype i = 0; i < images.size(); ++i) {
        const QImage &img = images.at(i);
        putU8(out, static_cast<quint8>(img.width() == 256 ? 0 : img.width()));
        putU8(out, static_cast<quint8>(img.height() == 256 ? 0 : img.height()));
        putU8(out, 0);                                  // palette size
        putU8(out, 0);                                  // reserved
        putU16(out, 1);                                 // planes
        putU16(out, 32);                                // bits per pixel
        putU32(out, static_cast<quint32>(dibs.at(i).size()));
        putU32(out, offset);
        offset += static_cast<quint32>(dibs.at(i).size());
    }
    for (const QByteArray &dib : dibs)
        out.append(dib);
    return out;
}

} // namespace kalvex2::assets
