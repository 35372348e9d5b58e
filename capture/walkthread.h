#pragma once

#include <QObject>

#include <condition_variable>
#include <mutex>
#include <thread>

class FileFinder;

// Runs a finder's Rechercher() on a worker thread. When start() returns, the finder's earlier
// results are gone (count 0) and its State() is true until the walk is over, so a caller may wait
// on it as on a walk in its own thread, and never reads the last walk's entries as the new one's
// however late the worker wakes; finished() arrives in the thread that owns this object once the walk has returned.
// The worker is made at the first start() and waits for the next one (waking it costs less than
// making a thread). Destroying a running search cancels the walk and waits for it.
class WalkThread : public QObject
{
    Q_OBJECT

public:
    explicit WalkThread(FileFinder &finder, QObject *parent = nullptr);
    ~WalkThread() override;

    // Starts a walk; does nothing while one runs.
    void start();
    bool isRunning() const { return m_running; }

signals:
    void finished();

private:
    void serve();

    FileFinder &m_finder;
    bool m_running = false; // in the owner's thread: from start() to finished()
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_walkAsked = false; // guarded by m_mutex
    bool m_quit = false;      // guarded by m_mutex
    std::thread m_worker;
};
