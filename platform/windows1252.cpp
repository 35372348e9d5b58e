#include "windows1252.h"

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
    // File names are UTF-8 here. They are decoded straight into the code page, without a QString
    // on the way: a medium has tens of thousands of names. Each malformed byte gives one '?'.
    const auto *in = reinterpret_cast<const unsigned char *>(nativeName.data());
    const qsizetype size = nativeName.size();
    QByteArray out(size, Qt::Uninitialized);
    char *next = out.data();
    for (qsizetype i = 0; i < size;) {
        const unsigned char lead = in[i];
        char32_t code = lead;
        int length = 1;
        if (lead >= 0x80) {
            length = lead >= 0xF0 && lead <= 0xF4 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 && lead <= 0xDF ? 2 : 0;
            if (length == 0 || i + length > size) {
                length = 1;
                code = 0xFFFD;
            } else {
                code = lead & (0x7F >> length);
                for (int k = 1; k < length; ++k) {
                    if ((in[i + k] & 0xC0) != 0x80) {
                        code = 0xFFFD;
                        length = 1;
                        break;
                    }
                    code = (code << 6) | (in[i + k] & 0x3F);
                }
                const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
                if (overlong || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF) {
                    code = 0xFFFD;
                    length = 1;
                }
            }
        }
        const char byte = code > 0xFFFF ? '?' : encodeOne(char16_t(code));
        *next++ = (byte == '\r' || byte == '\n' || byte == '"') ? '?' : byte;
        i += length;
    }
    out.truncate(next - out.constData());
    return out;
}

} // namespace Windows1252
