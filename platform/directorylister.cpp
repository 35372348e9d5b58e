#include "directorylister.h"

#include "windows1252.h"

#include <algorithm>

bool directoryEntryLess(const DirectoryEntry &a, const DirectoryEntry &b)
{
    const unsigned char *upper = Windows1252::upperTable();
    const qsizetype n = std::min(a.archiveName.size(), b.archiveName.size());
    for (qsizetype i = 0; i < n; ++i) {
        const unsigned char ca = upper[static_cast<unsigned char>(a.archiveName[i])];
        const unsigned char cb = upper[static_cast<unsigned char>(b.archiveName[i])];
        if (ca != cb)
            return ca < cb;
    }
    if (a.archiveName.size() != b.archiveName.size())
        return a.archiveName.size() < b.archiveName.size();
    return a.nativeName < b.nativeName;
}
