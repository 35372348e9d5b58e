#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// Cataloguing every disc image of a folder at once, one archive per image, named from the image's
// file name. What is decided before anything is written, and the closing summary.
namespace ImageFolder {

// "pcfun75.iso" gives PCFUN75, "Disque de jeux.bin" DISQUE D: the name less its extension,
// upper-cased by the code page's table, cut to eight characters.
QString archiveNameFor(const QString &imageFileName);

struct Image
{
    QString path;        // the image file
    QString archiveName; // the archive it gives
};

struct Plan
{
    QList<Image> images;  // to catalogue, in name order
    QStringList clashes;  // what the user must agree to first: one line per clash
    QStringList skipped;  // images left out from the start, with why (in the summary)
};

// The images of `imageFolder` (by their extensions, any case; a BIN whose CUE is beside it is left to
// the CUE) and the clashes with the archives of `archiveFolder`: a name whose archive exists and
// would be replaced, or a name two images give (the first in name order is catalogued, the others
// are left out).
Plan plan(const QString &imageFolder, const QString &archiveFolder);

// The question listing the clashes, asked before anything is written.
QString clashQuestion(const QStringList &clashes);

enum class Outcome { Written, Empty, Unreadable, Cancelled };
struct Result
{
    Image image;
    Outcome outcome;
    int entries = 0;
};

// The closing summary: what was written, then what was left out and why.
QString summary(const QList<Result> &results, const QStringList &skipped);

} // namespace ImageFolder
