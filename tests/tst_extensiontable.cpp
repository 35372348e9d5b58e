#include "extensionentry.h"
#include "extensiontable.h"
#include "tablefile.h"
#include "testsupport.h"

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
        if (extension.size() == 3) { // read back by the columns a three-letter entry fits
            QCOMPARE(ExtensionEntry::classCode(line), code);
            QCOMPARE(ExtensionEntry::program(line), program);
        }
    }

    // The first failing check, in order: program, class, extension, its length.
    void refusal_data()
    {
        QTest::addColumn<QString>("extension");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("message");
        const QString noProgram = u"Vous devez associer un logiciel à chaque nouvelle extension !"_qs;
        QTest::newRow("no program only") << u"txt"_qs << 4 << QString() << noProgram;
        QTest::newRow("no program, all else wrong") << u"jpeg"_qs << 0 << QString() << noProgram;
        QTest::newRow("no class") << u"jpeg"_qs << 0 << u"/E"_qs << u"Vous devez choisir une classification du fichier !"_qs;
        QTest::newRow("no extension") << QString() << 1 << u"/E"_qs << u"Vous n'avez pas donné de nom à l'extension !"_qs;
        QTest::newRow("four") << u"jpeg"_qs << 9 << u"/E"_qs << u"Nom trop long (3 caractères maxi)"_qs;
        QTest::newRow("three") << u"txt"_qs << 4 << u"/E"_qs << QString();
        QTest::newRow("one") << u"c"_qs << 9 << u"/E"_qs << QString();
    }

    void refusal()
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

    void starterTableHoldsEveryClassWithTheDesktopOpener()
    {
        const QString starter = QStringLiteral(KALVEX_STARTER_TABLE);
        // Each extension followed by its class.
        const QStringList rows = u"bmp1 gif1 jpg1 wmf1 ico2 cur2 emf2 wav3 mid3 mp33 txt4 doc4 avi5 mpg5 diz6 exe7 com7 bat7 "
                                 "zip8 arj8 lzh8"_qs.split(u' ');
        QStringList lines;
        for (const QString &row : rows)
            lines.append(ExtensionTable::entryLine(row.first(3), row.back().digitValue(), u"/usr/bin/xdg-open"_qs));
        QCOMPARE(TestSupport::readFile(starter), TableFile::encode(lines));
        // Staging put it beside the program, where a first start finds it.
        QVERIFY(QFile::exists(QDir(qEnvironmentVariable("KALVEX_PROGRAM_DIR")).filePath(u"extens.txt"_qs)));
    }
};

QTEST_GUILESS_MAIN(tst_ExtensionTable)
#include "tst_extensiontable.moc"
