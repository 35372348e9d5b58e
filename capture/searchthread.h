#pragma once

#include <QObject>

class FileFinder;
class QThread;

// Runs a finder's Rechercher() on a worker thread. The finder's State() is true as soon as
// start() returns and until the walk is over, so a caller may wait on it as on a walk in its own
// thread; finished() arrives in the thread that owns this object once the walk has returned.
// Destroying a running search cancels the walk and waits for it.
class SearchThread : public QObject
{
    Q_OBJECT

public:
    explicit SearchThread(FileFinder &finder, QObject *parent = nullptr);
    ~SearchThread() override;

    // Starts a walk; does nothing while one runs.
    void start();
    bool isRunning() const { return m_thread != nullptr; }

signals:
    void finished();

private:
    void threadFinished();

    FileFinder &m_finder;
    QThread *m_thread = nullptr;
};
