#include "extensiontable.h"
#include "linetable.h"
#include "tablefile.h"
#include "testsupport.h"
#include "themelist.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class tst_ExtensionTable : public QObject
{
    Q_OBJECT

private slots:
    void entryLineBytes_data()
    {
        QTest::addColumn<QString>("extension");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("program");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("one letter") << u"c"_qs << 9 << u"C:\\TC\\TC"_qs << QByteArray("C         &9C:\\TC\\TC\r\n");
        QTest::newRow("two letters") << u"Js"_qs << 4 << u"/usr/bin/xdg-open"_qs
                                     << QByteArray("JS         &4/usr/bin/xdg-open\r\n");
        QTest::newRow("three letters") << u"gif"_qs << 1 << u"D:\\OUTILS\\VIEW"_qs
                                       << QByteArray("GIF         &1D:\\OUTILS\\VIEW\r\n");
        QTest::newRow("accent upper-cased by the code page") << u"é"_qs << 2 << u"X"_qs
                                                             << QByteArray("\xC9         &2X\r\n");
    }

    void entryLineBytes()
    {
        QFETCH(QString, extension);
        QFETCH(int, code);
        QFETCH(QString, program);
        QFETCH(QByteArray, bytes);
        const QString line = ExtensionTable::entryLine(extension, code, program);
        QCOMPARE(TableFile::encode({line}), bytes);
        // "&" in column 11, 12 or 13 (from 1): the blanks are a fixed run, not a column.
        QCOMPARE(line.indexOf(u'&') + 1, 10 + extension.size());
    }

    void refusalsInTheirOrder_data()
    {
        QTest::addColumn<QString>("extension");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("message");
        const QString noProgram = u"Vous devez associer un logiciel à chaque nouvelle extension !"_qs;
        QTest::newRow("nothing given: program first") << QString() << 0 << QString() << noProgram;
        QTest::newRow("too long but no program") << u"jpeg"_qs << 1 << QString() << noProgram;
        QTest::newRow("no class") << QString() << 0 << u"C:\\V"_qs
                                  << u"Vous devez choisir une classification du fichier !"_qs;
        QTest::newRow("no extension") << QString() << 3 << u"C:\\V"_qs
                                      << u"Vous n'avez pas donné de nom à l'extension !"_qs;
        QTest::newRow("four letters") << u"jpeg"_qs << 1 << u"C:\\V"_qs << u"Nom trop long (3 caractères maxi)"_qs;
        QTest::newRow("three letters pass") << u"jpg"_qs << 1 << u"C:\\V"_qs << QString();
        QTest::newRow("anything short passes") << u". ,"_qs << 9 << u"C:\\V"_qs << QString();
    }

    void refusalsInTheirOrder()
    {
        QFETCH(QString, extension);
        QFETCH(int, code);
        QFETCH(QString, program);
        QFETCH(QString, message);
        QCOMPARE(ExtensionTable::refusal(extension, code, program), message);
    }

    void programPathJoinsOnceAndDropsProgramExtensions_data()
    {
        QTest::addColumn<QString>("directory");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("program");
        QTest::newRow("windows root") << u"C:\\"_qs << u"EDIT.COM"_qs << u"C:\\EDIT"_qs;
        QTest::newRow("windows nested") << u"C:\\WINDOWS"_qs << u"NOTEPAD.EXE"_qs << u"C:\\WINDOWS\\NOTEPAD"_qs;
        QTest::newRow("linux root") << u"/"_qs << u"edit.com"_qs << u"/edit"_qs;
        QTest::newRow("mount point") << u"/media/cd"_qs << u"Setup.Exe"_qs << u"/media/cd/Setup"_qs;
        QTest::newRow("batch any case") << u"/opt"_qs << u"RUN.bAt"_qs << u"/opt/RUN"_qs;
        QTest::newRow("linux program kept whole") << u"/usr/bin"_qs << u"xdg-open"_qs << u"/usr/bin/xdg-open"_qs;
        QTest::newRow("other dotted name kept") << u"/usr/bin"_qs << u"python3.11"_qs << u"/usr/bin/python3.11"_qs;
        QTest::newRow("linux root, no extension") << u"/"_qs << u"init"_qs << u"/init"_qs;
    }

    void programPathJoinsOnceAndDropsProgramExtensions()
    {
        QFETCH(QString, directory);
        QFETCH(QString, file);
        QFETCH(QString, program);
        QCOMPARE(ExtensionTable::programPath(directory, file), program);
    }

    void programFilesByPatternOrExecutable()
    {
        QTemporaryDir dir;
        for (const char *name : {"setup.EXE", "run.bat", "Tool.Com", "readme.txt", "exe", "data.exe.txt", "script"})
            QVERIFY(TestSupport::writeFile(dir.filePath(QLatin1String(name)), "x"));
        QFile::setPermissions(dir.filePath(u"script"_qs), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QVERIFY(QDir(dir.path()).mkdir(u"sub.exe"_qs)); // directories are the tree's, never programs
        QCOMPARE(ExtensionTable::programFiles(dir.path()),
                 (QStringList{u"run.bat"_qs, u"script"_qs, u"setup.EXE"_qs, u"Tool.Com"_qs}));
        QVERIFY(ExtensionTable::programFiles(dir.filePath(u"missing"_qs)).isEmpty());
    }

    void driveHoldingPicksTheDeepestMountPoint()
    {
        const QList<Drive> drives = {{u"c:"_qs, DriveType::Fixed, u"/"_qs},
                                     {u"d:"_qs, DriveType::CdRom, QString()},
                                     {u"e:"_qs, DriveType::Removable, u"/media/usb"_qs}};
        QCOMPARE(ExtensionTable::driveHolding(drives, u"/home/kalvex2"_qs), 0);
        QCOMPARE(ExtensionTable::driveHolding(drives, u"/media/usb"_qs), 2);
        QCOMPARE(ExtensionTable::driveHolding(drives, u"/media/usb/kalvex2"_qs), 2);
        QCOMPARE(ExtensionTable::driveHolding(drives, u"/media/usb2"_qs), 0);
        QCOMPARE(ExtensionTable::driveHolding({}, u"/home"_qs), -1);
    }

    void tableRewrittenWholeAfterEveryChange()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"extens.txt"_qs);
        LineTable table(path, path);
        table.load();
        QCOMPARE(table.count(), 0); // a missing file is an empty table
        table.removeAt(-1);         // nothing selected: the file is written as it stands
        QCOMPARE(TestSupport::readFile(path), QByteArray());

        table.append(u"TXT         &4C:\\PROG, V2\\EDIT"_qs);
        table.append(u"GIF         &1C:\\V"_qs);
        QCOMPARE(TestSupport::readFile(path), QByteArray("TXT         &4C:\\PROG, V2\\EDIT\r\nGIF         &1C:\\V\r\n"));
        table.removeAt(5);
        QCOMPARE(table.count(), 2);

        // Read back, a comma splits a line into two items.
        LineTable reread(path, path);
        reread.load();
        QCOMPARE(reread.lines(), (QStringList{u"TXT         &4C:\\PROG"_qs, u"V2\\EDIT"_qs, u"GIF         &1C:\\V"_qs}));
        reread.removeAt(1);
        QCOMPARE(TestSupport::readFile(path), QByteArray("TXT         &4C:\\PROG\r\nGIF         &1C:\\V\r\n"));
    }

    void starterTableHoldsEveryClassWithTheDesktopOpener()
    {
        const QString starter = QStringLiteral(KALVEX_STARTER_TABLE);
        const QList<QPair<QString, int>> rows = {
            {u"bmp"_qs, 1}, {u"gif"_qs, 1}, {u"jpg"_qs, 1}, {u"wmf"_qs, 1}, {u"ico"_qs, 2}, {u"cur"_qs, 2},
            {u"emf"_qs, 2}, {u"wav"_qs, 3}, {u"mid"_qs, 3}, {u"mp3"_qs, 3}, {u"txt"_qs, 4}, {u"doc"_qs, 4},
            {u"avi"_qs, 5}, {u"mpg"_qs, 5}, {u"diz"_qs, 6}, {u"exe"_qs, 7}, {u"com"_qs, 7}, {u"bat"_qs, 7},
            {u"zip"_qs, 8}, {u"arj"_qs, 8}, {u"lzh"_qs, 8}};
        QStringList lines;
        for (const auto &[extension, code] : rows)
            lines.append(ExtensionTable::entryLine(extension, code, u"/usr/bin/xdg-open"_qs));
        QCOMPARE(TestSupport::readFile(starter), TableFile::encode(lines));
        // Staging put it beside the program, where a first start finds it.
        QVERIFY(QFile::exists(QDir(TestSupport::programDirectory()).filePath(u"extens.txt"_qs)));
    }

    void themeLinesAndWindowPlace()
    {
        QCOMPARE(ThemeList::themeLine(u"Jeux DE Rôle, ÉTÉ"_qs), u"jeux de rôle, été"_qs);
        QCOMPARE(ThemeList::themeLine(QString()), QString());
        // 420 x 400 pixels are 6300 x 6000 twips: left (12500 - 6300) / 2, top (9000 - 6000) / 2.
        QCOMPARE(ThemeList::windowPosition(QSize(420, 400)), QPoint(3100 / 15, 1500 / 15));
        // Larger than the assumed screen: the window starts left of and above it.
        QCOMPARE(ThemeList::windowPosition(QSize(1000, 700)), QPoint(-1250 / 15, -750 / 15));
    }
};

QTEST_GUILESS_MAIN(tst_ExtensionTable)
#include "tst_extensiontable.moc"
