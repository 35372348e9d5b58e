#include "windows1252.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace {

// Unicode code points of bytes 0x80 to 0x9F. The five bytes the code page leaves undefined map to
// the C1 control of the same value, as Windows' own conversion does, so every byte round-trips.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

// ASCII as one catalogue line holds it: CR, LF and '"' become '?'.
constexpr std::array<char, 128> kAsciiLine = [] {
    std::array<char, 128> table{};
    for (int i = 0; i < 128; ++i)
        table[i] = char(i);
    table['\r'] = table['\n'] = table['"'] = '?';
    return table;
}();

// Whether the eight bytes at `bytes` are ASCII from the blank up, '"' excepted: bytes that are
// their own catalogue line. Each test sets a byte's high bit: the byte's own (not ASCII), the byte
// less 0x20 (a control character), the byte xor '"' less one (the quote). A borrow can only follow
// a byte already caught, so the answer is exact.
bool isPlainAscii(const unsigned char *bytes)
{
    constexpr std::uint64_t ones = 0x0101010101010101, highBits = 0x8080808080808080;
    std::uint64_t word;
    std::memcpy(&word, bytes, 8);
    return ((word | (word - ones * 0x20) | ((word ^ ones * '"') - ones)) & highBits) == 0;
}

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

QByteArray toUpper(QByteArrayView bytes)
{
    QByteArray out(bytes.size(), Qt::Uninitialized);
    const unsigned char *table = upperTable();
    for (qsizetype i = 0; i < bytes.size(); ++i)
        out[i] = char(table[static_cast<unsigned char>(bytes[i])]);
    return out;
}

QString toUpper(QStringView text)
{
    QString out(text.size(), Qt::Uninitialized);
    QChar *dst = out.data();
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        const char byte = encodeOne(c);
        const bool inCodePage = byte != '?' || c == u'?';
        if (!inCodePage) {
            dst[i] = QChar(c);
            continue;
        }
        const unsigned char upper = kUpper[static_cast<unsigned char>(byte)];
        dst[i] = (upper >= 0x80 && upper < 0xA0) ? QChar(kHighControls[upper - 0x80]) : QChar(char16_t(upper));
    }
    return out;
}

QByteArray fromNativeFileName(QByteArrayView nativeName)
{
    QByteArray out(nativeName.size(), Qt::Uninitialized);
    out.truncate(fromNativeFileName(nativeName, out.data()) - out.constData());
    return out;
}

char *fromNativeFileName(QByteArrayView nativeName, char *next)
{
    // File names are UTF-8 here. They are decoded straight into the code page, without a QString
    // on the way: a medium has tens of thousands of names. Each malformed byte gives one '?'.
    const auto *in = reinterpret_cast<const unsigned char *>(nativeName.data());
    const qsizetype size = nativeName.size();
    for (qsizetype i = 0; i < size;) {
        // Most bytes are ASCII, the same in the code page: eight at a time while none needs a
        // look, then one by one up to the next byte that is not ASCII.
        while (i + 8 <= size && isPlainAscii(in + i)) {
            std::memcpy(next, in + i, 8);
            next += 8;
            i += 8;
        }
        while (i < size && in[i] < 0x80)
            *next++ = kAsciiLine[in[i++]];
        if (i == size)
            break;
        const unsigned char lead = in[i];
        // C0, C1 and F5 to FF never begin a sequence: each is one malformed byte.
        const int length = lead >= 0xF0 && lead <= 0xF4 ? 4
                           : lead >= 0xE0 && lead <= 0xEF ? 3
                           : lead >= 0xC2 && lead <= 0xDF ? 2
                                                          : 0;
        char32_t code = 0xFFFD;
        int used = 1;
        if (length != 0 && i + length <= size) {
            char32_t decoded = lead & (0x7F >> length);
            int k = 1;
            for (; k < length && (in[i + k] & 0xC0) == 0x80; ++k)
                decoded = (decoded << 6) | (in[i + k] & 0x3F);
            const bool overlong = (length == 3 && decoded < 0x800) || (length == 4 && decoded < 0x10000);
            if (k == length && !overlong && (decoded < 0xD800 || decoded > 0xDFFF) && decoded <= 0x10FFFF) {
                code = decoded;
                used = length;
            }
        }
        // Above 0x9F the only line breakers are ASCII, which never come this way.
        *next++ = code > 0xFFFF ? '?' : encodeOne(char16_t(code));
        i += used;
    }
    return next;
}

} // namespace Windows1252
