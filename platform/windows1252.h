#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

// Windows-1252, the single-byte code page of every text file the program reads and writes.
namespace Windows1252 {

// Characters the code page cannot hold become '?'.
QByteArray encode(QStringView text);
QString decode(QByteArrayView bytes);

// Upper-casing as Windows does it for this code page: a-z, the accented letters (é becomes É,
// ÿ becomes Ÿ), š, œ and ž. Other bytes are left as they are.
const unsigned char *upperTable();
inline char toUpper(char c)
{
    return char(upperTable()[static_cast<unsigned char>(c)]);
}
QByteArray toUpper(QByteArrayView bytes);

// A file name as the system gives it (bytes, normally UTF-8) turned into one catalogue line:
// Windows-1252, with '?' for what the code page cannot hold and for CR, LF and '"'.
QByteArray fromNativeFileName(QByteArrayView nativeName);

} // namespace Windows1252
