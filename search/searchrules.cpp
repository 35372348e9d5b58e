#include "searchrules.h"

#include "textformat.h"
#include "windows1252.h"

PathParts splitPath(QByteArrayView path)
{
    qsizetype lastBackslash = -1;
    qsizetype lastDot = -1;
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (path[i] == '\\')
            lastBackslash = i;
        else if (path[i] == '.')
            lastDot = i;
    }
    PathParts parts;
    parts.nameStart = lastBackslash + 1;
    parts.hasExtension = lastDot > lastBackslash;
    parts.baseEnd = parts.hasExtension ? lastDot : path.size();
    return parts;
}

int rowsForPath(SearchKind kind, QByteArrayView path, QByteArrayView term)
{
    if (term.isEmpty())
        return 0;
    switch (kind) {
    case SearchKind::Name: {
        const PathParts parts = splitPath(path);
        return path.sliced(parts.nameStart, parts.baseEnd - parts.nameStart) == term ? 1 : 0;
    }
    case SearchKind::String: {
        const qsizetype n = term.size();
        int rows = 0;
        for (qsizetype start = splitPath(path).nameStart; start <= path.size() - n - 2; ++start) {
            if (path.sliced(start, n) == term)
                ++rows;
        }
        return rows;
    }
    case SearchKind::Extension:
        return path.last(std::min<qsizetype>(3, path.size())) == term ? 1 : 0;
    }
    return 0;
}

QByteArrayView fileNameOf(QByteArrayView path)
{
    return path.sliced(splitPath(path).nameStart);
}

QByteArrayView extensionColumnOf(QByteArrayView path)
{
    if (!splitPath(path).hasExtension)
        return "   ";
    return path.last(std::min<qsizetype>(3, path.size()));
}

QByteArray searchTerm(const QString &typed)
{
    return Windows1252::toUpper(Windows1252::encode(typed));
}

QString archiveNameOf(const QString &fileName)
{
    return fileName.chopped(std::min<qsizetype>(4, fileName.size()));
}

QString sortedRowText(const QString &fileName, qsizetype index)
{
    return fileName + QString(60, QLatin1Char(' ')) + formatSigned(index);
}
