#include "searchrules.h"

#include "textformat.h"
#include "windows1252.h"

#include <cstring>

namespace {

const unsigned char *const kUpper = Windows1252::upperTable();

inline bool equalAt(const char *at, QByteArrayView term)
{
    for (qsizetype i = 0; i < term.size(); ++i) {
        if (char(kUpper[static_cast<unsigned char>(at[i])]) != term[i])
            return false;
    }
    return true;
}

} // namespace

bool equalsUpperCased(const char *at, QByteArrayView term)
{
    return equalAt(at, term);
}

PathParts splitPath(QByteArrayView path)
{
    PathParts parts;
    parts.baseEnd = path.size();
    if (path.isEmpty())
        return parts;
    const char *p = path.data();
    if (const void *backslash = memrchr(p, '\\', size_t(path.size())))
        parts.nameStart = static_cast<const char *>(backslash) - p + 1;
    if (const void *dot = memrchr(p + parts.nameStart, '.', size_t(path.size() - parts.nameStart))) {
        parts.baseEnd = static_cast<const char *>(dot) - p;
        parts.hasExtension = true;
    }
    return parts;
}

int rowsForPath(SearchKind kind, QByteArrayView path, const PathParts &parts, QByteArrayView term)
{
    const qsizetype n = term.size();
    if (n == 0)
        return 0;
    switch (kind) {
    case SearchKind::Name:
        return parts.baseEnd - parts.nameStart == n && equalAt(path.data() + parts.nameStart, term) ? 1 : 0;
    case SearchKind::String: {
        int rows = 0;
        for (qsizetype start = parts.nameStart; start <= path.size() - n - 2; ++start)
            rows += equalAt(path.data() + start, term) ? 1 : 0;
        return rows;
    }
    case SearchKind::Extension:
        return std::min<qsizetype>(3, path.size()) == n && equalAt(path.data() + path.size() - n, term) ? 1 : 0;
    }
    return 0;
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
