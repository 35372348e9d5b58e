#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

// Which letter (d: to z:) each medium or drive was given, so that it gets the same letter back
// whenever it is mounted again, in this run or the next. A medium is known by a key (its file
// system's identity, its image file, or an optical drive's device). A letter held by a medium during
// this run is never given to another one in the run, even once that medium went away: a window may
// still show it. Letters of earlier runs are given to new media only when no letter is left, the
// longest unseen first. The book is a convenience: losing it only means letters are given afresh.
class DriveLetterBook
{
public:
    // The letters of a book written by text(); lines it cannot read are left out.
    static DriveLetterBook fromText(QByteArrayView text);
    QByteArray text() const;

    struct Wanted
    {
        QString key;   // what the medium or drive is known by
        QString place; // where it is mounted: tells two copies of one medium apart
    };

    // A letter ('d' to 'z') for each medium, in order; '\0' when none is left. A medium still
    // mounted where it was at the last call keeps its letter; one remembered gets its letter back;
    // the others take the first free letters in their order. Of two copies of one medium mounted at
    // once, the one that had the letter keeps it.
    QList<char> give(const QList<Wanted> &wanted);

    // True when give() changed what text() writes since the last call.
    bool takeChanged();

private:
    struct Entry
    {
        char letter = 0;
        quint64 lastSeen = 0; // a counter, larger for media seen later
    };

    QString ownerOf(char letter) const;

    QHash<QString, Entry> m_entries;
    QHash<QString, std::pair<char, QString>> m_current; // by key and place: the letter and book key last given
    QSet<QString> m_seenThisRun;
    quint64 m_counter = 0;
    bool m_changed = false;
};
