#pragma once

#include "alphabeticalorder.h"
#include "archivestream.h"
#include "searchresults.h"
#include "searchrules.h"

#include <QList>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

// An archive a search reads: its file and its name (the file name less ".lst").
struct ArchiveToScan
{
    QString filePath;
    QString name;
};

struct SearchRequest
{
    SearchKind kind = SearchKind::Name;
    QByteArray term; // upper-cased Windows-1252 (searchTerm())
    QList<ArchiveToScan> archives;
    qsizetype rowLimit = 0; // the search stops once it holds this many rows; 0: no limit
    int threads = 1;
    bool sortRows = true; // build the alphabetical order once every row is found
    qsizetype readChunk = ArchiveStream::kChunk; // the bytes an archive is read by
    // For tests: called on the worker after each chunk of an archive is scanned.
    std::function<void(int archive, qint64 bytesRead)> afterChunk{};
};

// The archives of a folder that take part in a search: the first 500 of its list, and of those the
// selected ones (every one when `selected` is empty).
QList<ArchiveToScan> archivesToScan(const QString &folderPath, const QStringList &fileNames,
                                    const QList<bool> &selected = {});

// One search, run on worker threads. Each thread takes a whole archive at a time and reads it in
// chunks (ArchiveStream) that it scans; rows are handed over archive by archive, in archive order,
// as soon as they are known. Workers never block on a file (only regular files are read, opened
// without waiting), so stopping, or destroying the run, always answers within a chunk.
// Signals come from the worker threads.
class SearchRun : public QObject
{
    Q_OBJECT

public:
    explicit SearchRun(SearchRequest request, QObject *parent = nullptr);
    ~SearchRun() override; // stops the search and waits for its threads

    void start();
    // Ends the search early; the rows found so far are kept and the run finishes as usual.
    void stop() { m_stop.store(true); }
    void wait();

    const SearchRequest &request() const { return m_request; }
    int archivesDone() const { return m_archivesDone.load(); }
    bool isFinished() const { return m_finished.load(); }
    // Whether the search ended because it reached its row limit.
    bool limitReached() const { return m_limitReached.load(); }
    bool wasStopped() const { return m_stop.load() && !m_limitReached.load(); }

    // The rows handed over since the last call, in order.
    std::vector<std::shared_ptr<const ResultChunk>> takeChunks();
    // The alphabetical order of every row; complete once finished() has been emitted.
    RowOrder takeSortedOrder();

    // Runs a whole search on the calling thread (and its helpers) and returns its rows.
    static SearchResults runAndWait(const SearchRequest &request);

signals:
    void chunksReady();   // rows are waiting in takeChunks() (sent once until they are taken)
    void progressed(int archivesDone);
    void finished();

private:
    void work();
    void publish(int archive, std::shared_ptr<ResultChunk> chunk);

    // Read by every worker at once: const, so no access can detach (copy) the shared lists.
    const SearchRequest m_request;
    std::atomic_bool m_stop{false};
    std::atomic_bool m_abandoned{false}; // nobody will read the rows: not even sorting is worth it
    std::atomic_bool m_finished{false};
    std::atomic_bool m_limitReached{false};
    std::atomic_bool m_readingFromDisk{false}; // an archive was found outside the system's cache
    std::atomic_int m_nextArchive{0};
    std::atomic_int m_archivesDone{0};
    std::atomic_int m_workersLeft{0};
    std::vector<std::thread> m_threads;
    int m_workers = 0; // set before they start
    // For the alphabetical order: the name table the workers share, and by archive, its rows' name ids.
    std::unique_ptr<AlphabeticalOrder::NameTable> m_nameTable;
    std::vector<AlphabeticalOrder::NamedRows> m_namedRows;

    QMutex m_mutex; // guards everything below
    std::vector<std::shared_ptr<ResultChunk>> m_scanned; // by archive, until handed over in order
    std::vector<bool> m_ready;
    int m_nextToPublish = 0;
    qsizetype m_rowsPublished = 0;
    std::vector<std::shared_ptr<const ResultChunk>> m_published; // every row, for the sorted order
    std::vector<std::shared_ptr<const ResultChunk>> m_waiting;   // not yet taken
    RowOrder m_sortedOrder;
};
