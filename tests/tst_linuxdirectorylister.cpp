#include "linuxdirectorylister.h"
#include "testsupport.h"
#include "windows1252.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QStringList names(const DirectoryListing &entries)
{
    QStringList out;
    for (qsizetype i = 0; i < entries.size(); ++i)
        out.append(QString::fromLatin1(entries.archiveName(i)) + (entries.isDirectory(i) ? u"/"_qs : QString()));
    return out;
}

bool listed(LinuxDirectoryLister &lister, const QByteArray &path, bool isRoot, DirectoryListing &entries)
{
    const bool ok = lister.open(path, isRoot, entries) == DirectoryLister::Result::Listed;
    lister.close();
    return ok;
}

// `depth` nested directories `name`, each level holding f.txt and the empty directory z; made
// with openat, as no full path reaches the deepest past 4096 bytes.
bool makeDeepChain(const QString &root, const QByteArray &name, int depth)
{
    int fd = ::open(QFile::encodeName(root).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level <= depth; ++level) {
        const int file = fd < 0 ? -1 : ::openat(fd, "f.txt", O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        const bool made = file >= 0 && ::close(file) == 0 && ::mkdirat(fd, "z", 0755) == 0
                          && (level == depth || ::mkdirat(fd, name.constData(), 0755) == 0);
        const int next = made && level < depth ? ::openat(fd, name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
        if (fd >= 0)
            ::close(fd);
        if (!made)
            return false;
        fd = next;
    }
    return true;
}

int openDescriptors()
{
    return int(QDir(u"/proc/self/fd"_qs).entryList(QDir::Files | QDir::System).size());
}

} // namespace

class tst_LinuxDirectoryLister : public QObject
{
    Q_OBJECT

private slots:
    // Sorted ignoring case; links are entries, never directories; odd names become safe lines
    // and keep their real name; a sub-directory lists its dots.
    void listsOneSafeLineAnEntry()
    {
        QTemporaryDir dir;
        const QByteArray base = QFile::encodeName(dir.path()) + '/';
        const QList<QByteArray> files = {"setup.exe", "b", "B", "Autorun.inf", "caf\xC3\xA9.txt", "two\nlines",
                                         "say \"hi\"", "bad\xFF"};
        for (const QByteArray &name : files) // bytes as they are
            QVERIFY(::close(::open((base + name).constData(), O_CREAT | O_WRONLY, 0644)) == 0);
        const QDir root(dir.path());
        QVERIFY(root.mkdir(u"JEUX"_qs) && root.mkdir(u".cache"_qs));
        QVERIFY(QFile::link(dir.path(), root.filePath(u"loop"_qs)) && QFile::link(root.filePath(u"nowhere"_qs), root.filePath(u"dangling"_qs)));

        LinuxDirectoryLister lister;
        DirectoryListing entries;
        QVERIFY(listed(lister, base, true, entries));
        QCOMPARE(names(entries), (QStringList{u".cache/"_qs, u"Autorun.inf"_qs, u"B"_qs, u"b"_qs, u"bad?"_qs,
                                              QString::fromLatin1("caf\xE9.txt"), u"dangling"_qs, u"JEUX/"_qs,
                                              u"loop"_qs, u"say ?hi?"_qs, u"setup.exe"_qs, u"two?lines"_qs}));
        QCOMPARE(entries.nativeName(4).toByteArray(), QByteArray("bad\xFF"));
        QCOMPARE(entries.nativeName(11).toByteArray(), QByteArray("two\nlines"));

        QVERIFY(listed(lister, QFile::encodeName(root.filePath(u"JEUX"_qs)), false, entries));
        QCOMPARE(names(entries), (QStringList{u"./"_qs, u"../"_qs}));
        entries.add("stale", false);
        QVERIFY(!listed(lister, base + "missing", false, entries));
        QVERIFY(entries.isEmpty() && !listed(lister, base + "b", false, entries));
    }

    void orderIsUpperCasedCatalogueNamesThenNativeBytes()
    {
        // Names from a few letters, so that many share long beginnings ignoring case; accents in
        // UTF-8 and a byte that is no UTF-8 at all.
        const QList<QByteArray> pieces = {"a", "A", "b", "\xC3\xA9", "\xC3\x89", "\xFF"};
        QRandomGenerator random(42);
        DirectoryListing listing;
        QList<std::pair<QByteArray, QByteArray>> expected; // (upper-cased catalogue name, native name)
        for (int i = 0; i < 3000; ++i) {
            QByteArray name;
            for (int length = 1 + int(random.bounded(14)); length > 0; --length)
                name += pieces[random.bounded(int(pieces.size()))];
            listing.add(name, false);
            expected.append({Windows1252::toUpper(Windows1252::fromNativeFileName(name)), name});
        }
        listing.sortFrom(0);
        std::sort(expected.begin(), expected.end());
        for (qsizetype i = 0; i < listing.size(); ++i)
            QCOMPARE(listing.nativeName(i).toByteArray(), expected[i].second);
    }

    // Going down by names relative to the parent, past 4096 bytes, with a few descriptors: the
    // parents let go are opened again by ".." on the way up.
    void goesAnyDepthHoldingFewDirectories()
    {
        QTemporaryDir dir;
        const QByteArray name(200, 'n');
        constexpr int depth = 30; // 30 x 201 bytes
        QVERIFY(makeDeepChain(dir.path(), name, depth));
        const int before = openDescriptors();
        {
            LinuxDirectoryLister lister(3);
            DirectoryListing entries;
            QCOMPARE(lister.open(QFile::encodeName(dir.path()), true, entries), DirectoryLister::Result::Listed);
            for (int level = 1; level <= depth; ++level) {
                QCOMPARE(lister.enter(name, entries), DirectoryLister::Result::Listed);
                QVERIFY(lister.openDirectories() <= 3);
            }
            QCOMPARE(names(entries), (QStringList{u"./"_qs, u"../"_qs, u"f.txt"_qs, u"z/"_qs}));
            for (int level = depth; level >= 1; --level) {
                lister.leave();
                QCOMPARE(lister.enter("z", entries), DirectoryLister::Result::Listed);
                lister.leave();
                QVERIFY(lister.openDirectories() <= 3);
            }
            QCOMPARE(lister.enter(name, entries), DirectoryLister::Result::Listed);
        } // the lister's end lets go of everything
        QCOMPARE(openDescriptors(), before);
    }

    void aDirectoryGoneOrChangedFailsOneLockedIsDenied()
    {
        QTemporaryDir dir;
        QDir root(dir.path());
        for (const QString &path : {u"gone"_qs, u"file"_qs, u"link"_qs, u"moved/child"_qs, u"other"_qs, u"locked"_qs})
            QVERIFY(root.mkpath(path));
        LinuxDirectoryLister lister(1);
        DirectoryListing entries;
        QCOMPARE(lister.open(QFile::encodeName(dir.path()), true, entries), DirectoryLister::Result::Listed);
        // Changed since the root was listed.
        QVERIFY(root.rmdir(u"gone"_qs));
        QVERIFY(root.rmdir(u"file"_qs) && TestSupport::writeFile(root.filePath(u"file"_qs), "x"));
        QVERIFY(root.rmdir(u"link"_qs) && QFile::link(root.filePath(u"other"_qs), root.filePath(u"link"_qs)));
        entries.add("stale", false);
        QCOMPARE(lister.enter("gone", entries), DirectoryLister::Result::Failed);
        QVERIFY(entries.isEmpty());
        QVERIFY(lister.enter("file", entries) == DirectoryLister::Result::Failed && lister.enter("link", entries) == DirectoryLister::Result::Failed);
        QCOMPARE(lister.enter("other", entries), DirectoryLister::Result::Listed);
        lister.leave();

        // A directory moved elsewhere while the walk is inside it: its ".." is no longer the parent
        // the walk let go of.
        QCOMPARE(lister.enter("moved", entries), DirectoryLister::Result::Listed);
        QCOMPARE(lister.enter("child", entries), DirectoryLister::Result::Listed);
        QCOMPARE(lister.openDirectories(), 1);
        QVERIFY(root.rename(u"moved/child"_qs, u"other/child"_qs));
        lister.leave();
        QCOMPARE(lister.enter("anything", entries), DirectoryLister::Result::Failed);
        QCOMPARE(lister.openDirectories(), 0);

        if (::geteuid() == 0) {
            qInfo("running as root, which reads every directory: the permission case is not tried");
            return;
        }
        QVERIFY(::chmod(QFile::encodeName(root.filePath(u"locked"_qs)).constData(), 0) == 0);
        QCOMPARE(lister.open(QFile::encodeName(dir.path()), true, entries), DirectoryLister::Result::Listed);
        QCOMPARE(lister.enter("locked", entries), DirectoryLister::Result::Denied);
        QCOMPARE(lister.enter("other", entries), DirectoryLister::Result::Listed);
        ::chmod(QFile::encodeName(root.filePath(u"locked"_qs)).constData(), 0755);
    }
};

QTEST_GUILESS_MAIN(tst_LinuxDirectoryLister)
#include "tst_linuxdirectorylister.moc"
