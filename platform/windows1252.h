#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <array>

// Windows-1252, the single-byte code page of every text file the program reads and writes.
namespace Windows1252 {

// Characters the code page cannot hold become '?'.
QByteArray encode(QStringView text);
QString decode(QByteArrayView bytes);

// Upper-casing as Windows does it for this code page: a-z, the accented letters (é becomes É,
// ÿ becomes Ÿ), š, œ and ž. Other bytes are left as they are.
constexpr std::array<unsigned char, 256> makeUpperTable()
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
// A constant in the header, so that sorting and matching index it without a call.
inline constexpr std::array<unsigned char, 256> kUpper = makeUpperTable();

inline const unsigned char *upperTable()
{
    return kUpper.data();
}
inline char toUpper(char c)
{
    return char(kUpper[static_cast<unsigned char>(c)]);
}
QByteArray toUpper(QByteArrayView bytes);
// Text upper-cased by the same table, character for character: a character the code page cannot
// hold is left as it is, so the result is always as long as the text ("straße" gives "STRAßE",
// where QString::toUpper would give nine characters).
QString toUpper(QStringView text);

// A file name as the system gives it (bytes, normally UTF-8) turned into one catalogue line:
// Windows-1252, with '?' for what the code page cannot hold and for CR, LF and '"'.
QByteArray fromNativeFileName(QByteArrayView nativeName);
// The same written at `out`, which has room for nativeName.size() bytes (the line is never longer
// than the name); returns the end of what was written.
char *fromNativeFileName(QByteArrayView nativeName, char *out);

} // namespace Windows1252
