#include "pictureformats.h"

#include <QtEndian>

namespace PictureFormats {
namespace {

bool has(const QByteArray &data, qsizetype offset, qsizetype length)
{
    return offset >= 0 && length >= 0 && offset <= data.size() && length <= data.size() - offset;
}

quint16 u16(const QByteArray &data, qsizetype offset)
{
    return qFromLittleEndian<quint16>(data.constData() + offset);
}

quint32 u32(const QByteArray &data, qsizetype offset)
{
    return qFromLittleEndian<quint32>(data.constData() + offset);
}

qint16 s16(const QByteArray &data, qsizetype offset)
{
    return qFromLittleEndian<qint16>(data.constData() + offset);
}

qint32 s32(const QByteArray &data, qsizetype offset)
{
    return qFromLittleEndian<qint32>(data.constData() + offset);
}

quint32 u32be(const QByteArray &data, qsizetype offset)
{
    return qFromBigEndian<quint32>(data.constData() + offset);
}

constexpr quint32 kPlaceableKey = 0x9AC6CDD7;
constexpr quint32 kEmfSignature = 0x464D4520; // " EMF"

} // namespace

Kind kindOf(const QByteArray &data)
{
    if (has(data, 0, 4) && u32(data, 0) == kPlaceableKey)
        return Kind::Wmf;
    // A metafile without placeable header: type 1 or 2, header of 9 words, version 0x0100 or 0x0300.
    if (has(data, 0, 6) && (u16(data, 0) == 1 || u16(data, 0) == 2) && u16(data, 2) == 9
        && (u16(data, 4) == 0x0100 || u16(data, 4) == 0x0300))
        return Kind::Wmf;
    if (has(data, 0, 44) && u32(data, 0) == 1 && u32(data, 40) == kEmfSignature)
        return Kind::Emf;
    if (has(data, 0, 12) && data.startsWith("RIFF") && data.mid(8, 4) == "ACON")
        return Kind::Ani;
    // Reserved 0, type 1 (icon) or 2 (cursor), at least one entry.
    if (has(data, 0, 6) && u16(data, 0) == 0 && (u16(data, 2) == 1 || u16(data, 2) == 2) && u16(data, 4) > 0)
        return Kind::Icon;
    return Kind::Other;
}

QByteArray firstAniIcon(const QByteArray &ani)
{
    if (kindOf(ani) != Kind::Ani)
        return {};
    // Chunks: 4-byte id, 4-byte size, data padded to an even length. The icons sit in LIST "fram".
    qsizetype end = std::min<qsizetype>(ani.size(), qsizetype(u32(ani, 4)) + 8);
    qsizetype at = 12;
    while (has(ani, at, 8) && at + 8 <= end) {
        const QByteArray id = ani.mid(at, 4);
        const quint32 size = u32(ani, at + 4);
        if (id == "LIST") {
            if (has(ani, at + 8, 4) && ani.mid(at + 8, 4) == "fram") {
                end = std::min<qsizetype>(end, at + 8 + qsizetype(size));
                at += 12; // into the list
                continue;
            }
        } else if (id == "icon") {
            return has(ani, at + 8, size) ? ani.mid(at + 8, size) : QByteArray();
        }
        at += 8 + qsizetype(size) + (size & 1);
    }
    return {};
}

QList<IconEntry> iconEntries(const QByteArray &ico)
{
    if (kindOf(ico) != Kind::Icon)
        return {};
    static const QByteArray pngSignature("\x89PNG\r\n\x1a\n", 8);
    QList<IconEntry> entries;
    const int count = u16(ico, 4);
    for (int index = 0; index < count; ++index) {
        const qsizetype at = 6 + 16 * qsizetype(index);
        if (!has(ico, at, 16))
            break;
        IconEntry entry;
        entry.directory = ico.mid(at, 16);
        entry.declared = QSize(uchar(ico[at]) ? uchar(ico[at]) : 256, uchar(ico[at + 1]) ? uchar(ico[at + 1]) : 256);
        const qsizetype offset = u32(ico, at + 12);
        const qsizetype length = u32(ico, at + 8);
        if (offset >= 6 + 16 * qsizetype(count) && has(ico, offset, 0))
            entry.data = ico.mid(offset, std::min(length, ico.size() - offset));
        const QByteArray &d = entry.data;
        if (d.startsWith(pngSignature)) {
            entry.png = true;
            if (has(d, 8, 16) && d.mid(12, 4) == "IHDR" && u32be(d, 16) <= 0x7fffffff && u32be(d, 20) <= 0x7fffffff)
                entry.real = QSize(int(u32be(d, 16)), int(u32be(d, 20)));
        } else if (has(d, 0, 12) && u32(d, 0) == 12) { // BITMAPCOREHEADER
            entry.real = QSize(u16(d, 4), u16(d, 6) / 2);
        } else if (has(d, 0, 16) && u32(d, 0) >= 40) {
            const qint64 width = s32(d, 4), height = std::abs(qint64(s32(d, 8))) / 2; // the mask counts
            if (width > 0 && width <= 0x7fffffff)
                entry.real = QSize(int(width), int(height));
        }
        if (entry.real.isEmpty())
            entry.real = QSize();
        entries.append(entry);
    }
    return entries;
}

bool entryIsConsistent(const IconEntry &entry)
{
    const auto agrees = [](int declared, int real) { return declared == 256 ? real >= 256 : declared == real; };
    return entry.real.isValid() && agrees(entry.declared.width(), entry.real.width())
           && agrees(entry.declared.height(), entry.real.height());
}

QByteArray singleEntryIcon(const QByteArray &ico, const IconEntry &entry)
{
    if (kindOf(ico) != Kind::Icon)
        return {};
    QByteArray file(6, '\0');
    qToLittleEndian<quint16>(u16(ico, 2), file.data() + 2);
    qToLittleEndian<quint16>(1, file.data() + 4);
    QByteArray directory = entry.directory;
    qToLittleEndian<quint32>(quint32(entry.data.size()), directory.data() + 8);
    qToLittleEndian<quint32>(22, directory.data() + 12);
    return file + directory + entry.data;
}

int jpegScanCount(const QByteArray &jpeg)
{
    if (!has(jpeg, 0, 3) || uchar(jpeg[0]) != 0xFF || uchar(jpeg[1]) != 0xD8)
        return -1;
    int scans = 0;
    qsizetype at = 2;
    while (has(jpeg, at, 2)) {
        if (uchar(jpeg[at]) != 0xFF) {
            ++at; // entropy-coded data
            continue;
        }
        const uchar marker = uchar(jpeg[at + 1]);
        if (marker == 0xFF) {
            ++at; // fill byte
            continue;
        }
        if (marker == 0xD9) // end of image
            break;
        // A stuffed zero, a restart marker, TEM and SOI stand alone.
        if (marker == 0x00 || marker == 0x01 || marker == 0xD8 || (marker >= 0xD0 && marker <= 0xD7)) {
            at += 2;
            continue;
        }
        if (!has(jpeg, at + 2, 2))
            break;
        if (marker == 0xDA)
            ++scans;
        at += 2 + qFromBigEndian<quint16>(jpeg.constData() + at + 2); // the segment, skipped whole
    }
    return scans;
}

int wmfRecordCount(const QByteArray &wmf)
{
    if (kindOf(wmf) != Kind::Wmf)
        return -1;
    qsizetype at = u32(wmf, 0) == kPlaceableKey ? 22 : 0;
    if (!has(wmf, at, 18))
        return -1;
    at += 2 * qsizetype(u16(wmf, at + 2)); // the header's size in words
    int records = 0;
    while (has(wmf, at, 6)) {
        const quint32 words = u32(wmf, at);
        if (words < 3)
            return -1;
        ++records;
        if (u16(wmf, at + 4) == 0) // the end record
            break;
        at += 2 * qsizetype(words);
    }
    return records;
}

QSize wmfNaturalSize(const QByteArray &wmf)
{
    if (!has(wmf, 0, 22) || u32(wmf, 0) != kPlaceableKey)
        return {};
    const int left = s16(wmf, 6), top = s16(wmf, 8), right = s16(wmf, 10), bottom = s16(wmf, 12);
    const int unitsPerInch = u16(wmf, 14);
    if (unitsPerInch == 0)
        return {};
    const QSize size(qRound(std::abs(right - left) * 96.0 / unitsPerInch),
                     qRound(std::abs(bottom - top) * 96.0 / unitsPerInch));
    return size.isEmpty() ? QSize() : size;
}

QSize emfNaturalSize(const QByteArray &emf)
{
    if (kindOf(emf) != Kind::Emf)
        return {};
    const qint64 left = s32(emf, 24), top = s32(emf, 28), right = s32(emf, 32), bottom = s32(emf, 36);
    const double width = std::abs(double(right - left)) * 96.0 / 2540.0;
    const double height = std::abs(double(bottom - top)) * 96.0 / 2540.0;
    if (width < 0.5 || height < 0.5 || width > 1e5 || height > 1e5)
        return {};
    return QSize(qRound(width), qRound(height));
}

QImage applyIconMask(const QByteArray &ico, int index, const QImage &image)
{
    if (image.isNull() || !has(ico, 0, 6) || u16(ico, 0) != 0 || index < 0 || index >= u16(ico, 4))
        return image;
    const qsizetype entry = 6 + 16 * qsizetype(index);
    if (!has(ico, entry, 16))
        return image;
    const qsizetype offset = u32(ico, entry + 12);
    if (!has(ico, offset, 40) || u32(ico, offset) != 40)
        return image; // a PNG entry, or a header we do not know
    const qint32 width = s32(ico, offset + 4);
    const qint32 height = s32(ico, offset + 8) / 2; // the bitmap's height counts the mask too
    const int bits = u16(ico, offset + 14);
    const quint32 compression = u32(ico, offset + 16);
    if (bits >= 32 || bits == 0 || compression != 0 || width <= 0 || height <= 0
        || width != image.width() || height != image.height())
        return image;
    quint32 colours = u32(ico, offset + 32);
    if (bits <= 8 && colours == 0)
        colours = 1u << bits;
    if (bits > 8)
        colours = 0;
    if (colours > 256)
        return image;
    const qsizetype xorStride = ((qsizetype(width) * bits + 31) / 32) * 4;
    const qsizetype andStride = ((qsizetype(width) + 31) / 32) * 4;
    const qsizetype maskAt = offset + 40 + 4 * qsizetype(colours) + xorStride * height;
    if (!has(ico, maskAt, andStride * height))
        return image;
    QImage masked = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        const auto *row = reinterpret_cast<const uchar *>(ico.constData() + maskAt + andStride * (height - 1 - y));
        auto *pixels = reinterpret_cast<QRgb *>(masked.scanLine(y));
        for (int x = 0; x < width; ++x) {
            if (row[x / 8] & (0x80 >> (x % 8)))
                pixels[x] = 0; // transparent
        }
    }
    return masked;
}

} // namespace PictureFormats
