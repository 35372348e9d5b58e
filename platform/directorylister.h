#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <cstdint>
#include <memory>
#include <vector>

// The entries of one directory. Every name lives in one buffer that the listing keeps from one
// directory to the next, so a walk reading thousands of directories allocates next to nothing.
// Each entry has its native name (the file system's bytes, to go on walking) and its catalogue
// name (Windows-1252, one line of a catalogue: never a CR, LF or '"').
class DirectoryListing
{
public:
    qsizetype size() const { return qsizetype(m_entries.size()); }
    bool isEmpty() const { return m_entries.empty(); }
    QByteArrayView nativeName(qsizetype i) const { return name(m_entries[size_t(i)].native); }
    QByteArrayView archiveName(qsizetype i) const { return name(m_entries[size_t(i)].archive); }
    // A real directory; a symbolic link never is one.
    bool isDirectory(qsizetype i) const { return m_entries[size_t(i)].isDirectory; }

    void clear();
    // Appends an entry; its catalogue name is made from its native name.
    void add(QByteArrayView nativeName, bool isDirectory);
    // "." and "..", which come first in every directory but a drive's root.
    void addDots();
    // Puts the entries from `first` on in the order of a listing (see DirectoryLister).
    void sortFrom(qsizetype first);

private:
    struct Span
    {
        std::uint32_t offset;
        std::uint32_t length;
    };
    struct Entry
    {
        std::uint64_t key; // the first eight upper-cased catalogue bytes, for a quick first comparison
        Span native;
        Span archive;
        bool isDirectory;
    };

    QByteArrayView name(Span span) const { return {m_names.get() + span.offset, qsizetype(span.length)}; }
    bool less(const Entry &a, const Entry &b) const;

    // Names one after the other: a plain buffer, as a vector would clear every byte it adds.
    std::unique_ptr<char[]> m_names;
    size_t m_namesSize = 0;
    size_t m_namesCapacity = 0;
    std::vector<Entry> m_entries;
};

// Lists the directories of a walk with the contract the walk of a medium relies on:
// - for every directory but a drive's root, "." and ".." come first (both are directories);
// - the other entries follow sorted by name ignoring case (upper-cased catalogue names, then
//   native bytes).
//
// A walk opens its first directory by its path, then goes down into a sub-directory by its name
// (relative to the current directory, so that no path length limits the depth) and back up. A
// directory not listed is not entered: after Denied or Failed the current directory stays the same.
// One lister serves one walk at a time.
class DirectoryLister
{
public:
    enum class Result {
        Listed,
        Denied, // no permission to read it: it gives nothing and the walk goes on
        Failed, // any other error (gone, not connected, input/output): the medium went away
    };

    virtual ~DirectoryLister() = default;

    // Starts a walk (ending any earlier one) at `nativePath` and lists it; `isRoot` for the root
    // of a drive, which has no "." and "..".
    virtual Result open(const QByteArray &nativePath, bool isRoot, DirectoryListing &entries) = 0;
    // Lists the sub-directory `name` of the current directory, which it becomes when listed.
    virtual Result enter(QByteArrayView name, DirectoryListing &entries) = 0;
    // Makes the parent of the current directory current again.
    virtual void leave() = 0;
    // Ends the walk and lets go of every directory it held.
    virtual void close() = 0;
};
