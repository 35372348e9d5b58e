#include "archivefile.h"
#include "archivescanner.h"
#include "resultlistmodel.h"
#include "searchrun.h"
#include "searchrules.h"
#include "testsupport.h"
#include "searchrequests.h"
#include "themesearch.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <numeric>
#include <string>

namespace {

// One archive's rows as "file name|extension column|path", as the result lists show them.
QByteArrayList rowsOf(SearchKind kind, const QByteArray &term, const QByteArray &archive)
{
    auto chunk = std::make_shared<ResultChunk>();
    ArchiveScanner(kind, term).scan(archive, *chunk);
    chunk->keepFound();
    SearchResults results;
    results.setKind(kind);
    results.append(chunk);
    QByteArrayList rows;
    for (qsizetype i = 0; i < results.size(); ++i)
        rows.append(results.fileName(i) + '|' + results.extension(i) + '|' + results.path(i));
    return rows;
}

qsizetype rowCount(SearchRun &run)
{
    qsizetype rows = 0;
    for (const auto &chunk : run.takeChunks())
        rows += qsizetype(chunk->rows.size());
    return rows;
}

// The rules written the plain way, one line and one position at a time, for comparison.
std::string referenceUpper(const std::string &s)
{
    std::string out = s;
    for (char &c : out) {
        const auto b = static_cast<unsigned char>(c);
        if ((b >= 'a' && b <= 'z') || (b >= 0xE0 && b <= 0xFE && b != 0xF7))
            c = char(b - 32);
        else if (b == 0x9A || b == 0x9C || b == 0x9E)
            c = char(b - 16);
        else if (b == 0xFF)
            c = char(0x9F);
    }
    return out;
}

QList<std::string> referenceSearch(SearchKind kind, const std::string &term, const std::string &archive)
{
    QList<std::string> found;
    size_t start = 0;
    while (start < archive.size()) {
        size_t end = archive.find('\n', start);
        std::string line = archive.substr(start, end == std::string::npos ? std::string::npos : end - start);
        start = end == std::string::npos ? archive.size() : end + 1;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        line = referenceUpper(line);
        if (line.size() > 2)
            line = line.substr(1, line.size() - 2);
        const long len = long(line.size());
        long lastBackslash = 0, lastDot = 0; // 1-based, 0 for none
        for (long i = 1; i <= len; ++i) {
            if (line[size_t(i - 1)] == '\\')
                lastBackslash = i;
            if (line[size_t(i - 1)] == '.')
                lastDot = i;
        }
        const long nameEnd = lastDot > lastBackslash ? lastDot - 1 : len;
        const long n = long(term.size());
        if (kind == SearchKind::Name) {
            if (line.substr(size_t(lastBackslash), size_t(std::max(0L, nameEnd - lastBackslash))) == term)
                found.append(line);
        } else if (kind == SearchKind::String) {
            for (long k = lastBackslash + 1; k <= len - n - 1; ++k) {
                if (line.compare(size_t(k - 1), size_t(n), term) == 0)
                    found.append(line);
            }
        } else if (kind == SearchKind::Theme) {
            for (long k = 1; k <= len - n; ++k) {
                if (line.compare(size_t(k - 1), size_t(n), term) == 0) {
                    found.append(line);
                    break;
                }
            }
        } else if (len >= 3 ? line.substr(size_t(len - 3)) == term : line == term) {
            found.append(line);
        }
    }
    return found;
}

// The alphabetical view written the plain way: rows by their shown (upper-cased) file names, letter
// by letter with an accented capital as its base letter (only É occurs in the tests' alphabet),
// then by the names' bytes, and rows that read the same in the order found.
std::vector<qsizetype> referenceSortedOrder(const QList<std::string> &paths)
{
    std::vector<std::pair<std::string, std::string>> keys; // (letters, upper-cased name)
    for (const std::string &path : paths) {
        const size_t slash = path.rfind('\\');
        const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
        std::string letters = name;
        std::replace(letters.begin(), letters.end(), '\xc9', 'E');
        keys.emplace_back(letters, name);
    }
    std::vector<qsizetype> order(size_t(paths.size()));
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = qsizetype(i);
    std::stable_sort(order.begin(), order.end(), [&](qsizetype a, qsizetype b) { return keys[size_t(a)] < keys[size_t(b)]; });
    return order;
}

} // namespace

class tst_SearchRun : public QObject
{
    Q_OBJECT

private slots:
    void rulesOfEachKind_data()
    {
        QTest::addColumn<SearchKind>("kind");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<QByteArrayList>("rows");
        const QByteArray names = "\"d:\\DOC\\README.TXT\"\r\n\"d:\\README\"\r\n\"d:\\README.TXT.BAK\"\r\n\"d:\\doc\\ReadMe.txt\"\r\n"
                                 "\"d:\\JEUX\\.\"\r\n\"d:\\JEUX\\..\"\r\n\"d:\\README\\SETUP.EXE\"\r\n\"d:\\V1.0\\README\"\r\n";
        QTest::newRow("name, base name upper-cased")
            << SearchKind::Name << u"readme"_qs << names
            << QByteArrayList{"README.TXT|TXT|D:\\DOC\\README.TXT", "README|   |D:\\README", "README.TXT|TXT|D:\\DOC\\README.TXT",
                              "README|   |D:\\V1.0\\README"};
        const QByteArray pictures = "\"d:\\A\\PHOTO.JPEG\"\r\n\"d:\\A\\B.JPG\"\n\"d:\\A\\JPG\"\r\n\"d:\\A.JPG\\X\"\r\n";
        QTest::newRow("extension, last three") << SearchKind::Extension << u"peg"_qs << pictures
                                               << QByteArrayList{"PHOTO.JPEG|PEG|D:\\A\\PHOTO.JPEG"};
        QTest::newRow("extension, dot-less name blank")
            << SearchKind::Extension << u"jpg"_qs << pictures << QByteArrayList{"B.JPG|JPG|D:\\A\\B.JPG", "JPG|   |D:\\A\\JPG"};
        const QByteArray themes = "\"d:\\JEUX\"\r\n\"d:\\JEUX\\.\"\r\n\"d:\\JEUX\\CASSE.EXE\"\r\n\"d:\\LISEZMOI\"\r\n"
                                  "\"d:\\V1.0\\README\"\r\n\"d:\\jeux\\jeux\\jeux.txt\"\r\n";
        QTest::newRow("theme, no dot: four blanks") << SearchKind::Theme << u"lis"_qs << themes
                                                    << QByteArrayList{"LISEZMOI|    |D:\\LISEZMOI"};
        QTest::newRow("theme, a directory's dot") << SearchKind::Theme << u"read"_qs << themes
                                                  << QByteArrayList{"README|DME|D:\\V1.0\\README"};
    }

    void rulesOfEachKind()
    {
        QFETCH(SearchKind, kind);
        QFETCH(QString, typed);
        QFETCH(QByteArray, archive);
        QFETCH(QByteArrayList, rows);
        QCOMPARE(rowsOf(kind, searchTerm(typed), archive), rows);
    }

    // The windows' requests: the term as compared, the limit of each kind, the refusals.
    void requestsAndRefusals_data()
    {
        QTest::addColumn<SearchKind>("kind");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QByteArray>("term");
        QTest::addColumn<qsizetype>("rowLimit");
        QTest::addColumn<QString>("refusal");
        QTest::newRow("name") << SearchKind::Name << u"lisez é"_qs << QByteArray("LISEZ \xc9") << qsizetype(0) << QString();
        QTest::newRow("no name") << SearchKind::Name << QString() << QByteArray() << qsizetype(0) << u"Vous devez saisir un nom !"_qs;
        QTest::newRow("string of 3") << SearchKind::String << u"abc"_qs << QByteArray("ABC") << qsizetype(0) << QString();
        QTest::newRow("string of 2") << SearchKind::String << u"ab"_qs << QByteArray("AB") << qsizetype(0)
                                     << u"Chaîne de caractères trop courtes ! "_qs;
        QTest::newRow("no string") << SearchKind::String << u""_qs << QByteArray() << qsizetype(0)
                                   << u"Vous devez saisir une chaîne de caractères !"_qs;
        QTest::newRow("extension") << SearchKind::Extension << u"gif"_qs << QByteArray("GIF") << qsizetype(30000) << QString();
        QTest::newRow("theme") << SearchKind::Theme << u"Jeux"_qs << QByteArray("JEUX") << qsizetype(20001) << QString();
        QTest::newRow("no theme") << SearchKind::Theme << u""_qs << QByteArray() << qsizetype(20001)
                                  << u"Vous devez choisir un thème !"_qs;
    }

    void requestsAndRefusals()
    {
        QFETCH(SearchKind, kind);
        QFETCH(QString, typed);
        QFETCH(QByteArray, term);
        QFETCH(qsizetype, rowLimit);
        QFETCH(QString, refusal);
        QCOMPARE(SearchRequests::termRefusal(kind, typed), refusal);
        const SearchRequest request = SearchRequests::request(kind, typed, {{u"/d/A.lst"_qs, u"A"_qs}}, 3);
        QCOMPARE(request.term, term);
        QCOMPARE(request.rowLimit, rowLimit);
        QCOMPARE(SearchRequests::rowLimitMessage("GIF"),
                 u"Le nombre de fichiers recherchés comportant l'extension GIF est trop élevé : la recherche est stoppée ! "_qs);
    }

    void searchRunAgreesWithPlainReading_data()
    {
        QTest::addColumn<bool>("avx2");
        QTest::newRow("AVX2 where available") << true;
        QTest::newRow("SSE2") << false;
    }

    void searchRunAgreesWithPlainReading()
    {
        QFETCH(bool, avx2);
        const bool previous = ArchiveScanner::allowAvx2(avx2);
        const auto restore = qScopeGuard([previous] { ArchiveScanner::allowAvx2(previous); });
        QTemporaryDir dir;
        // Names that read the same once upper-cased keep the order found, whatever archive and
        // thread found them; before, "b" and "B" were told apart by their bytes.
        const QList<QByteArray> smallest = {"\"d:\\b\"\r\n", "\"d:\\B\"\r\n\"d:\\b\"\r\n", "\"d:\\B\"\r\n"};
        QList<ArchiveToScan> archives;
        for (int i = 0; i < smallest.size(); ++i) {
            archives.append({dir.filePath(u"S%1.lst"_qs.arg(i)), u"S%1"_qs.arg(i)});
            QVERIFY(TestSupport::writeFile(archives.last().filePath, smallest[i]));
        }
        for (int threads : {1, 2, 3}) {
            const SearchResults results = SearchRun::runAndWait({SearchKind::Name, "B", archives, 0, threads});
            QCOMPARE(results.sortedSize(), 4);
            for (qsizetype i = 0; i < 4; ++i)
                QCOMPARE(results.sortedIndex(i), i);
        }

        // The rules of each kind at every boundary: random archives read in chunks of a few bytes, so lines span chunks and the scanner's
        // blocks; few letters, many backslashes, dots and quotes, so every rule and boundary is
        // reached; NUL bytes; 1 to 3 threads; every row in the order found and the alphabetical
        // view against the reference.
        const QByteArray alphabet("aAbB.\\\"\xe9\xc9 \r\0", 12);
        QRandomGenerator random(19990101);
        for (int round = 0; round < 60; ++round) {
            archives.clear();
            QList<std::string> contents;
            const int count = random.bounded(1, 5);
            for (int a = 0; a < count; ++a) {
                QByteArray archive;
                const int lines = random.bounded(0, 30);
                for (int l = 0; l < lines; ++l) {
                    const int length = random.bounded(0, round % 4 == 0 ? 200 : 10);
                    for (int i = 0; i < length; ++i)
                        archive.append(alphabet[random.bounded(int(alphabet.size()))]);
                    if (l + 1 < lines || random.bounded(2))
                        archive.append(random.bounded(2) ? "\r\n" : "\n");
                }
                archives.append({dir.filePath(u"R%1.lst"_qs.arg(a)), u"R%1"_qs.arg(a)});
                QVERIFY(TestSupport::writeFile(archives.last().filePath, archive));
                contents.append(archive.toStdString());
            }
            QByteArray term;
            const int termLength = random.bounded(1, 5); // the rarest two bytes lie anywhere in it
            for (int i = 0; i < termLength; ++i)
                term.append(alphabet[random.bounded(int(alphabet.size()) - 2)]);
            term = searchTerm(QString::fromLatin1(term));
            for (SearchKind kind : {SearchKind::Name, SearchKind::String, SearchKind::Extension, SearchKind::Theme}) {
                QList<std::string> expected;
                for (const std::string &archive : std::as_const(contents))
                    expected.append(referenceSearch(kind, term.toStdString(), archive));
                const std::vector<qsizetype> expectedOrder = referenceSortedOrder(expected);
                for (int threads : {1, 2, 3}) {
                    SearchRequest request{kind, term, archives, 0, threads};
                    request.readChunk = random.bounded(1, 40);
                    const SearchResults results = SearchRun::runAndWait(request);
                    QList<std::string> actual;
                    for (qsizetype i = 0; i < results.size(); ++i)
                        actual.append(results.path(i).toStdString());
                    std::vector<qsizetype> order;
                    for (qsizetype i = 0; i < results.sortedSize(); ++i)
                        order.push_back(results.sortedIndex(i));
                    if (actual != expected || order != expectedOrder)
                        qWarning() << "round" << round << "kind" << int(kind) << "term" << term << "threads" << threads;
                    QCOMPARE(actual, expected);
                    QCOMPARE(order, expectedOrder);
                }
            }
        }
    }

    void archiveCutShortOrReplacedWhileReadEndsCleanly()
    {
        QTemporaryDir dir;
        QList<QByteArray> entries;
        for (int i = 0; i < 200000; ++i)
            entries.append("d:\\DISC\\FILE" + QByteArray::number(i) + ".TXT");
        QVERIFY(ArchiveFile::write(dir.path(), u"BIG"_qs, entries));
        QVERIFY(ArchiveFile::write(dir.path(), u"OTHER"_qs, {"d:\\OTHER.TXT"}));
        const QString path = dir.filePath(u"BIG.lst"_qs);
        const QByteArray original = TestSupport::readFile(path);
        constexpr qsizetype kChunk = 64 << 10;

        // Cut short after the first chunk (a mapped archive died of SIGBUS here): the rows of what
        // was read stay, the line cut in two is judged as it stands, and the search ends.
        SearchRequest request{SearchKind::Extension, "TXT", {{path, u"BIG"_qs}}, 0, 1};
        request.readChunk = kChunk;
        std::atomic_int chunks{0};
        request.afterChunk = [&](int, qint64) {
            if (chunks++ == 0)
                QFile::resize(path, 1000);
        };
        SearchResults results = SearchRun::runAndWait(request);
        QCOMPARE(results.size(), referenceSearch(SearchKind::Extension, "TXT", original.first(kChunk).toStdString()).size());

        // Replaced whole while read (a new copy renamed over it): the file as opened is read to its end.
        QVERIFY(TestSupport::writeFile(path, original));
        chunks = 0;
        request.afterChunk = [&](int, qint64) {
            if (chunks++ == 0)
                ::rename(QFile::encodeName(dir.filePath(u"OTHER.lst"_qs)).constData(), QFile::encodeName(path).constData());
        };
        results = SearchRun::runAndWait(request);
        QCOMPARE(results.size(), 200000);
        QCOMPARE(results.path(199999), "D:\\DISC\\FILE199999.TXT");
    }

    void onlyRegularFilesAreReadAndNoneBlocks()
    {
        // Links to a FIFO and to /dev/zero, a directory and an unreadable file, named like archives:
        // none is read, no worker waits for a writer or reads without end, the search goes on; a
        // link to a real archive is read.
        QTemporaryDir dir;
        TestSupport::FifoWatchdog fifo(dir.filePath(u"fifo"_qs), 8);
        QVERIFY(fifo.made());
        QVERIFY(QFile::link(dir.filePath(u"fifo"_qs), dir.filePath(u"A.lst"_qs)));
        QVERIFY(QFile::link(u"/dev/zero"_qs, dir.filePath(u"B.lst"_qs)));
        QVERIFY(QDir(dir.path()).mkdir(u"C.lst"_qs));
        QVERIFY(ArchiveFile::write(dir.path(), u"D"_qs, {"d:\\SETUP.EXE", "d:\\X\\SETUP.EXE"}));
        QVERIFY(QFile::link(dir.filePath(u"D.lst"_qs), dir.filePath(u"E.lst"_qs)));
        QVERIFY(TestSupport::writeFile(dir.filePath(u"F.lst"_qs), "x") && QFile::setPermissions(dir.filePath(u"F.lst"_qs), {}));
        const QStringList files = {u"A.lst"_qs, u"B.lst"_qs, u"C.lst"_qs, u"D.lst"_qs, u"E.lst"_qs, u"F.lst"_qs};
        for (int threads : {1, 2}) {
            SearchRun run({SearchKind::Name, "SETUP", archivesToScan(dir.path(), files), 0, threads});
            run.start();
            QTRY_VERIFY_WITH_TIMEOUT(run.isFinished(), 5000);
            QCOMPARE(rowCount(run), 4);
        }
        QVERIFY(!fifo.fired());
    }

    void rowsShowAtMostWhatARowCanShow()
    {
        // A 10 MB path upper-cased and decoded whole at every paint froze the window.
        auto chunk = std::make_shared<ResultChunk>();
        const QByteArray path = "d:\\" + QByteArray(10 << 20, 'a') + ".txt";
        chunk->found.push_back({chunk->store(path), quint32(path.size()), 3});
        chunk->keepFound();
        SearchResults results;
        results.append(chunk);
        results.setSortedOrder(SearchResults::sortedOrder({chunk}));
        const auto shown = [&](ResultListModel::Column column) {
            ResultListModel model(results, column);
            model.reset();
            return model.index(0).data().toString();
        };
        const QString ellipsis(QChar(0x2026));
        QCOMPARE(shown(ResultListModel::Column::Path), u"D:\\"_qs + QString(1021, u'A') + ellipsis);
        QCOMPARE(shown(ResultListModel::Column::FileName), QString(1024, u'A') + ellipsis);
        QCOMPARE(shown(ResultListModel::Column::Sorted), QString(1024, u'A') + ellipsis + QString(60, u' ') + u" 0"_qs);
        // The whole path is still there for the actions on the found file.
        QCOMPARE(results.path(0).size(), path.size());
    }

    void archiveSelectionKeepsTheFirst500()
    {
        QStringList files;
        for (int i = 1; i <= 502; ++i)
            files.append(u"A%1.lst"_qs.arg(i, 3, 10, QLatin1Char('0')));
        QCOMPARE(archivesToScan(u"/d"_qs, files).last().name, u"A500"_qs);
        QList<bool> selected(502, false);
        selected[1] = selected[499] = selected[500] = true;
        QCOMPARE(archivesToScan(u"/d"_qs, files, selected).size(), 2);
        // By theme, every archive, known by its file name.
        QCOMPARE(ThemeSearch::archivesToScan(u"/d"_qs, files).size(), 502);
        const ArchiveToScan last = ThemeSearch::archivesToScan(u"/d"_qs, files, selected).value(2);
        QCOMPARE(last.name + u' ' + last.filePath, u"A501.lst /d/A501.lst"_qs);
    }

    void rowLimitStopsAtExactlyTheLimitAcrossArchives()
    {
        QTemporaryDir dir;
        QList<QByteArray> entries;
        for (int i = 0; i < 20000; ++i)
            entries.append("d:\\P\\F" + QByteArray::number(i) + ".GIF");
        QStringList files;
        for (const QString &name : {u"A"_qs, u"B"_qs, u"C"_qs}) {
            QVERIFY(ArchiveFile::write(dir.path(), name, entries));
            files.append(name + u".lst"_qs);
        }
        const QList<ArchiveToScan> archives = archivesToScan(dir.path(), files);
        for (int threads : {1, 2}) {
            SearchRun run({SearchKind::Extension, "GIF", archives, kExtensionRowLimit, threads});
            run.start();
            run.wait();
            // The workers only read the request: a list it shares with the caller is never copied
            // (two threads copying it at once corrupted its reference count).
            QVERIFY(run.request().archives.isSharedWith(archives));
            QVERIFY(run.limitReached());
            QCOMPARE(rowCount(run), kExtensionRowLimit);
            // Every row kept, once; none of the rows cut (whose archives' names were sorted too).
            RowOrder order = run.takeSortedOrder();
            std::sort(order.begin(), order.end());
            RowOrder every(static_cast<size_t>(kExtensionRowLimit));
            std::iota(every.begin(), every.end(), 0u);
            QVERIFY(order == every);
        }
        // Exactly the limit found: the search says it reached it.
        SearchRun exact({SearchKind::Extension, "GIF", archivesToScan(dir.path(), files.mid(0, 1)), 20000, 1});
        exact.start();
        exact.wait();
        QVERIFY(exact.limitReached());
    }

    void alphabeticalOrderAgreesWithAPlainSort()
    {
        // Every byte from 1 to 127 beside its neighbours and letters (only a to z change); names
        // alike in more letters than a sort key holds (one that begins another comes first), with
        // accented capitals beside their letter, there too (\xe9 is é); past 65,536 names, where the
        // order is built in parts.
        QList<QByteArray> names;
        for (int b = 1; b < 128; ++b) {
            const QByteArray c(1, char(b));
            names << c << c + "a" << "z" + c << QByteArray(9, char(b)) + "Zz" << "abcdefgh" + c;
        }
        for (const char *end : {"QQQ.AB", "QQQ.A", "EB", "\xc9" "A"})
            names << QByteArray(40, 'L') + end;
        names << "ZOO" << "\xc9T\xc9" << "ete" << "\xe9t\xe9\x32" << "EU" << "PR\xc9SENTATION B" << "PRESENTATION A";
        QRandomGenerator random(20261122);
        for (int i = 0; i < 70000; ++i) {
            QByteArray name;
            for (int n = random.bounded(1, i % 5 == 0 ? 3 : 14); n > 0; --n)
                name.append("aAbBc"[random.bounded(5)]);
            names.append(name);
        }
        auto chunk = std::make_shared<ResultChunk>();
        for (const QByteArray &name : std::as_const(names)) {
            const QByteArray path = "d:\\" + name;
            chunk->found.push_back({chunk->store(path), quint32(path.size()), 3});
        }
        chunk->keepFound();
        std::vector<qsizetype> expected(size_t(names.size()));
        std::iota(expected.begin(), expected.end(), 0);
        const auto key = [&](qsizetype i) { // letters with É as E, then the upper-cased bytes
            const std::string upper = referenceUpper(names[i].toStdString());
            std::string letters = upper;
            std::replace(letters.begin(), letters.end(), '\xc9', 'E');
            return std::pair(letters, upper);
        };
        std::stable_sort(expected.begin(), expected.end(), [&](qsizetype a, qsizetype b) { return key(a) < key(b); });
        const RowOrder order = SearchResults::sortedOrder({chunk});
        QVERIFY(std::equal(order.begin(), order.end(), expected.begin(), expected.end()));
    }
};

QTEST_GUILESS_MAIN(tst_SearchRun)
#include "tst_searchrun.moc"
