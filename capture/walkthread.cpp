#include "walkthread.h"

#include "filefinder.h"

WalkThread::WalkThread(FileFinder &finder, QObject *parent)
    : QObject(parent)
    , m_finder(finder)
{
}

WalkThread::~WalkThread()
{
    if (!m_worker.joinable())
        return;
    m_finder.Annuler();
    {
        const std::lock_guard lock(m_mutex);
        m_quit = true;
    }
    m_wake.notify_one();
    m_worker.join(); // after the walk the worker was running, if any
    if (m_running)
        m_finder.setState(false); // a walk asked for, cancelled before it began
}

void WalkThread::start()
{
    if (m_running)
        return;
    m_running = true;
    m_finder.beginWalk();
    {
        const std::lock_guard lock(m_mutex);
        m_walkAsked = true;
    }
    if (m_worker.joinable())
        m_wake.notify_one();
    else
        m_worker = std::thread([this] { serve(); });
}

void WalkThread::serve()
{
    for (;;) {
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_walkAsked || m_quit; });
            if (m_quit)
                return;
            m_walkAsked = false;
        }
        m_finder.continueWalk();
        // Dropped if this object is gone by then.
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_running = false;
                emit finished();
            },
            Qt::QueuedConnection);
    }
}
