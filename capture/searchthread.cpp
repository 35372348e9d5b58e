#include "searchthread.h"

#include "filefinder.h"

#include <QThread>

SearchThread::SearchThread(FileFinder &finder, QObject *parent)
    : QObject(parent)
    , m_finder(finder)
{
}

SearchThread::~SearchThread()
{
    if (m_thread) {
        m_finder.Annuler();
        m_thread->wait();
        delete m_thread;
    }
}

void SearchThread::start()
{
    if (m_thread)
        return;
    m_finder.setState(true);
    m_thread = QThread::create([this] { m_finder.Rechercher(); });
    connect(m_thread, &QThread::finished, this, &SearchThread::threadFinished, Qt::QueuedConnection);
    m_thread->start();
}

void SearchThread::threadFinished()
{
    m_thread->wait();
    delete m_thread;
    m_thread = nullptr;
    emit finished();
}
