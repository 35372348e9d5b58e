#include "driveletterbook.h"

#include <QList>

namespace {

constexpr char kFirst = 'd';
constexpr char kLast = 'z';

} // namespace

DriveLetterBook DriveLetterBook::fromText(QByteArrayView text)
{
    DriveLetterBook book;
    // One line per medium: the letter, the counter when last seen, the key (tabs between).
    for (const QByteArray &line : text.toByteArray().split('\n')) {
        const QList<QByteArray> fields = line.split('\t');
        if (fields.size() != 3 || fields[0].size() != 1 || fields[0][0] < kFirst || fields[0][0] > kLast)
            continue;
        bool ok = false;
        const quint64 seen = fields[1].toULongLong(&ok);
        const QString key = QString::fromUtf8(fields[2]);
        if (!ok || key.isEmpty() || !book.ownerOf(fields[0][0]).isEmpty())
            continue;
        book.m_entries.insert(key, {fields[0][0], seen});
        book.m_counter = std::max(book.m_counter, seen);
    }
    return book;
}

QByteArray DriveLetterBook::text() const
{
    QList<QByteArray> lines;
    for (auto it = m_entries.cbegin(); it != m_entries.cend(); ++it) {
        QByteArray key = it.key().toUtf8();
        key.replace('\n', ' ').replace('\t', ' ');
        lines.append(QByteArray(1, it->letter) + '\t' + QByteArray::number(it->lastSeen) + '\t' + key);
    }
    std::sort(lines.begin(), lines.end());
    return lines.join('\n') + (lines.isEmpty() ? "" : "\n");
}

QString DriveLetterBook::ownerOf(char letter) const
{
    for (auto it = m_entries.cbegin(); it != m_entries.cend(); ++it) {
        if (it->letter == letter)
            return it.key();
    }
    return {};
}

QList<char> DriveLetterBook::give(const QList<Wanted> &wanted)
{
    QList<char> letters(wanted.size(), '\0');
    QStringList bookKeys(wanted.size());
    QSet<char> taken;
    auto take = [&](qsizetype i, char letter, const QString &bookKey) {
        letters[i] = letter;
        bookKeys[i] = bookKey;
        taken.insert(letter);
    };
    auto placeKey = [&](qsizetype i) { return wanted[i].key + u'\n' + wanted[i].place; };
    for (qsizetype i = 0; i < wanted.size(); ++i) {
        const auto current = m_current.constFind(placeKey(i));
        if (current != m_current.cend() && !taken.contains(current->first))
            take(i, current->first, current->second);
    }
    // Remembered: the medium's own letter, else the one its copy had at that place.
    for (qsizetype i = 0; i < wanted.size(); ++i) {
        for (const QString &key : {wanted[i].key, placeKey(i)}) {
            const auto entry = m_entries.constFind(key);
            if (!letters[i] && entry != m_entries.cend() && !taken.contains(entry->letter))
                take(i, entry->letter, key);
        }
    }
    for (qsizetype i = 0; i < wanted.size(); ++i) {
        if (letters[i])
            continue;
        // A letter nobody had; else the one of a medium of an earlier run, seen longest ago.
        char chosen = 0;
        quint64 chosenSeen = 0;
        for (char letter = kFirst; letter <= kLast; ++letter) {
            if (taken.contains(letter))
                continue;
            const QString owner = ownerOf(letter);
            if (owner.isEmpty()) {
                chosen = letter;
                break;
            }
            if (m_seenThisRun.contains(owner))
                continue;
            if (!chosen || m_entries[owner].lastSeen < chosenSeen) {
                chosen = letter;
                chosenSeen = m_entries[owner].lastSeen;
            }
        }
        if (!chosen)
            continue;
        m_entries.remove(ownerOf(chosen));
        const QString bookKey = m_entries.contains(wanted[i].key) ? placeKey(i) : wanted[i].key;
        m_entries.remove(bookKey);
        take(i, chosen, bookKey);
    }
    m_current.clear();
    for (qsizetype i = 0; i < wanted.size(); ++i) {
        if (!letters[i])
            continue;
        m_current.insert(placeKey(i), {letters[i], bookKeys[i]});
        if (m_seenThisRun.contains(bookKeys[i]))
            continue;
        m_seenThisRun.insert(bookKeys[i]);
        m_entries[bookKeys[i]] = {letters[i], ++m_counter};
        m_changed = true;
    }
    return letters;
}

bool DriveLetterBook::takeChanged()
{
    return std::exchange(m_changed, false);
}
