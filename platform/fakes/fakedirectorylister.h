#pragma once

#include "directorylister.h"

#include <QHash>
#include <QList>
#include <functional>

// Gives fixed listings by full path ("/cd/SUB/": a walk's directories end with "/"): each
// directory's entries exactly as set, in the order set ("." and ".." are added for non-root
// directories, as the real lister does). A directory not set cannot be read (Denied); one given
// an outcome gives that outcome and no entries.
class FakeDirectoryLister final : public DirectoryLister
{
public:
    struct Item
    {
        QByteArray name;
        bool isDirectory = false;
    };

    Result open(const QByteArray &nativePath, bool isRoot, DirectoryListing &entries) override;
    Result enter(QByteArrayView name, DirectoryListing &entries) override;
    void leave() override;
    void close() override;

    void set(const QByteArray &nativePath, const QList<Item> &items) { listings.insert(nativePath, items); }

    QHash<QByteArray, QList<Item>> listings;
    QHash<QByteArray, Result> outcomes;                    // directories that give Denied or Failed
    QList<QByteArray> listed;                              // every path asked, in order
    std::function<void(const QByteArray &)> onList;        // runs before each listing
    QList<QByteArray> current;                             // the directories entered and not left
    bool walking = false;                                  // from open() to close()

private:
    Result list(const QByteArray &nativePath, bool isRoot, DirectoryListing &entries);
};
