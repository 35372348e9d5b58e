#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <array>

// The ways of searching the archives: the search window's three, and the search by theme.
enum class SearchKind { Name, String, Extension, Theme };

// A stored path as the search reads it: the archive line, when longer than two characters, less its
// first and last characters (the quotes). Paths are kept as read; letters are compared upper-cased
// (Windows-1252), so the rules below take a path in any case and an upper-cased term.
struct PathParts
{
    qsizetype nameStart = 0; // one after the last backslash; 0 when there is none
    qsizetype baseEnd = 0;   // the last dot when it follows the last backslash, else the path's end
    bool hasExtension = false;
};

PathParts splitPath(QByteArrayView path);

// The number of result rows one stored path gives for an upper-cased term:
// - by name: 1 when the base name (between the last backslash and the last dot after it, or the
//   path's end) equals the term;
// - by string: one row per start position, from one after the last backslash, where the term
//   occurs; the last two characters of the path never end a match, and overlapping occurrences
//   each count;
// - by extension: 1 when the path's last three characters equal the term;
// - by theme: 1 when the term occurs anywhere in the path, starting from its first character, but
//   never as its last characters: the last character of the path never ends a match.
int rowsForPath(SearchKind kind, QByteArrayView path, const PathParts &parts, QByteArrayView term);

// The bytes that upper-case to `upper` (the same twice when only one does); false when none or
// more than two do.
bool casesOf(unsigned char upper, std::array<unsigned char, 2> &cases);

// Whether the bytes at `at` upper-case to `term`.
bool equalsUpperCased(const char *at, QByteArrayView term);

// The extension column: the path's last three characters, or three blanks when the file name holds
// no dot (the extension is taken from the path's end whatever follows the dot: PHOTO.JPEG gives PEG).
QByteArrayView extensionColumnOf(QByteArrayView path);

// The extension column of a search by theme: the path's last three characters when a dot stands
// anywhere in it (a directory's dot too), else four blanks.
QByteArrayView themeExtensionColumnOf(QByteArrayView path);

// The searched term as archive lines are compared with it: Windows-1252, upper-cased.
QByteArray searchTerm(const QString &typed);

// An archive's name: its file name less the last four characters (".lst").
QString archiveNameOf(const QString &fileName);

// A row of the alphabetical view: the file name, 60 blanks and the row's index in the order found.
QString sortedRowText(const QString &fileName, qsizetype index);

// Searches archives (at most this many of each folder take part in a search).
inline constexpr int kMaxArchivesPerSearch = 500;
// A search by extension stops when it has found this many rows.
inline constexpr qsizetype kExtensionRowLimit = 30000;
// A search by theme stops as soon as it has found more than 20000 rows.
inline constexpr qsizetype kThemeRowLimit = 20001;
