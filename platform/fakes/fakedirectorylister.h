#pragma once

#include "directorylister.h"

#include <QHash>
#include <QList>
#include <functional>

// Gives fixed listings: each directory's entries exactly as set, in the order set ("." and ".."
// are added for non-root directories, as the real lister does). A directory not set cannot be read.
class FakeDirectoryLister final : public DirectoryLister
{
public:
    struct Item
    {
        QByteArray name;
        bool isDirectory = false;
    };

    bool list(const QByteArray &nativePath, bool isRoot, DirectoryListing &entries) override;

    void set(const QByteArray &nativePath, const QList<Item> &items) { listings.insert(nativePath, items); }

    QHash<QByteArray, QList<Item>> listings;
    QList<QByteArray> listed;                              // every path asked, in order
    std::function<void(const QByteArray &)> onList;        // runs before each listing
};
