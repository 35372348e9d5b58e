#include "searchrun.h"

#include "alphabeticalorder.h"
#include "archivescanner.h"

#include "archivestream.h"
#include "regularfile.h"

QList<ArchiveToScan> archivesToScan(const QString &folderPath, const QStringList &fileNames,
                                    const QList<bool> &selected)
{
    QList<ArchiveToScan> archives;
    const qsizetype count = std::min<qsizetype>(fileNames.size(), kMaxArchivesPerSearch);
    for (qsizetype i = 0; i < count; ++i) {
        if (!selected.isEmpty() && !selected.value(i))
            continue;
        archives.append({folderPath + QLatin1Char('/') + fileNames[i], archiveNameOf(fileNames[i])});
    }
    return archives;
}

SearchRun::SearchRun(SearchRequest request, QObject *parent)
    : QObject(parent)
    , m_request(std::move(request))
{
    m_scanned.resize(size_t(m_request.archives.size()));
    m_ready.resize(size_t(m_request.archives.size()), false);
    if (m_request.sortRows) {
        m_namedRows.resize(size_t(m_request.archives.size()));
    }
}

SearchRun::~SearchRun()
{
    m_abandoned.store(true);
    stop();
    wait();
}

void SearchRun::start()
{
    const int threads = std::max(1, std::min<int>(m_request.threads, int(m_request.archives.size())));
    m_workersLeft.store(threads);
    m_workers = threads;
    if (m_request.sortRows) {
        m_nameTable = std::make_unique<AlphabeticalOrder::NameTable>();
    }
    for (int i = 0; i < threads; ++i)
        m_threads.emplace_back([this] { work(); });
}

void SearchRun::wait()
{
    for (std::thread &thread : m_threads) {
        if (thread.joinable())
            thread.join();
    }
}

std::vector<std::shared_ptr<const ResultChunk>> SearchRun::takeChunks()
{
    QMutexLocker lock(&m_mutex);
    return std::exchange(m_waiting, {});
}

RowOrder SearchRun::takeSortedOrder()
{
    QMutexLocker lock(&m_mutex);
    return std::exchange(m_sortedOrder, {});
}

void SearchRun::work()
{
    const ArchiveScanner scanner(m_request.kind, m_request.term);
    QByteArray buffer; // reused from archive to archive
    std::shared_ptr<PathBlock> block; // the one this thread fills
    std::vector<ResultRow> found;     // the rows of the archive being read, reused
    for (;;) {
        const int archive = m_nextArchive.fetch_add(1);
        if (archive >= m_request.archives.size() || m_stop.load())
            break;
        auto chunk = std::make_shared<ResultChunk>();
        chunk->archive = archive;
        chunk->found.swap(found);
        if (block)
            chunk->blocks.push_back(block);
        // An archive that cannot be opened or read, or is not a regular file, gives no rows.
        RegularFile file(m_request.archives[archive].filePath);
        if (file.isOpen()) {
            // Archives that are not in the system's cache are read from the disk: each one is then
            // asked for whole, and so is the one the workers take next, so the disk works while
            // the processors scan. (Cached archives skip it: it costs more than it saves there.)
            if (!m_readingFromDisk.load(std::memory_order_relaxed) && !file.startIsCached())
                m_readingFromDisk.store(true, std::memory_order_relaxed);
            if (m_readingFromDisk.load(std::memory_order_relaxed)) {
                file.adviseWillNeed();
                const qsizetype next = archive + qsizetype(m_workers);
                if (next < m_request.archives.size())
                    RegularFile(m_request.archives[next].filePath).adviseWillNeed();
            }
            file.adviseSequential();
            ArchiveStream stream(file, buffer, m_request.readChunk);
            QByteArrayView lines;
            while (!m_stop.load(std::memory_order_relaxed) && stream.next(lines)) {
                // No archive holds more rows than the whole search may keep.
                scanner.scan(lines, *chunk, m_request.rowLimit, &m_stop);
                if (m_request.rowLimit > 0 && qsizetype(chunk->found.size()) >= m_request.rowLimit)
                    break;
                if (m_request.afterChunk)
                    m_request.afterChunk(archive, stream.bytesRead());
            }
        }
        chunk->keepFound();
        chunk->found.swap(found);
        if (!chunk->blocks.empty())
            block = chunk->blocks.back();
        if (chunk->rows.empty())
            chunk->blocks.clear();
        // Named now, while its names are in this processor's cache; each worker fills its own slots of
        // m_namedRows.
        else if (m_request.sortRows && !m_abandoned.load(std::memory_order_relaxed)) {
            m_namedRows[size_t(archive)] = {m_nameTable.get(), m_nameTable->nameRows(*chunk)};
        }
        publish(archive, std::move(chunk));
    }

    if (m_workersLeft.fetch_sub(1) == 1) {
        // Every row is published by now. The order is built outside the lock, which the window
        // thread takes to collect rows: a long sort must never freeze the window.
        if (m_request.sortRows) {
            std::vector<std::shared_ptr<const ResultChunk>> rows;
            {
                QMutexLocker lock(&m_mutex);
                rows = m_published;
            }
            std::vector<AlphabeticalOrder::NamedRows> named;
            named.reserve(rows.size());
            for (const auto &chunk : rows)
                named.push_back(m_namedRows[size_t(chunk->archive)]);
            RowOrder order = AlphabeticalOrder::order(rows, named, &m_abandoned);
            m_namedRows = {};
            m_nameTable.reset();
            QMutexLocker lock(&m_mutex);
            m_sortedOrder = std::move(order);
        }
        m_finished.store(true);
        emit finished();
    }
}

void SearchRun::publish(int archive, std::shared_ptr<ResultChunk> chunk)
{
    bool wake = false;
    int done = 0;
    {
        QMutexLocker lock(&m_mutex);
        m_scanned[size_t(archive)] = std::move(chunk);
        m_ready[size_t(archive)] = true;
        while (m_nextToPublish < int(m_ready.size()) && m_ready[size_t(m_nextToPublish)]) {
            std::shared_ptr<ResultChunk> next = std::move(m_scanned[size_t(m_nextToPublish)]);
            ++m_nextToPublish;
            if (m_limitReached.load())
                continue;
            const qsizetype limit = m_request.rowLimit;
            if (limit > 0 && m_rowsPublished + qsizetype(next->rows.size()) >= limit) {
                next->rows = next->rows.first(size_t(limit - m_rowsPublished));
                m_limitReached.store(true);
                m_stop.store(true);
            }
            m_rowsPublished += qsizetype(next->rows.size());
            if (!next->rows.empty()) {
                wake = wake || m_waiting.empty();
                m_published.push_back(next);
                m_waiting.push_back(std::move(next));
            }
        }
        done = m_archivesDone.fetch_add(1) + 1;
    }
    if (wake)
        emit chunksReady();
    emit progressed(done);
}

SearchResults SearchRun::runAndWait(const SearchRequest &request)
{
    SearchRun run(request);
    run.start();
    run.wait();
    SearchResults results;
    QStringList names;
    QStringList files;
    for (const ArchiveToScan &archive : request.archives) {
        names.append(archive.name);
        files.append(archive.filePath);
    }
    results.setArchiveNames(names);
    results.setArchiveFiles(files);
    results.setKind(request.kind);
    for (auto &chunk : run.takeChunks())
        results.append(std::move(chunk));
    results.setSortedOrder(run.takeSortedOrder());
    return results;
}
