#pragma once

#include "directorylister.h"

#include <QByteArray>
#include <QHash>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

// Lists the sub-directories a walk will enter next on a second thread, so that reading the medium
// overlaps with recording what was read. Requests form a stack: the directories asked last are
// listed first, which follows a pre-order walk. A directory the walk needs before the thread got
// to it is listed by the walk itself.
class DirectoryReadAhead
{
public:
    explicit DirectoryReadAhead(DirectoryLister &lister);
    ~DirectoryReadAhead();
    DirectoryReadAhead(const DirectoryReadAhead &) = delete;
    DirectoryReadAhead &operator=(const DirectoryReadAhead &) = delete;

    // The walk will enter `paths` (never roots) in this order, before any directory asked earlier.
    void request(const std::vector<QByteArray> &paths);

    // The listing of `path` (a directory requested or not), as DirectoryLister::list() gives it.
    bool take(const QByteArray &path, std::vector<DirectoryEntry> &entries);

private:
    struct Listing
    {
        bool ok = false;
        std::vector<DirectoryEntry> entries;
    };

    void run();

    DirectoryLister &m_lister;
    std::mutex m_mutex;
    std::condition_variable m_wake;  // work to do, or stop
    std::condition_variable m_ready; // a listing is done
    std::vector<QByteArray> m_pending; // a stack: the back is listed next
    QByteArray m_inProgress;
    QHash<QByteArray, Listing> m_done;
    bool m_stopping = false;
    std::thread m_thread;
};
