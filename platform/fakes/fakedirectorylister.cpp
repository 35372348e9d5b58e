#include "fakedirectorylister.h"

DirectoryLister::Result FakeDirectoryLister::open(const QByteArray &nativePath, bool isRoot,
                                                  DirectoryListing &entries)
{
    close();
    walking = true;
    return list(nativePath, isRoot, entries);
}

DirectoryLister::Result FakeDirectoryLister::enter(QByteArrayView name, DirectoryListing &entries)
{
    if (current.isEmpty()) {
        entries.clear();
        return Result::Failed;
    }
    return list(current.last() + name.toByteArray() + '/', false, entries);
}

void FakeDirectoryLister::leave()
{
    if (!current.isEmpty())
        current.removeLast();
}

void FakeDirectoryLister::close()
{
    current.clear();
    walking = false;
}

DirectoryLister::Result FakeDirectoryLister::list(const QByteArray &nativePath, bool isRoot,
                                                  DirectoryListing &entries)
{
    listed.append(nativePath);
    if (onList)
        onList(nativePath);
    entries.clear();
    const auto outcome = outcomes.constFind(nativePath);
    if (outcome != outcomes.constEnd() && *outcome != Result::Listed)
        return *outcome;
    const auto it = listings.constFind(nativePath);
    if (it == listings.constEnd())
        return Result::Denied;
    if (!isRoot)
        entries.addDots();
    for (const Item &item : *it) {
        // A name ends at its first NUL, as a real listing gives it.
        const qsizetype nul = item.name.indexOf('\0');
        entries.add(nul < 0 ? QByteArrayView(item.name) : QByteArrayView(item.name).first(nul), item.isDirectory);
    }
    current.append(nativePath);
    return Result::Listed;
}
