#include "fakedirectorylister.h"

bool FakeDirectoryLister::list(const QByteArray &nativePath, bool isRoot, DirectoryListing &entries)
{
    listed.append(nativePath);
    if (onList)
        onList(nativePath);
    entries.clear();
    const auto it = listings.constFind(nativePath);
    if (it == listings.constEnd())
        return false;
    if (!isRoot)
        entries.addDots();
    for (const Item &item : *it) {
        // A name ends at its first NUL, as a real listing gives it.
        const qsizetype nul = item.name.indexOf('\0');
        entries.add(nul < 0 ? QByteArrayView(item.name) : QByteArrayView(item.name).first(nul), item.isDirectory);
    }
    return true;
}
