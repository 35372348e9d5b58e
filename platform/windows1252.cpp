#include "windows1252.h"

#include <QFile>
#include <array>

namespace {

// Unicode code points of bytes 0x80 to 0x9F. The five bytes the code page leaves undefined map to
// the C1 control of the same value, as Windows' own conversion does, so every byte round-trips.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

char encodeOne(char16_t u)
{
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF))
        return char(u);
    for (size_t i = 0; i < kHighControls.size(); ++i) {
        if (kHighControls[i] == u)
            return char(0x80 + i);
    }
    return '?';
}

std::array<unsigned char, 256> makeUpperTable()
{
    std::array<unsigned char, 256> table{};
    for (int i = 0; i < 256; ++i)
        table[i] = static_cast<unsigned char>(i);
    for (int c = 'a'; c <= 'z'; ++c)
        table[c] = static_cast<unsigned char>(c - 32);
    for (int c = 0xE0; c <= 0xFE; ++c) {
        if (c != 0xF7) // division sign
            table[c] = static_cast<unsigned char>(c - 32);
    }
    table[0x9A] = 0x8A; // š
    table[0x9C] = 0x8C; // œ
    table[0x9E] = 0x8E; // ž
    table[0xFF] = 0x9F; // ÿ
    return table;
}

} // namespace

namespace Windows1252 {

QByteArray encode(QStringView text)
{
    QByteArray out(text.size(), Qt::Uninitialized);
    char *next = out.data(); // written byte by byte without a check per byte
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i; // one character outside the code page, one substitute
        *next++ = encodeOne(c.unicode());
    }
    out.truncate(next - out.constData());
    return out;
}

QString decode(QByteArrayView bytes)
{
    QString out(bytes.size(), Qt::Uninitialized);
    QChar *dst = out.data();
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        dst[i] = (b >= 0x80 && b < 0xA0) ? QChar(kHighControls[b - 0x80]) : QChar(char16_t(b));
    }
    return out;
}

const unsigned char *upperTable()
{
    static const std::array<unsigned char, 256> table = makeUpperTable();
    return table.data();
}

QByteArray toUpper(QByteArrayView bytes)
{
    QByteArray out(bytes.size(), Qt::Uninitialized);
    const unsigned char *table = upperTable();
    for (qsizetype i = 0; i < bytes.size(); ++i)
        out[i] = char(table[static_cast<unsigned char>(bytes[i])]);
    return out;
}

QByteArray fromNativeFileName(QByteArrayView nativeName)
{
    bool ascii = true;
    for (char c : nativeName) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            ascii = false;
            break;
        }
    }
    QByteArray out = ascii ? nativeName.toByteArray()
                           : encode(QFile::decodeName(nativeName.toByteArray()));
    for (char &c : out) {
        if (c == '\r' || c == '\n' || c == '"')
            c = '?';
    }
    return out;
}

} // namespace Windows1252
