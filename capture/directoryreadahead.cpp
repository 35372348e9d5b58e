#include "directoryreadahead.h"

#include <algorithm>

DirectoryReadAhead::DirectoryReadAhead(DirectoryLister &lister)
    : m_lister(lister)
    , m_thread([this] { run(); })
{
}

DirectoryReadAhead::~DirectoryReadAhead()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void DirectoryReadAhead::request(const std::vector<QByteArray> &paths)
{
    if (paths.empty())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_pending.insert(m_pending.end(), paths.rbegin(), paths.rend());
    }
    m_wake.notify_one();
}

bool DirectoryReadAhead::take(const QByteArray &path, std::vector<DirectoryEntry> &entries)
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        const auto done = m_done.find(path);
        if (done != m_done.end()) {
            entries = std::move(done->entries);
            const bool ok = done->ok;
            m_done.erase(done);
            return ok;
        }
        if (m_inProgress != path)
            break;
        m_ready.wait(lock);
    }
    // Not started yet: the walk lists it now, and the thread must not list it again.
    const auto pending = std::find(m_pending.rbegin(), m_pending.rend(), path);
    if (pending != m_pending.rend())
        m_pending.erase(std::next(pending).base());
    lock.unlock();
    return m_lister.list(path, false, entries);
}

void DirectoryReadAhead::run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_stopping || !m_pending.empty(); });
        if (m_stopping)
            return;
        const QByteArray path = m_pending.back();
        m_pending.pop_back();
        m_inProgress = path;
        lock.unlock();
        Listing listing;
        listing.ok = m_lister.list(path, false, listing.entries);
        lock.lock();
        m_inProgress.clear();
        m_done.insert(path, std::move(listing));
        m_ready.notify_all();
    }
}
