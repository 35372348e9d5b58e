// Disc images read without mounting: each image, walked by the image lister, gives byte for byte
// the archive of the tree the system shows for it (xorriso's extraction of an ISO, which keeps
// Rock Ridge's relocations at their real place; mtools' of a FAT floppy; the source of a UDF
// image), walked by the real lister. Damaged images end the walk empty or failed, never hanging.
#include "archivefile.h"
#include "fakedrives.h"
#include "filefinder.h"
#include "imagedirectorylister.h"
#include "imagefolder.h"
#include "linuxdirectorylister.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Walked
{
    QByteArray archive; // the archive file's bytes; empty when none was written
    int count = 0;
    bool failed = false;
};

Walked walk(const QString &root, DirectoryLister &lister, const QString &letter = u"d:"_qs)
{
    FakeDrives drives({{letter, DriveType::CdRom, root}});
    FileFinder finder(drives, lister);
    finder.setChemin(letter);
    finder.setCriteres(u"*.*"_qs);
    finder.Rechercher();
    QList<QByteArray> entries;
    for (int i = 1; i <= finder.count(); ++i)
        entries.append(finder.Lire_Fichiers(i));
    Walked walked{{}, finder.count(), finder.failed()};
    QTemporaryDir out;
    if (!entries.isEmpty() && ArchiveFile::write(out.path(), u"DISQUE"_qs, entries))
        walked.archive = TestSupport::readFile(out.filePath(u"DISQUE.lst"_qs));
    return walked;
}

Walked walkImage(const QString &image, const QString &letter = u"d:"_qs)
{
    ImageDirectoryLister lister;
    return walk(image, lister, letter);
}

Walked walkTree(const QString &tree, const QString &letter = u"d:"_qs)
{
    LinuxDirectoryLister lister;
    return walk(tree, lister, letter);
}

void makeFile(const QDir &root, const QString &path, const QByteArray &content = "x")
{
    QVERIFY(root.mkpath(QFileInfo(root.filePath(path)).path()));
    QVERIFY(TestSupport::writeFile(root.filePath(path), content));
}

// A cover disc in small: long and accented names, mixed case, a name without extension, a
// directory of 300 entries (its records span many sectors), a hidden directory, a link, and a
// chain eleven levels deep that Rock Ridge relocates.
void makeTree(const QDir &tree)
{
    makeFile(tree, u"LISEZMOI"_qs);
    makeFile(tree, u"setup.exe"_qs);
    makeFile(tree, u"Un nom de fichier assez long.txt"_qs);
    makeFile(tree, u"Été 2001/Mes photos.jpg"_qs);
    makeFile(tree, u"JEUX/Casse.exe"_qs);
    makeFile(tree, u".cache/hidden.dat"_qs);
    for (int i = 0; i < 300; ++i)
        makeFile(tree, u"Pilotes/fichier_%1.drv"_qs.arg(i, 3, 10, QLatin1Char('0')));
    QString deep = u"niveau"_qs;
    for (int i = 1; i <= 11; ++i)
        deep += u"/n%1"_qs.arg(i);
    makeFile(tree, deep + u"/fond.bmp"_qs);
    QVERIFY(QFile::link(u"../setup.exe"_qs, tree.filePath(u"JEUX/lien"_qs)));
}

bool tool(const QString &program, const QStringList &arguments)
{
    QString output;
    const bool ok = TestSupport::run(program, arguments, &output);
    if (!ok)
        qWarning("%s: %s", qPrintable(program), qPrintable(output));
    return ok;
}

// Writes the 2048-byte sectors of `iso` as raw 2352-byte CD sectors (sync, header, data, zeros
// for EDC/ECC), in mode 1 or in mode 2 form 1, with a CUE sheet naming the track when `cueMode`
// is given.
bool makeRaw(const QString &iso, const QString &bin, int mode)
{
    const QByteArray data = TestSupport::readFile(iso);
    QByteArray raw;
    raw.reserve(data.size() / 2048 * 2352);
    for (qsizetype at = 0, lba = 0; at < data.size(); at += 2048, ++lba) {
        QByteArray sector(2352, '\0');
        for (int i = 1; i <= 10; ++i)
            sector[i] = char(0xFF);
        const qsizetype address = lba + 150;
        const auto bcd = [](qsizetype v) { return char((v / 10) << 4 | v % 10); };
        sector[12] = bcd(address / 75 / 60);
        sector[13] = bcd(address / 75 % 60);
        sector[14] = bcd(address % 75);
        sector[15] = char(mode);
        const int offset = mode == 1 ? 16 : 24;
        if (mode == 2)
            sector[18] = sector[22] = char(0x08); // form 1 data
        std::memcpy(sector.data() + offset, data.constData() + at, 2048);
        raw += sector;
    }
    return TestSupport::writeFile(bin, raw);
}

bool writeCue(const QString &cue, const QString &bin, const char *mode)
{
    return TestSupport::writeFile(cue, "FILE \"" + QFileInfo(bin).fileName().toUtf8() + "\" BINARY\r\n  TRACK 01 "
                                           + mode + "\r\n    INDEX 01 00:00:00\r\n");
}

} // namespace

class tst_DiscImage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        KALVEX_REQUIRE_PROGRAM(u"genisoimage"_qs);
        KALVEX_REQUIRE_PROGRAM(u"xorriso"_qs);
        QVERIFY(m_work.isValid());
        m_tree = m_work.filePath(u"tree"_qs);
        makeTree(QDir(m_tree));
    }

    void anIsoGivesTheArchiveOfItsExtractedTree_data()
    {
        QTest::addColumn<QStringList>("options"); // genisoimage's, or xorriso's after "xorriso"
        QTest::addColumn<QString>("container");   // iso, or how the ISO's sectors are wrapped

        const QStringList rr{u"-R"_qs, u"-J"_qs};
        QTest::newRow("ISO 9660 names") << QStringList{} << u"iso"_qs;
        QTest::newRow("Joliet") << QStringList{u"-J"_qs} << u"iso"_qs;
        QTest::newRow("Rock Ridge, relocated") << QStringList{u"-R"_qs} << u"iso"_qs;
        QTest::newRow("Rock Ridge and Joliet") << rr << u"iso"_qs;
        QTest::newRow("xorriso") << QStringList{u"xorriso"_qs} << u"iso"_qs;
        QTest::newRow("two sessions") << QStringList{u"xorriso"_qs} << u"multisession"_qs;
        QTest::newRow("BIN/CUE MODE1/2048") << rr << u"MODE1/2048"_qs;
        QTest::newRow("BIN/CUE MODE1/2352") << rr << u"MODE1/2352"_qs;
        QTest::newRow("BIN/CUE MODE2/2352") << rr << u"MODE2/2352"_qs;
        QTest::newRow("raw MDF") << rr << u"mdf"_qs;
    }

    void anIsoGivesTheArchiveOfItsExtractedTree()
    {
        QFETCH(QStringList, options);
        QFETCH(QString, container);
        const QDir work(m_work.path());
        const QString iso = work.filePath(u"disc.iso"_qs);
        QFile::remove(iso);
        if (options.value(0) == u"xorriso"_qs) {
            QVERIFY(tool(u"xorriso"_qs, {u"-as"_qs, u"mkisofs"_qs, u"-R"_qs, u"-J"_qs, u"-o"_qs, iso, m_tree}));
        } else {
            QVERIFY(tool(u"genisoimage"_qs, QStringList{u"-quiet"_qs, u"-input-charset"_qs, u"utf-8"_qs} + options
                                                 + QStringList{u"-o"_qs, iso, m_tree}));
        }
        if (container == u"multisession"_qs) {
            // A second session adds a file and removes one: the last session is the disc.
            const QString added = work.filePath(u"ajout.txt"_qs);
            QVERIFY(TestSupport::writeFile(added, "y"));
            QVERIFY(tool(u"xorriso"_qs, {u"-dev"_qs, iso, u"-map"_qs, added, u"/AJOUT.TXT"_qs, u"-rm"_qs,
                                        u"/LISEZMOI"_qs, u"--"_qs, u"-commit"_qs}));
        }
        QString image = iso;
        if (container.startsWith(u"MODE"_qs) || container == u"mdf"_qs) {
            const QString bin = work.filePath(container == u"mdf"_qs ? u"disc.mdf"_qs : u"disc.bin"_qs);
            const int mode = container.startsWith(u"MODE2"_qs) ? 2 : 1;
            QFile::remove(bin);
            if (container.endsWith(u"2048"_qs))
                QVERIFY(QFile::copy(iso, bin));
            else
                QVERIFY(makeRaw(iso, bin, mode));
            image = bin;
            if (container != u"mdf"_qs) {
                image = work.filePath(u"disc.cue"_qs);
                QVERIFY(writeCue(image, bin, container.toLatin1().constData()));
            }
        }

        const QString extracted = work.filePath(u"extracted-"_qs + QString::number(QTest::currentDataTag()[0]));
        QDir(extracted).removeRecursively();
        QVERIFY(tool(u"xorriso"_qs, {u"-osirrox"_qs, u"on"_qs, u"-indev"_qs, iso, u"-extract"_qs, u"/"_qs, extracted}));
        const Walked expected = walkTree(extracted);
        QVERIFY(expected.count > 300);
        const Walked walked = walkImage(image);
        QVERIFY(!walked.failed);
        QCOMPARE(walked.archive, expected.archive);
        QCOMPARE(DiscImage::probe(image), ImageKind::Cd);
    }

    void aFloppyImageIsDriveA()
    {
        KALVEX_REQUIRE_PROGRAM(u"mkfs.fat"_qs);
        KALVEX_REQUIRE_PROGRAM(u"mcopy"_qs);
        const QDir work(m_work.path());
        const QString image = work.filePath(u"floppy.img"_qs);
        const QDir source(work.filePath(u"floppy"_qs));
        makeFile(source, u"AUTOEXEC.BAT"_qs);
        makeFile(source, u"lisez moi.txt"_qs);
        makeFile(source, u"Jeux/Niveau/carte.dat"_qs);
        for (int i = 0; i < 40; ++i) // more than one cluster of entries
            makeFile(source, u"Jeux/partie numéro %1.sav"_qs.arg(i));
        QVERIFY(tool(u"mkfs.fat"_qs, {u"-C"_qs, image, u"1440"_qs}));
        QVERIFY(tool(u"mcopy"_qs, {u"-s"_qs, u"-i"_qs, image, source.filePath(u"AUTOEXEC.BAT"_qs),
                                  source.filePath(u"lisez moi.txt"_qs), source.filePath(u"Jeux"_qs), u"::"_qs}));
        const QString extracted = work.filePath(u"floppy-out"_qs);
        QVERIFY(QDir().mkpath(extracted));
        QVERIFY(tool(u"mcopy"_qs, {u"-s"_qs, u"-n"_qs, u"-i"_qs, image, u"::/*"_qs, extracted}));

        const Walked expected = walkTree(extracted, u"a:"_qs);
        QCOMPARE(expected.count, 49);
        QCOMPARE(walkImage(image, u"a:"_qs).archive, expected.archive);
        QCOMPARE(DiscImage::probe(image), ImageKind::Floppy);
    }

    void aUdfImageGivesItsTree()
    {
        const QDir work(m_work.path());
        const QString image = work.filePath(u"dvd.iso"_qs);
        const QDir source(work.filePath(u"dvd"_qs));
        makeFile(source, u"VIDEO_TS/VIDEO_TS.IFO"_qs);
        makeFile(source, u"Bonus et making-of/Entretien.txt"_qs);
        QVERIFY(tool(u"genisoimage"_qs, {u"-quiet"_qs, u"-input-charset"_qs, u"utf-8"_qs, u"-udf"_qs, u"-o"_qs, image,
                                        source.path()}));
        QCOMPARE(walkImage(image).archive, walkTree(source.path()).archive);
    }

    void aDamagedImageEndsTheWalk_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<bool>("failed"); // else empty

        QTest::newRow("garbage") << u"garbage"_qs << false;
        QTest::newRow("empty file") << u"empty"_qs << false;
        QTest::newRow("CUE to a missing BIN") << u"missing bin"_qs << false;
        QTest::newRow("truncated") << u"truncated"_qs << true;
        QTest::newRow("directory leading to the root") << u"loop"_qs << true;
        QTest::newRow("directory past the end") << u"past end"_qs << true;
        QTest::newRow("FAT chain looping") << u"fat loop"_qs << true;
    }

    void aDamagedImageEndsTheWalk()
    {
        QFETCH(QString, damage);
        QFETCH(bool, failed);
        const QDir work(m_work.path());
        const QString iso = work.filePath(u"plain.iso"_qs);
        if (!QFile::exists(iso))
            QVERIFY(tool(u"genisoimage"_qs, {u"-quiet"_qs, u"-input-charset"_qs, u"utf-8"_qs, u"-o"_qs, iso, m_tree}));
        QByteArray bytes = TestSupport::readFile(iso);
        const QString image = work.filePath(u"damaged.iso"_qs);
        // The record of directory JEUX in the root (plain names, so the name is "JEUX").
        const auto rootRecord = [&] {
            const qsizetype root = qsizetype(le32(reinterpret_cast<const unsigned char *>(bytes.constData()) + 16 * 2048 + 158)) * 2048;
            return bytes.indexOf("\x04JEUX", root) - 32;
        };
        QString walked = image;
        if (damage == u"garbage"_qs) {
            bytes = QByteArray(300000, char(0x5A));
            bytes.replace(16 * 2048 + 1, 5, "CD001");
        } else if (damage == u"empty"_qs) {
            bytes.clear();
        } else if (damage == u"missing bin"_qs) {
            walked = work.filePath(u"orphan.cue"_qs);
            QVERIFY(writeCue(walked, work.filePath(u"absent.bin"_qs), "MODE1/2352"));
        } else if (damage == u"truncated"_qs) {
            bytes.truncate(bytes.indexOf("\x04JEUX") / 2048 * 2048 + 2048); // the root and no more
        } else if (damage == u"loop"_qs || damage == u"past end"_qs) {
            const qsizetype record = rootRecord();
            QVERIFY(record > 0);
            const quint32 target = damage == u"loop"_qs ? le32(reinterpret_cast<const unsigned char *>(bytes.constData()) + 16 * 2048 + 158)
                                                        : 0x7FFFFFF0u;
            for (int i = 0; i < 4; ++i)
                bytes[record + 2 + i] = char(target >> (8 * i));
        }
        if (damage == u"fat loop"_qs) {
            KALVEX_REQUIRE_PROGRAM(u"mkfs.fat"_qs);
            walked = work.filePath(u"loop.img"_qs);
            QFile::remove(walked);
            QVERIFY(tool(u"mkfs.fat"_qs, {u"-C"_qs, walked, u"1440"_qs}));
            QVERIFY(tool(u"mmd"_qs, {u"-i"_qs, walked, u"::DOS"_qs}));
            bytes = TestSupport::readFile(walked);
            // DOS's first cluster (2) leads to itself: FAT12 entry 2 is the low 12 bits at 3.
            bytes[512 + 3] = char(0x02);
            bytes[512 + 4] = char((bytes[512 + 4] & 0xF0) | 0x00);
            QVERIFY(TestSupport::writeFile(walked, bytes));
        } else if (walked == image) {
            QVERIFY(TestSupport::writeFile(image, bytes));
        }
        const QByteArray before = TestSupport::readFile(walked);
        const Walked result = walkImage(walked);
        QCOMPARE(result.failed, failed);
        if (!failed)
            QCOMPARE(result.count, 0);
        QCOMPARE(TestSupport::readFile(walked), before); // never written to
    }

    void aFolderOfImagesIsPlannedBeforeAnythingIsWritten_data()
    {
        QTest::addColumn<QStringList>("images");   // files of the image folder
        QTest::addColumn<QStringList>("archives"); // files of the archive folder
        QTest::addColumn<QStringList>("names");    // the archives the plan will write, in order
        QTest::addColumn<int>("clashes");

        QTest::newRow("upper-cased, cut to 8, not an image left out")
            << QStringList{u"pcfun75.iso"_qs, u"Disque de jeux.BIN"_qs, u"notes.txt"_qs, u"été.img"_qs}
            << QStringList{} << QStringList{u"DISQUE D"_qs, u"PCFUN75"_qs, u"ÉTÉ"_qs} << 0;
        QTest::newRow("a BIN read through its CUE") << QStringList{u"jeu.bin"_qs, u"jeu.cue"_qs, u"seul.bin"_qs}
                                                    << QStringList{} << QStringList{u"JEU"_qs, u"SEUL"_qs} << 0;
        QTest::newRow("an archive replaced") << QStringList{u"pcmag13.iso"_qs} << QStringList{u"PCMAG13.lst"_qs}
                                             << QStringList{u"PCMAG13"_qs} << 1;
        QTest::newRow("two images, one name") << QStringList{u"collection1.iso"_qs, u"collection2.iso"_qs}
                                              << QStringList{} << QStringList{u"COLLECTI"_qs} << 1;
    }

    void aFolderOfImagesIsPlannedBeforeAnythingIsWritten()
    {
        QFETCH(QStringList, images);
        QFETCH(QStringList, archives);
        QFETCH(QStringList, names);
        QFETCH(int, clashes);
        QTemporaryDir dir;
        const QDir base(dir.path());
        QVERIFY(base.mkdir(u"images"_qs) && base.mkdir(u"archives"_qs));
        for (const QString &file : images)
            QVERIFY(TestSupport::writeFile(base.filePath(u"images/"_qs + file), "x"));
        for (const QString &file : archives)
            QVERIFY(TestSupport::writeFile(base.filePath(u"archives/"_qs + file), "x"));
        const ImageFolder::Plan plan = ImageFolder::plan(base.filePath(u"images"_qs), base.filePath(u"archives"_qs));
        QStringList planned;
        for (const ImageFolder::Image &image : plan.images)
            planned.append(image.archiveName);
        QCOMPARE(planned, names);
        QCOMPARE(plan.clashes.size(), clashes);
    }

    void theSummaryTellsWhatWasWrittenAndWhatWasNot()
    {
        using ImageFolder::Outcome;
        const QString text = ImageFolder::summary(
            {{{u"/i/a.iso"_qs, u"A"_qs}, Outcome::Written, 12},
             {{u"/i/b.iso"_qs, u"B"_qs}, Outcome::Empty, 0},
             {{u"/i/c.iso"_qs, u"C"_qs}, Outcome::Cancelled, 0}},
            {u"d.iso : même nom d'archive que a.iso"_qs});
        QCOMPARE(text, u"1 archive(s) écrite(s) :\nA.lst : a.iso (12 fichiers)\n\n3 image(s) non archivée(s) :\n"
                       u"d.iso : même nom d'archive que a.iso\nb.iso : aucun fichier trouvé\nc.iso : annulé"_qs);
    }

private:
    static quint32 le32(const unsigned char *p) { return p[0] | p[1] << 8 | p[2] << 16 | quint32(p[3]) << 24; }

    QTemporaryDir m_work;
    QString m_tree;
};

QTEST_GUILESS_MAIN(tst_DiscImage)
#include "tst_discimage.moc"
