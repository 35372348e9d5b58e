#pragma once

#include <QByteArray>

// What kind of program an old disc's COM/EXE file is, told by its first bytes.
enum class ProgramKind {
    Com,      // no "MZ" signature: a bare COM image
    Windows,  // "MZ" whose header offset (at 0x3C) points to "PE\0\0" or "NE"
    Dos,      // any other "MZ" program
};

// `head` is the start of the file (the first 4 KiB are plenty for the usual headers); a
// header offset pointing past it counts as a DOS program.
ProgramKind programKindOf(const QByteArray &head);
