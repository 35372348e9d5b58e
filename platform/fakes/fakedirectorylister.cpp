#include "fakedirectorylister.h"

#include "windows1252.h"

bool FakeDirectoryLister::list(const QByteArray &nativePath, bool isRoot, std::vector<DirectoryEntry> &entries)
{
    listed.append(nativePath);
    if (onList)
        onList(nativePath);
    entries.clear();
    const auto it = listings.constFind(nativePath);
    if (it == listings.constEnd())
        return false;
    if (!isRoot) {
        entries.push_back({QByteArrayLiteral("."), QByteArrayLiteral("."), true});
        entries.push_back({QByteArrayLiteral(".."), QByteArrayLiteral(".."), true});
    }
    for (const Item &item : *it)
        entries.push_back({item.name, Windows1252::fromNativeFileName(item.name), item.isDirectory});
    return true;
}
