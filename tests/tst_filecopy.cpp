#include "filecopy.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class tst_FileCopy : public QObject
{
    Q_OBJECT

    static void write(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
    }

private slots:
    void copiesAndReplacesWhole()
    {
        QTemporaryDir dir;
        const QString source = dir.filePath(QStringLiteral("CASSE.EXE"));
        const QString target = dir.filePath(QStringLiteral("copie.exe"));
        QByteArray big(3 * 1024 * 1024 + 17, 'x');
        big[0] = 'M';
        write(source, big);
        write(target, "an older, shorter file");
        QVERIFY(copyFileReplacing(source, target));
        QCOMPARE(read(target), big);
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 2); // no temporary left
    }

    void refusesWhatCannotBeReplaced()
    {
        QTemporaryDir dir;
        const QString source = dir.filePath(QStringLiteral("a.txt"));
        write(source, "new");
        const QString readOnly = dir.filePath(QStringLiteral("ro.txt"));
        write(readOnly, "kept");
        QFile::setPermissions(readOnly, QFileDevice::ReadOwner);
        QVERIFY(!copyFileReplacing(source, readOnly));
        QCOMPARE(read(readOnly), QByteArray("kept"));

        QVERIFY(!copyFileReplacing(dir.filePath(QStringLiteral("missing")), dir.filePath(QStringLiteral("b.txt"))));
        QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("b.txt"))));
        QVERIFY(!copyFileReplacing(source, dir.filePath(QStringLiteral("no/such/dir/a.txt"))));
    }

    void ontoItselfKeepsTheContent()
    {
        QTemporaryDir dir;
        const QString source = dir.filePath(QStringLiteral("a.txt"));
        write(source, "content");
        QVERIFY(copyFileReplacing(source, source));
        QCOMPARE(read(source), QByteArray("content"));
        QVERIFY(QFile::link(source, dir.filePath(QStringLiteral("link.txt"))));
        QVERIFY(copyFileReplacing(dir.filePath(QStringLiteral("link.txt")), source));
        QCOMPARE(read(source), QByteArray("content"));
    }

    void joinsWithoutDoublingTheSeparator()
    {
        QCOMPARE(pathInDirectory(QStringLiteral("/"), QStringLiteral("A.ICO")), QStringLiteral("/A.ICO"));
        QCOMPARE(pathInDirectory(QStringLiteral("/tmp/x"), QStringLiteral("A.ICO")), QStringLiteral("/tmp/x/A.ICO"));
        QCOMPARE(pathInDirectory(QStringLiteral("/tmp/x/"), QStringLiteral("A.ICO")), QStringLiteral("/tmp/x/A.ICO"));
    }
};

QTEST_GUILESS_MAIN(tst_FileCopy)
#include "tst_filecopy.moc"
