#include "disclocator.h"
#include "archivefile.h"
#include "fakemediaplayer.h"
#include "fakedrives.h"
#include "fakeservices.h"
#include "foundfileactions.h"
#include "foundrow.h"
#include "samplepictures.h"
#include "testsupport.h"

#include <QFile>
#include <QMap>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <sys/stat.h>

namespace {

QByteArray mzProgram(const QByteArray &signature)
{
    QByteArray image(512, '\0');
    image[0] = 'M';
    image[1] = 'Z';
    qToLittleEndian<quint32>(0x80, image.data() + 0x3C); // without a signature there: a DOS program
    image.replace(0x80, signature.size(), signature);
    return image;
}

// A medium in drive d: (a real directory) and the actions over fakes.
struct Fixture
{
    Fixture()
    {
        services.drives.list = {{u"c:"_qs, DriveType::Fixed, u"/"_qs}, {u"d:"_qs, DriveType::CdRom, disc.path()}};
        const QList<std::pair<QString, QByteArray>> files{
            {u"Doc/ReadMe.txt"_qs, "lisez-moi"}, {u"README"_qs, "sans extension"}, {u"setup.exe"_qs, mzProgram({})},
            {u"jeux/casse.exe"_qs, mzProgram(QByteArray("PE\0\0", 4))},
            {u"jeux/tetris.com"_qs, QByteArray("\xE9\x10\x00\xCD\x20", 5)}, {u"install.bat"_qs, "@echo off\r\n"},
            {u"aide.hlp"_qs, "?_"}, {u"film.avi"_qs, "RIFF"}, {u"son.wav"_qs, "RIFF"},
            {u"logo.ico"_qs, SamplePictures::icon(SamplePictures::bands(16, 16, {Qt::red, Qt::blue}), 24, QImage())}};
        for (const auto &[file, bytes] : files)
            TestSupport::writeFile(disc.filePath(file), bytes);
        ArchiveFile::write(data.path(), u"PCFUN75"_qs, {"d:\\DOC", "d:\\DOC\\.", "d:\\DOC\\README.TXT", "d:\\SETUP.EXE"});
    }

    // A left press on a row of archive PCFUN75, then a right press.
    std::optional<FoundFileActions::Preview> press(const QString &path)
    {
        choose(path);
        return actions.act(row, table);
    }
    void choose(const QString &path) { row.choose(path, u"PCFUN75"_qs, data.filePath(u"PCFUN75.lst"_qs)); }
    QString onDisc(const QString &relative) const { return disc.filePath(relative); }

    QTemporaryDir disc;
    QTemporaryDir data;
    FakeServices services;
    FakeMediaPlayer media;
    FoundFileActions actions{{services.launcher, services.drives, services.dialogs, services.folderPicker,
                              services.pictures, media}};
    FoundRow row;
    QStringList table{u"TXT         &4/usr/bin/editor"_qs, u"TXT         &4/usr/bin/second"_qs,
                      u"GI         &1/usr/bin/never"_qs, u"ZIP         &8"_qs};
};

// Media as real directories, each a name and its files.
const QStringList kFun = {u"FILE_ID.DIZ"_qs, u"Doc/LisezMoi.txt"_qs, u"JEUX/CASSE.EXE"_qs, u"JEUX/TETRIS.COM"_qs, u"ZOO/ANE.GIF"_qs};
const QMap<QString, QStringList> kTrees = {
    {u"fun"_qs, kFun}, {u"funcopy"_qs, kFun}, {u"mag"_qs, {u"FILE_ID.DIZ"_qs, u"Doc/LisezMoi.txt"_qs, u"MAG/SOMMAIRE.TXT"_qs}},
    {u"fun76"_qs, kFun.mid(0, 4) + QStringList{u"ZOO/ZEBRE.GIF"_qs}}, // all of fun but its last entry
};

// PCFUN75's catalogue, made when it was d:; "?" stands for a character the catalogue could not hold.
const QList<QByteArray> kFun75 = {"d:\\NOM?.TXT", "d:\\DOC", "d:\\DOC\\.", "d:\\DOC\\..", "d:\\DOC\\LISEZMOI.TXT", "d:\\FILE_ID.DIZ",
                                  "d:\\JEUX", "d:\\JEUX\\.", "d:\\JEUX\\..", "d:\\JEUX\\CASSE.EXE", "d:\\JEUX\\TETRIS.COM",
                                  "d:\\ZOO", "d:\\ZOO\\.", "d:\\ZOO\\..", "d:\\ZOO\\ANE.GIF"};

} // namespace

class tst_FoundFileActions : public QObject
{
    Q_OBJECT

private slots:
    // Each row's labels after a left press on it, the row before being README.TXT.
    void rowLabels_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("lessExtension");
        QTest::addColumn<QString>("extension");
        QTest::newRow("no dot keeps TXT") << u"D:\\README"_qs << u"D:\\RE"_qs << u"TXT"_qs;
        QTest::newRow("three at most") << u"D:\\A\\PHOTO.JPEG"_qs << u"D:\\A\\PHOTO."_qs << u"JPE"_qs;
        QTest::newRow("fewer at the end") << u"D:\\A.B"_qs << u"D:"_qs << u"B"_qs;
    }

    void rowLabels()
    {
        QFETCH(QString, path);
        FoundRow row;
        row.choose(u"D:\\DOC\\README.TXT"_qs, u"X"_qs);
        row.choose(path, u"PCFUN75"_qs);
        QTEST(row.pathLessExtension(), "lessExtension");
        QTEST(row.extension(), "extension");
        QCOMPARE(row.quotedPath(), u'"' + path + u'"');
        QCOMPARE(row.archiveLabel(), u"PCFUN75 .lst"_qs);
        QCOMPARE(row.mediumPrompt(), u"Mettez dans le lecteur \"PCFUN75\" : "_qs + path);
    }

    void rightPressActsByTheExtensionTable()
    {
        Fixture f;
        f.press(u"D:\\DOC\\README.TXT"_qs);
        QCOMPARE(f.services.launcher.programs,
                 (QList<QStringList>{{u"/usr/bin/editor"_qs, f.onDisc(u"Doc/ReadMe.txt"_qs)}}));

        // A dot-less row keeps TXT and the right press opens the new path by it.
        f.press(u"D:\\README"_qs);
        QCOMPARE(f.services.launcher.programs.last(), (QStringList{u"/usr/bin/editor"_qs, f.onDisc(u"README"_qs)}));

        // A lower-case extension is upper-cased and written back.
        f.services.launcher.programs.clear();
        f.choose(u"D:\\DOC\\README.TXT"_qs);
        f.row.setExtension(u"txt"_qs);
        f.actions.act(f.row, f.table);
        QCOMPARE(f.row.extension(), u"TXT"_qs);
        QCOMPARE(f.services.launcher.programs.size(), 1);

        // Nothing starts without a match, a program or the file.
        f.press(u"D:\\A.GI"_qs);            // a two-letter entry never matches
        f.press(u"D:\\ARCHIVE.ZIP"_qs);     // an entry with no program
        f.press(u"D:\\DOC\\ABSENT.TXT"_qs); // not on the disc
        QCOMPARE(f.services.launcher.programs.size(), 1);
        QVERIFY(f.services.dialogs.shown.isEmpty());
    }

    void programsGoToWineOrDosboxByTheirHeader()
    {
        Fixture f;
        f.press(u"D:\\SETUP.EXE"_qs); // stored as d:\SETUP.EXE, on the disc as setup.exe
        f.press(u"D:\\JEUX\\TETRIS.COM"_qs);
        QCOMPARE(f.services.launcher.dosPrograms, (QStringList{f.onDisc(u"setup.exe"_qs), f.onDisc(u"jeux/tetris.com"_qs)}));
        f.press(u"D:\\JEUX\\CASSE.EXE"_qs);
        f.press(u"D:\\INSTALL.BAT"_qs);
        f.press(u"D:\\AIDE.HLP"_qs);
        QCOMPARE(f.services.launcher.windowsFiles,
                 (QStringList{f.onDisc(u"jeux/casse.exe"_qs), f.onDisc(u"install.bat"_qs), f.onDisc(u"aide.hlp"_qs)}));
    }

    void iconsArePreviewedAndMediaPlayed()
    {
        Fixture f;
        const auto preview = f.press(u"D:\\LOGO.ICO"_qs);
        QVERIFY(preview);
        QCOMPARE(preview->localPath, f.onDisc(u"logo.ico"_qs));
        QCOMPARE(preview->picture.size(), QSize(16, 16));
        QVERIFY(!f.press(u"D:\\ABSENT.CUR"_qs));

        f.press(u"D:\\FILM.AVI"_qs);
        f.press(u"D:\\SON.WAV"_qs);
        QCOMPARE(f.media.played, (QStringList{f.onDisc(u"film.avi"_qs), f.onDisc(u"son.wav"_qs)}));

        // The media operations check the extension first.
        f.choose(u"D:\\SON.WAV"_qs);
        QVERIFY(!f.actions.playMedia(FoundFileActions::Media::Video, f.row));
        QCOMPARE(f.services.dialogs.messages(),
                 QStringList{u"Vous devez au préalable rechercher les fichiers AVI dans  le CD de votre choix !"_qs});
        QCOMPARE(f.media.played.size(), 2);
    }

    // A FIFO or a link to a device under a program's or a medium's name: nothing is read, run or
    // played, and nothing waits.
    void whatIsNoRegularFileIsNeitherRunNorPlayed_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("fifo");
        for (const QString &name : {u"piege.exe"_qs, u"piege.com"_qs, u"piege.wav"_qs, u"piege.avi"_qs}) {
            QTest::newRow(qPrintable(name + u" FIFO"_qs)) << name << true;
            QTest::newRow(qPrintable(name + u" to /dev/zero"_qs)) << name << false;
        }
    }

    void whatIsNoRegularFileIsNeitherRunNorPlayed()
    {
        QFETCH(QString, name);
        QFETCH(bool, fifo);
        Fixture f;
        const QByteArray path = QFile::encodeName(f.onDisc(name));
        QVERIFY(fifo ? ::mkfifo(path.constData(), 0600) == 0 : QFile::link(u"/dev/zero"_qs, f.onDisc(name)));
        f.press(u"D:\\"_qs + name.toUpper());
        QVERIFY(f.services.launcher.dosPrograms.isEmpty());
        QVERIFY(f.services.launcher.windowsFiles.isEmpty());
        QVERIFY(f.media.played.isEmpty());
    }

    void classButtonsCheckInOrder()
    {
        using C = FoundFileActions::FileClass;
        const QString oneArchive = u"Pour utiliser une transaction automatisée, vous ne devez sélectionner qu'un seul "
                                   "fichier d'archive et mettre le support correspondant (CD-Rom ou disquette) dans le "
                                   "lecteur !"_qs;
        // Two archives selected: refused first, even with files of the class found.
        QCOMPARE(FoundFileActions::classRefusal(C::Pictures, 2, u"1"_qs, u"GIF"_qs), oneArchive);
        QCOMPARE(FoundFileActions::classRefusal(C::Pictures, 1, u"1"_qs, u"GIF"_qs), QString());
        // After a search by name, the first message even when pictures were found.
        QCOMPARE(FoundFileActions::classRefusal(C::Pictures, 1, u"0"_qs, u"GIF"_qs),
                 u"Vous devez au préalable rechercher les fichiers BMP,GIF,JPG ou WMF  dans  le CD-Rom ou la Disquette de votre choix !"_qs);
        QCOMPARE(FoundFileActions::classRefusal(C::Pictures, 0, u"1"_qs, u"TXT"_qs),
                 u"Vous devez au préalable rechercher les fichiers BMP,GIF,JPG ou WMF dans  le dans  le CD-Rom ou la Disquette de votre choix !"_qs);
        QCOMPARE(FoundFileActions::classRefusal(C::Texts, 1, u"0"_qs, u"TXT"_qs),
                 u"Vous devez au préalable rechercher les fichiers DIZ,DOC ou TXT  dans  le CD-Rom ou la Disquette de votre choix !"_qs);
        // DOC is named by the first message but refused by the check.
        QCOMPARE(FoundFileActions::classRefusal(C::Texts, 1, u"1"_qs, u"DOC"_qs),
                 u"Vous devez au préalable rechercher les fichiers DIZ ou TXT  dans  le CD-Rom ou la Disquette de votre choix !"_qs);
        QCOMPARE(FoundFileActions::classRefusal(C::Texts, 1, u"1"_qs, u"DIZ"_qs), QString());
        const QString icons = u"Vous devez au préalable rechercher les fichiers ICO,CUR ou EMF  dans  le dans  le CD-Rom ou la Disquette de votre choix !"_qs;
        QCOMPARE(FoundFileActions::classRefusal(C::Icons, 1, u"0"_qs, u"ICO"_qs), icons);
        QCOMPARE(FoundFileActions::classRefusal(C::Icons, 1, u"1"_qs, u"   "_qs), icons);
        QCOMPARE(FoundFileActions::classRefusal(C::Icons, 1, u"1"_qs, u"EMF"_qs), QString());
    }

    void copyAsksThenCopies()
    {
        Fixture f;
        QTemporaryDir target;
        f.choose(u"D:\\DOC\\README.TXT"_qs);
        QCOMPARE(f.actions.copyInto(f.row, target.path()), QString()); // answered No
        QCOMPARE(f.services.dialogs.shown.last().title, u"Copie d'un fichier"_qs);
        QCOMPARE(f.services.dialogs.shown.last().text,
                 u"Etes-vous sûr de vouloir copier  D:\\DOC\\README.TXT dans le répertoire "_qs + target.path() + u" ?"_qs);
        QCOMPARE(f.services.dialogs.shown.last().help.context, 1000);
        const QString copied = target.filePath(u"README.TXT"_qs);
        f.services.dialogs.answers = {Answer::Yes};
        QCOMPARE(f.actions.copyInto(f.row, target.path()), copied);
        QCOMPARE(TestSupport::readFile(copied), QByteArray("lisez-moi"));
    }

    // Which medium a row of PCFUN75 is taken from: drives in letter order, each holding one of the
    // trees (empty: no medium).
    void theRightDisc_data()
    {
        QTest::addColumn<QStringList>("drives"); // d:, e:, f:
        QTest::addColumn<QString>("row");
        QTest::addColumn<QString>("expected"); // the medium used; empty: none
        QTest::newRow("at its letter") << QStringList{u"fun"_qs, u"mag"_qs} << u"D:\\FILE_ID.DIZ"_qs << u"fun"_qs;
        QTest::newRow("two copies: the one at the letter") << QStringList{u"fun"_qs, u"funcopy"_qs} << u"D:\\FILE_ID.DIZ"_qs << u"fun"_qs;
        QTest::newRow("another disc at the letter") << QStringList{u"mag"_qs, u""_qs, u"fun"_qs} << u"D:\\FILE_ID.DIZ"_qs << u"fun"_qs;
        QTest::newRow("nowhere") << QStringList{u"mag"_qs, u""_qs} << u"D:\\FILE_ID.DIZ"_qs << QString();
        QTest::newRow("all but the last entry") << QStringList{u"fun76"_qs} << u"D:\\FILE_ID.DIZ"_qs << QString();
        QTest::newRow("two copies: the first by letter") << QStringList{u"mag"_qs, u"funcopy"_qs, u"fun"_qs}
                                                         << u"D:\\DOC\\LISEZMOI.TXT"_qs << u"funcopy"_qs;
        // The right disc decides, even when only another one has the file.
        QTest::newRow("a file missing from the right disc") << QStringList{u"mag"_qs, u"fun"_qs} << u"D:\\MAG\\SOMMAIRE.TXT"_qs
                                                            << QString();
    }

    void theRightDisc()
    {
        QFETCH(QStringList, drives);
        QFETCH(QString, row);
        QFETCH(QString, expected);
        QTemporaryDir media, data;
        for (auto it = kTrees.cbegin(); it != kTrees.cend(); ++it) {
            for (const QString &file : it.value())
                QVERIFY(TestSupport::writeFile(media.filePath(it.key() + u'/' + file), (it.key() + u':' + file).toUtf8()));
        }
        QVERIFY(ArchiveFile::write(data.path(), u"PCFUN75"_qs, kFun75));
        FakeDrives fake({{u"c:"_qs, DriveType::Fixed, u"/"_qs}});
        for (qsizetype i = 0; i < drives.size(); ++i) {
            fake.list.append({QString(QChar(char16_t(u'd' + i))) + u':', DriveType::CdRom,
                              drives[i].isEmpty() ? QString() : media.filePath(drives[i]), {}, {}, drives[i]});
        }
        DiscLocator locator(fake);
        const QString local = locator.localPath(row, data.filePath(u"PCFUN75.lst"_qs));
        if (expected.isEmpty())
            QCOMPARE(local, QString());
        else
            QVERIFY2(local.startsWith(media.filePath(expected) + u'/'), qPrintable(local));
    }
};

QTEST_GUILESS_MAIN(tst_FoundFileActions)
#include "tst_foundfileactions.moc"
