#include "fakedrives.h"
#include "localpath.h"
#include "testsupport.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

class TestLocalPath : public QObject
{
    Q_OBJECT
private slots:
    // A real directory stands for the disc; the stored path's case differs from the disc's.
    void componentsMatchIgnoringCase()
    {
        QTemporaryDir disc;
        QVERIFY(disc.isValid());
        QVERIFY(QDir(disc.path()).mkpath(u"Jeux/Casse"_qs));
        QVERIFY(QDir(disc.path()).mkpath(u".cache"_qs)); // a hidden name is a name like any other
        QVERIFY(TestSupport::writeFile(disc.filePath(u"Jeux/Casse/casse.exe"_qs), {}));
        FakeDrives drives;
        drives.list = {Drive{u"c:"_qs, DriveType::Fixed, u"/"_qs},
                       Drive{u"d:"_qs, DriveType::CdRom, disc.path()}};

        QCOMPARE(localPathOf(u"D:\\JEUX\\CASSE\\CASSE.EXE"_qs, drives),
                 disc.filePath(u"Jeux/Casse/casse.exe"_qs));
        QCOMPARE(localPathOf(u"d:\\jeux"_qs, drives), disc.filePath(u"Jeux"_qs));
        QCOMPARE(localPathOf(u"D:\\.CACHE"_qs, drives), disc.filePath(u".cache"_qs));
        // Missing file, missing drive, no medium, no letter, escaping components: nothing.
        QCOMPARE(localPathOf(u"D:\\JEUX\\AUTRE.EXE"_qs, drives), QString());
        QCOMPARE(localPathOf(u"E:\\SETUP.EXE"_qs, drives), QString());
        drives.list.append(Drive{u"f:"_qs, DriveType::CdRom, QString()});
        QCOMPARE(localPathOf(u"F:\\SETUP.EXE"_qs, drives), QString());
        QCOMPARE(localPathOf(u"\\JEUX\\CASSE"_qs, drives), QString());
        QCOMPARE(localPathOf(u"D:\\JEUX\\..\\JEUX"_qs, drives), QString());
        QCOMPARE(localPathOf(u"D:\\"_qs, drives), QString()); // a drive is no file
    }
};

QTEST_GUILESS_MAIN(TestLocalPath)
#include "tst_localpath.moc"
