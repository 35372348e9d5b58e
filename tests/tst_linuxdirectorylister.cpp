#include "linuxdirectorylister.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

namespace {

QStringList names(const std::vector<DirectoryEntry> &entries)
{
    QStringList out;
    for (const DirectoryEntry &entry : entries)
        out.append(QString::fromLatin1(entry.archiveName) + (entry.isDirectory ? u"/"_qs : QString()));
    return out;
}

} // namespace

class tst_LinuxDirectoryLister : public QObject
{
    Q_OBJECT

private slots:
    void sortedIgnoringCaseWithDotsForSubDirectories()
    {
        QTemporaryDir dir;
        const QDir root(dir.path());
        for (const char *name : {"setup.exe", "LISEZMOI.TXT", "b", "B", "Autorun.inf"})
            QVERIFY(TestSupport::writeFile(root.filePath(QLatin1String(name)), "x"));
        QVERIFY(root.mkdir(u"JEUX"_qs));
        QVERIFY(root.mkdir(u".cache"_qs));

        LinuxDirectoryLister lister;
        std::vector<DirectoryEntry> entries;
        QVERIFY(lister.list(QFile::encodeName(dir.path()), true, entries));
        QCOMPARE(names(entries), (QStringList{u".cache/"_qs, u"Autorun.inf"_qs, u"B"_qs, u"b"_qs, u"JEUX/"_qs,
                                              u"LISEZMOI.TXT"_qs, u"setup.exe"_qs}));

        QVERIFY(lister.list(QFile::encodeName(root.filePath(u"JEUX"_qs)), false, entries));
        QCOMPARE(names(entries), (QStringList{u"./"_qs, u"../"_qs}));
    }

    void linksAreEntriesButNeverDirectories()
    {
        QTemporaryDir dir;
        const QDir root(dir.path());
        QVERIFY(root.mkdir(u"real"_qs));
        QVERIFY(QFile::link(dir.path(), root.filePath(u"loop"_qs)));
        QVERIFY(QFile::link(root.filePath(u"nowhere"_qs), root.filePath(u"dangling"_qs)));
        LinuxDirectoryLister lister;
        std::vector<DirectoryEntry> entries;
        QVERIFY(lister.list(QFile::encodeName(dir.path()), true, entries));
        QCOMPARE(names(entries), (QStringList{u"dangling"_qs, u"loop"_qs, u"real/"_qs}));
    }

    void oddNamesBecomeSafeLinesAndKeepTheirRealName()
    {
        QTemporaryDir dir;
        const QByteArray base = QFile::encodeName(dir.path()) + '/';
        const QList<QByteArray> odd = {"caf\xC3\xA9.txt", "two\nlines", "say \"hi\"", "bad\xFF"};
        for (const QByteArray &name : odd) {
            const int fd = ::open((base + name).constData(), O_CREAT | O_WRONLY, 0644); // bytes as they are
            QVERIFY(fd >= 0);
            ::close(fd);
        }
        LinuxDirectoryLister lister;
        std::vector<DirectoryEntry> entries;
        QVERIFY(lister.list(base, true, entries));
        QCOMPARE(names(entries), (QStringList{u"bad?"_qs, QString::fromLatin1("caf\xE9.txt"),
                                              u"say ?hi?"_qs, u"two?lines"_qs}));
        for (const DirectoryEntry &entry : entries)
            QVERIFY(odd.contains(entry.nativeName));
    }

    void unreadableDirectoriesGiveNothing()
    {
        QTemporaryDir dir;
        QVERIFY(TestSupport::writeFile(dir.filePath(u"file"_qs), "x"));
        LinuxDirectoryLister lister;
        std::vector<DirectoryEntry> entries{{"stale", "stale", false}};
        QVERIFY(!lister.list(QFile::encodeName(dir.filePath(u"missing"_qs)), false, entries));
        QVERIFY(entries.empty());
        QVERIFY(!lister.list(QFile::encodeName(dir.filePath(u"file"_qs)), false, entries));
        QVERIFY(entries.empty());
    }
};

QTEST_GUILESS_MAIN(tst_LinuxDirectoryLister)
#include "tst_linuxdirectorylister.moc"
