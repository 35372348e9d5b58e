#pragma once

#include <QByteArray>
#include <vector>

struct DirectoryEntry
{
    QByteArray nativeName;  // the name as the file system holds it
    QByteArray archiveName; // the same name in Windows-1252: one line of a catalogue, never a CR, LF or '"'
    bool isDirectory = false; // a real directory; a symbolic link never is one
};

// Lists one directory with the contract the walk of a medium relies on:
// - for every directory but a drive's root, "." and ".." come first (both are directories);
// - the other entries follow sorted by name ignoring case (upper-case comparison, then bytes);
// - a directory that cannot be read gives false and no entries.
class DirectoryLister
{
public:
    virtual ~DirectoryLister() = default;

    virtual bool list(const QByteArray &nativePath, bool isRoot,
                      std::vector<DirectoryEntry> &entries) = 0;
};

// The order of a listing: upper-cased Windows-1252 names, then native bytes to break ties.
bool directoryEntryLess(const DirectoryEntry &a, const DirectoryEntry &b);
