#pragma once

#include <QMutex>
#include <QWaitCondition>

// A door a worker thread waits at until the test opens it, so a test holds a walk at a known
// point without waiting on time. Each pass() counts as an arrival.
class Gate
{
public:
    // In the worker: waits until the gate is open.
    void pass()
    {
        QMutexLocker lock(&m_mutex);
        ++m_arrivals;
        m_changed.wakeAll();
        while (!m_open)
            m_changed.wait(&m_mutex);
    }

    // In the test: waits until `count` passes have begun; false after `ms` milliseconds without.
    bool waitForArrivals(int count, int ms = 5000)
    {
        QMutexLocker lock(&m_mutex);
        QDeadlineTimer deadline(ms);
        while (m_arrivals < count) {
            if (!m_changed.wait(&m_mutex, deadline))
                return false;
        }
        return true;
    }

    void open()
    {
        QMutexLocker lock(&m_mutex);
        m_open = true;
        m_changed.wakeAll();
    }

private:
    QMutex m_mutex;
    QWaitCondition m_changed;
    bool m_open = false;
    int m_arrivals = 0;
};
