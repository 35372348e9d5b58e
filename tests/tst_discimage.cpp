// Disc images read without mounting: each image, walked by the image lister, gives entry for entry
// the archive of the tree the system shows for it (xorriso's extraction of an ISO, which keeps
// Rock Ridge's relocations at their real place; mtools' of a FAT floppy; the source of a UDF
// image), walked by the real lister. Damaged images end the walk empty or failed, never hanging;
// one deleted during the walk is read to its end, one cut short fails it.
// Found files come out of the images byte for byte, through the list of which archive came from
// which image, while no medium holds them.
#include "datadirectory.h"
#include "fakeservices.h"
#include "filefinder.h"
#include "foundfileactions.h"
#include "foundrow.h"
#include "imagedirectorylister.h"
#include "imagefiles.h"
#include "imagefolder.h"
#include "imagelist.h"
#include "linuxdirectorylister.h"
#include "testsupport.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

using TestSupport::run;

namespace {

struct Walked
{
    QList<QByteArray> entries; // as the archive would hold them
    bool failed = false;
};

Walked walk(const QString &root, DirectoryLister &&lister, const QString &letter = u"d:"_qs)
{
    FakeDrives drives({{letter, DriveType::CdRom, root}});
    FileFinder finder(drives, lister);
    finder.setChemin(letter);
    finder.setCriteres(u"*.*"_qs);
    finder.Rechercher();
    Walked walked{{}, finder.failed()};
    for (int i = 1; i <= finder.count(); ++i)
        walked.entries.append(finder.Lire_Fichiers(i));
    return walked;
}

void makeFile(const QDir &root, const QString &path, const QByteArray &content = "x")
{
    QVERIFY(root.mkpath(QFileInfo(root.filePath(path)).path()));
    QVERIFY(TestSupport::writeFile(root.filePath(path), content));
}

const QStringList kGenisoimage{u"-quiet"_qs, u"-input-charset"_qs, u"utf-8"_qs};

// The 2048-byte sectors of `iso` as raw 2352-byte CD sectors (sync, header, data, zeros for
// EDC/ECC), in mode 1 or in mode 2 form 1.
bool makeRaw(const QString &iso, const QString &bin, int mode)
{
    const QByteArray data = TestSupport::readFile(iso);
    QByteArray raw;
    const auto bcd = [](qsizetype v) { return char((v / 10) << 4 | v % 10); };
    for (qsizetype at = 0, address = 150; at < data.size(); at += 2048, ++address) {
        QByteArray sector(2352, '\0');
        sector.replace(1, 10, QByteArray(10, char(0xFF)));
        sector[12] = bcd(address / 75 / 60);
        sector[13] = bcd(address / 75 % 60);
        sector[14] = bcd(address % 75);
        sector[15] = char(mode);
        if (mode == 2)
            sector[18] = sector[22] = char(0x08); // form 1 data
        sector.replace(mode == 1 ? 16 : 24, 2048, data.mid(at, 2048));
        raw += sector;
    }
    return TestSupport::writeFile(bin, raw);
}

bool writeCue(const QString &cue, const QString &bin, const char *mode)
{
    return TestSupport::writeFile(cue, "FILE \"" + QFileInfo(bin).fileName().toUtf8() + "\" BINARY\r\n  TRACK 01 "
                                           + mode + "\r\n    INDEX 01 00:00:00\r\n");
}

quint32 le32(const QByteArray &bytes, qsizetype at)
{
    return quint8(bytes[at]) | quint8(bytes[at + 1]) << 8 | quint8(bytes[at + 2]) << 16 | quint32(quint8(bytes[at + 3])) << 24;
}

// Bytes no two chunks of which are alike: a chunk read twice or skipped shows.
QByteArray noise(qsizetype size, quint32 seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator random(seed);
    for (qsizetype i = 0; i < size; ++i)
        bytes[i] = char(random.bounded(256));
    return bytes;
}

// The image lister, making `change` before it enters the walk's second sub-directory.
struct ChangedDuringTheWalk final : DirectoryLister
{
    explicit ChangedDuringTheWalk(std::function<void()> change) : change(std::move(change)) {}
    Result open(const QByteArray &path, bool isRoot, DirectoryListing &entries) override
    {
        return lister.open(path, isRoot, entries);
    }
    Result enter(QByteArrayView name, DirectoryListing &entries) override
    {
        if (++entered == 2)
            change();
        return lister.enter(name, entries);
    }
    void leave() override { lister.leave(); }
    void close() override { lister.close(); }

    std::function<void()> change;
    ImageDirectoryLister lister;
    int entered = 0;
};

const QByteArray kSmall = "Lisez-moi d'abord.\r\n";
// Larger than one 64 KiB chunk, and no whole number of sectors or clusters.
const QByteArray kLarge = noise(200 * 1024 + 777, 26);

} // namespace

class tst_DiscImage : public QObject
{
    Q_OBJECT

private slots:
    // A cover disc in small: long and accented names, mixed case, a name without extension, a
    // directory of 300 entries (its records span many sectors), a hidden directory, a link, and a
    // chain eleven levels deep that Rock Ridge relocates.
    void initTestCase()
    {
        KALVEX_REQUIRE_PROGRAM(u"genisoimage"_qs);
        KALVEX_REQUIRE_PROGRAM(u"xorriso"_qs);
        QVERIFY(m_work.isValid());
        const QDir tree(m_tree = m_work.filePath(u"tree"_qs));
        makeFile(tree, u"setup.exe"_qs, QByteArray("MZ") + QByteArray(510, '\0'));
        for (const QString &file : {u"LISEZMOI"_qs, u"Un nom de fichier assez long.txt"_qs,
                                    u"Été 2001/Mes photos.jpg"_qs, u"JEUX/Casse.exe"_qs, u".cache/hidden.dat"_qs,
                                    u"niveau/n1/n2/n3/n4/n5/n6/n7/n8/n9/n10/n11/fond.bmp"_qs})
            makeFile(tree, file);
        for (int i = 0; i < 300; ++i)
            makeFile(tree, u"Pilotes/fichier_%1.drv"_qs.arg(i, 3, 10, QLatin1Char('0')));
        makeFile(tree, u"Doc/LisezMoi.txt"_qs, kSmall);
        makeFile(tree, u"Gros fichiers/Données.bin"_qs, kLarge);
        makeFile(tree, u"vide.txt"_qs, {});
        QVERIFY(QFile::link(u"../setup.exe"_qs, tree.filePath(u"JEUX/lien"_qs)));

        // Images of it: ISO 9660 with Joliet and Rock Ridge, Joliet alone, plain, UDF, and a FAT
        // floppy whose large file is scattered.
        for (const auto &[kind, options] : {std::pair{u"rr"_qs, QStringList{u"-J"_qs, u"-R"_qs}},
                                            {u"joliet"_qs, QStringList{u"-J"_qs}}, {u"plain"_qs, QStringList{}},
                                            {u"udf"_qs, QStringList{u"-udf"_qs}}})
            QVERIFY(run(u"genisoimage"_qs, kGenisoimage + options + QStringList{u"-o"_qs, image(kind), m_tree}));
        // A small file deleted before the large one is written: the large one's chain fills the
        // hole, then jumps over the file after it.
        KALVEX_REQUIRE_PROGRAM(u"mcopy"_qs);
        const QString fat = image(u"fat"_qs), hole = m_work.filePath(u"trou.txt"_qs);
        QVERIFY(TestSupport::writeFile(hole, noise(1500, 1)));
        QVERIFY(run(u"mkfs.fat"_qs, {u"-C"_qs, fat, u"1440"_qs}));
        QVERIFY(run(u"mcopy"_qs, {u"-i"_qs, fat, hole, u"::TROU.TXT"_qs}));
        QVERIFY(run(u"mcopy"_qs, {u"-s"_qs, u"-i"_qs, fat, tree.filePath(u"Doc"_qs), u"::"_qs}));
        QVERIFY(run(u"mdel"_qs, {u"-i"_qs, fat, u"::TROU.TXT"_qs}));
        QVERIFY(run(u"mcopy"_qs, {u"-s"_qs, u"-i"_qs, fat, tree.filePath(u"Gros fichiers"_qs),
                                 tree.filePath(u"vide.txt"_qs), u"::"_qs}));
        // 8.3 names, a long one, and a directory of more than one cluster of entries.
        const QDir floppy(m_work.filePath(u"floppy"_qs));
        for (int i = 0; i < 40; ++i)
            makeFile(floppy, u"Jeux/partie numéro %1.sav"_qs.arg(i));
        makeFile(floppy, u"AUTOEXEC.BAT"_qs);
        makeFile(floppy, u"lisez moi.txt"_qs);
        QVERIFY(run(u"mcopy"_qs, {u"-s"_qs, u"-i"_qs, fat, floppy.filePath(u"AUTOEXEC.BAT"_qs),
                                 floppy.filePath(u"lisez moi.txt"_qs), floppy.filePath(u"Jeux"_qs), u"::"_qs}));
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
        QTest::newRow("two sessions") << QStringList{u"xorriso"_qs} << u"multisession"_qs;
        QTest::newRow("BIN/CUE MODE1/2048") << rr << u"MODE1/2048"_qs;
        QTest::newRow("BIN/CUE MODE1/2352") << rr << u"MODE1/2352"_qs;
        QTest::newRow("BIN/CUE MODE2/2352") << rr << u"MODE2/2352"_qs;
        QTest::newRow("raw MDF") << rr << u"mdf"_qs;
        QTest::newRow("raw MDF, mode 2") << rr << u"mdf2"_qs;
    }

    void anIsoGivesTheArchiveOfItsExtractedTree()
    {
        QFETCH(QStringList, options);
        QFETCH(QString, container);
        const QDir work(m_work.path());
        const QString iso = work.filePath(u"disc.iso"_qs);
        QFile::remove(iso);
        if (options.value(0) == u"xorriso"_qs) {
            QVERIFY(run(u"xorriso"_qs, {u"-as"_qs, u"mkisofs"_qs, u"-R"_qs, u"-J"_qs, u"-o"_qs, iso, m_tree}));
            // A second session adds a file and removes one: the last session is the disc.
            const QString added = work.filePath(u"ajout.txt"_qs);
            QVERIFY(TestSupport::writeFile(added, "y"));
            QVERIFY(run(u"xorriso"_qs, {u"-dev"_qs, iso, u"-map"_qs, added, u"/AJOUT.TXT"_qs, u"-rm"_qs,
                                       u"/LISEZMOI"_qs, u"--"_qs, u"-commit"_qs}));
        } else {
            QVERIFY(run(u"genisoimage"_qs, kGenisoimage + options + QStringList{u"-o"_qs, iso, m_tree}));
        }
        QString image = iso;
        if (container != u"iso"_qs && container != u"multisession"_qs) {
            image = work.filePath(container.startsWith(u"mdf"_qs) ? u"disc.mdf"_qs : u"disc.bin"_qs);
            QFile::remove(image);
            if (container.endsWith(u"2048"_qs))
                QVERIFY(QFile::copy(iso, image));
            else
                QVERIFY(makeRaw(iso, image, container.startsWith(u"MODE2"_qs) || container == u"mdf2"_qs ? 2 : 1));
            if (!container.startsWith(u"mdf"_qs)) {
                const QString bin = image;
                QVERIFY(writeCue(image = work.filePath(u"disc.cue"_qs), bin, container.toLatin1().constData()));
            }
        }

        const QString extracted = work.filePath(u"extracted-"_qs + QString::number(QTest::currentDataTag()[0]));
        QDir(extracted).removeRecursively();
        QVERIFY(run(u"xorriso"_qs, {u"-osirrox"_qs, u"on"_qs, u"-indev"_qs, iso, u"-extract"_qs, u"/"_qs, extracted}));
        const Walked expected = walk(extracted, LinuxDirectoryLister());
        QVERIFY(expected.entries.size() > 300);
        const Walked walked = walk(image, ImageDirectoryLister());
        QVERIFY(!walked.failed);
        QCOMPARE(walked.entries, expected.entries);
        QCOMPARE(DiscImage::probe(image), ImageKind::Cd);
    }

    void aUdfOrFloppyImageGivesItsTree()
    {
        // genisoimage -udf leaves links and deep chains out: a tree of its own.
        const QDir dvd(m_work.filePath(u"dvd"_qs));
        makeFile(dvd, u"VIDEO_TS/VIDEO_TS.IFO"_qs);
        makeFile(dvd, u"Bonus et making-of/Entretien à Noël.txt"_qs); // 8-bit CS0
        makeFile(dvd, u"Œuvres/Été.txt"_qs);                           // 16-bit CS0
        QVERIFY(run(u"genisoimage"_qs, kGenisoimage + QStringList{u"-udf"_qs, u"-o"_qs, image(u"dvd"_qs), dvd.path()}));
        QCOMPARE(walk(image(u"dvd"_qs), ImageDirectoryLister()).entries, walk(dvd.path(), LinuxDirectoryLister()).entries);
        const QString extracted = m_work.filePath(u"floppy-out"_qs);
        QVERIFY(QDir().mkpath(extracted));
        QVERIFY(run(u"mcopy"_qs, {u"-s"_qs, u"-n"_qs, u"-i"_qs, image(u"fat"_qs), u"::/*"_qs, extracted}));
        const Walked expected = walk(extracted, LinuxDirectoryLister(), u"a:"_qs);
        QVERIFY(expected.entries.size() > 50);
        QCOMPARE(walk(image(u"fat"_qs), ImageDirectoryLister(), u"a:"_qs).entries, expected.entries);
        QCOMPARE(DiscImage::probe(image(u"fat"_qs)), ImageKind::Floppy);
    }

    void aDamagedImageEndsTheWalk_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<QString>("outcome"); // failed, empty, or whole: the undamaged image's walk

        QTest::newRow("garbage") << u"garbage"_qs << u"empty"_qs;
        QTest::newRow("empty file") << u"empty"_qs << u"empty"_qs;
        QTest::newRow("CUE to a missing BIN") << u"missing bin"_qs << u"empty"_qs;
        QTest::newRow("truncated") << u"truncated"_qs << u"failed"_qs;
        QTest::newRow("directory leading to the root") << u"loop"_qs << u"failed"_qs;
        QTest::newRow("directory past the end") << u"past end"_qs << u"failed"_qs;
        QTest::newRow("FAT chain looping") << u"fat loop"_qs << u"failed"_qs;
        // The open image is read to its end, as a mounted one would be.
        QTest::newRow("deleted during the walk") << u"deleted"_qs << u"whole"_qs;
        QTest::newRow("truncated during the walk") << u"cut"_qs << u"failed"_qs;
        // A sparse image whose directory JEUX lies past 4 GiB.
        QTest::newRow("4 GB") << u"4 GB"_qs << u"whole"_qs;
    }

    void aDamagedImageEndsTheWalk()
    {
        QFETCH(QString, damage);
        QFETCH(QString, outcome);
        const QDir work(m_work.path());
        QByteArray bytes = TestSupport::readFile(image(u"plain"_qs));
        QString damaged = work.filePath(u"damaged.iso"_qs);
        const quint32 root = le32(bytes, 16 * 2048 + 158);
        const qsizetype rootEnd = bytes.indexOf("\x04JEUX") / 2048 * 2048 + 2048;
        QByteArray moved;                  // JEUX's sector, put at kFar
        constexpr quint32 kFar = 0x200010; // past 4 GiB
        if (damage == u"garbage"_qs) {
            bytes = QByteArray(300000, char(0x5A));
            bytes.replace(16 * 2048 + 1, 5, "CD001");
        } else if (damage == u"empty"_qs) {
            bytes.clear();
        } else if (damage == u"missing bin"_qs) {
            QVERIFY(writeCue(damaged = work.filePath(u"orphan.cue"_qs), work.filePath(u"absent.bin"_qs), "MODE1/2352"));
        } else if (damage == u"truncated"_qs) {
            bytes.truncate(rootEnd); // the root and no more
        } else if (damage == u"fat loop"_qs) {
            KALVEX_REQUIRE_PROGRAM(u"mkfs.fat"_qs);
            QFile::remove(damaged = work.filePath(u"loop.img"_qs));
            QVERIFY(run(u"mkfs.fat"_qs, {u"-C"_qs, damaged, u"1440"_qs}));
            QVERIFY(run(u"mmd"_qs, {u"-i"_qs, damaged, u"::DOS"_qs}));
            bytes = TestSupport::readFile(damaged);
            // DOS's first cluster (2) leads to itself: FAT12 entry 2 is the low 12 bits at 3.
            bytes[512 + 3] = char(0x02);
            bytes[512 + 4] = char(bytes[512 + 4] & 0xF0);
        } else if (damage != u"deleted"_qs && damage != u"cut"_qs) {
            // The extent of directory JEUX's record in the root (plain names: "JEUX").
            const qsizetype record = bytes.indexOf("\x04JEUX", qsizetype(root) * 2048) - 32;
            QVERIFY(record > 0);
            const quint32 target = damage == u"loop"_qs ? root : damage == u"4 GB"_qs ? kFar : 0x7FFFFFF0u;
            if (damage == u"4 GB"_qs)
                moved = bytes.mid(qsizetype(le32(bytes, record + 2)) * 2048, 2048);
            for (int i = 0; i < 4; ++i)
                bytes[record + 2 + i] = char(target >> (8 * i));
        }
        if (!damaged.endsWith(u".cue"_qs))
            QVERIFY(TestSupport::writeFile(damaged, bytes));
        if (!moved.isEmpty()) {
            QFile file(damaged);
            QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(qint64(kFar) * 2048) && file.write(moved) == moved.size());
        }
        const bool changes = damage == u"deleted"_qs || damage == u"cut"_qs;
        const QByteArray before = changes || !moved.isEmpty() ? QByteArray() : TestSupport::readFile(damaged);
        const auto change = [&] {
            if (damage == u"deleted"_qs)
                QFile::remove(damaged);
            else if (damage == u"cut"_qs)
                QFile::resize(damaged, rootEnd);
        };
        const Walked result = walk(damaged, ChangedDuringTheWalk(change));
        QCOMPARE(result.failed, outcome == u"failed"_qs);
        if (outcome == u"empty"_qs)
            QVERIFY(result.entries.isEmpty());
        if (outcome == u"whole"_qs)
            QCOMPARE(result.entries, walk(image(u"plain"_qs), ImageDirectoryLister()).entries);
        if (!before.isEmpty())
            QCOMPARE(TestSupport::readFile(damaged), before); // never written to
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

    void aFileComesOutOfItsImage_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QByteArray>("expected");
        QTest::addColumn<bool>("found");

        for (const QString &kind : {u"rr"_qs, u"joliet"_qs, u"udf"_qs, u"fat"_qs}) {
            const QByteArray name = kind.toUtf8();
            const char *k = name.constData();
            QTest::addRow("%s, name in another case", k) << kind << u"d:\\DOC\\LISEZMOI.TXT"_qs << kSmall << true;
            QTest::addRow("%s, several chunks, accented", k) << kind << u"d:\\GROS FICHIERS\\DONNÉES.BIN"_qs << kLarge
                                                             << true;
            QTest::addRow("%s, empty file", k) << kind << u"d:\\VIDE.TXT"_qs << QByteArray() << true;
        }
        QTest::newRow("missing") << u"joliet"_qs << u"d:\\DOC\\ABSENT.TXT"_qs << QByteArray() << false;
        QTest::newRow("a directory") << u"fat"_qs << u"d:\\DOC"_qs << QByteArray() << false;
        QTest::newRow("a dot component") << u"rr"_qs << u"d:\\DOC\\..\\VIDE.TXT"_qs << QByteArray() << false;
        QTest::newRow("cut short") << u"cut"_qs << u"d:\\GROS FICHIERS\\DONNÉES.BIN"_qs << QByteArray() << false;
    }

    void aFileComesOutOfItsImage()
    {
        QFETCH(QString, kind);
        QFETCH(QString, stored);
        QFETCH(QByteArray, expected);
        QFETCH(bool, found);
        if (kind == u"cut"_qs) { // the large file's data lies past the image's end
            const QByteArray whole = TestSupport::readFile(image(u"rr"_qs));
            QVERIFY(TestSupport::writeFile(image(kind), whole.first(whole.indexOf(kLarge.first(4096)) + 4096)));
        }
        QBuffer out;
        out.open(QIODevice::WriteOnly);
        QCOMPARE(DiscImage::copyFile(image(kind), stored, out), found);
        if (found)
            QCOMPARE(out.data(), expected);
    }

    void theListKnowsEachArchivesImage_data()
    {
        QTest::addColumn<QByteArray>("before"); // the list file's bytes; null for none
        QTest::addColumn<QStringList>("steps");   // "+A=IMAGE" record, "-A" forget, "A>B" rename
        QTest::addColumn<QStringList>("expected"); // "A=IMAGE" for each archive asked about

        const QByteArray none;
        const QString a = u"+A=/im/a.iso"_qs, b = u"+B=/im/b.iso"_qs;
        QTest::newRow("recorded") << none << QStringList{a} << QStringList{u"A=/im/a.iso"_qs, u"B="_qs};
        QTest::newRow("replaced") << none << QStringList{a, b, u"+A=/im/c.iso"_qs}
                                  << QStringList{u"A=/im/c.iso"_qs, u"B=/im/b.iso"_qs};
        QTest::newRow("written again from a drive") << none << QStringList{a, u"-A"_qs} << QStringList{u"A="_qs};
        QTest::newRow("renamed") << none << QStringList{a, u"A>B"_qs} << QStringList{u"A="_qs, u"B=/im/a.iso"_qs};
        QTest::newRow("garbage") << QByteArray::fromRawData("\x00\xFF\tnot a path\n\n\t/x\nA\n", 21) << QStringList{}
                                 << QStringList{u"A="_qs, u"B="_qs};
        QTest::newRow("garbage, then a record") << QByteArray::fromRawData("\xFF\xFE\x00garbage", 10) << QStringList{b}
                                                << QStringList{u"A="_qs, u"B=/im/b.iso"_qs};
        QTest::newRow("a tab in the image's path") << none << QStringList{u"+A=/im/a\t.iso"_qs} << QStringList{u"A="_qs};
    }

    void theListKnowsEachArchivesImage()
    {
        QFETCH(QByteArray, before);
        QFETCH(QStringList, steps);
        QFETCH(QStringList, expected);
        QTemporaryDir directory;
        const DataDirectory data(directory.path());
        if (!before.isNull())
            QVERIFY(TestSupport::writeFile(data.file(ImageList::fileName()), before));
        const auto archive = [&](const QString &name) { return data.folderPath(u"Divers/"_qs + name + u".lst"_qs); };
        ImageList list(data);
        for (const QString &step : std::as_const(steps)) {
            if (step.startsWith(u'+'))
                QVERIFY(list.record(archive(step.sliced(1, 1)), step.sliced(3)) != step.contains(u'\t'));
            else if (step.startsWith(u'-'))
                QVERIFY(list.forget(archive(step.sliced(1))));
            else
                QVERIFY(list.rename(archive(step.first(1)), archive(step.sliced(2))));
        }
        for (const QString &pair : std::as_const(expected))
            QCOMPARE(ImageList(data).imageOf(archive(pair.first(1))), pair.sliced(2));
        if (steps == QStringList{u"+A=/im/a.iso"_qs}) // kept relative: the data directory may move
            QCOMPARE(TestSupport::readFile(data.file(ImageList::fileName())), QByteArray("Divers/A.lst\t/im/a.iso\n"));
    }

    // A found file of an archive made from an image, with no medium mounted: copied into a folder
    // and opened by its program from the run's copy; programs are not started; once the image has
    // moved, nothing happens; the copies go with the service.
    void aFoundFileIsActedOnOutOfItsImage()
    {
        QTemporaryDir directory, target;
        const DataDirectory data(directory.path());
        const QString archive = data.folderPath(u"Divers/PCFUN.lst"_qs); // the list alone ties it to its image
        const QString iso = m_work.filePath(u"pcfun.iso"_qs);
        QVERIFY(QFile::copy(image(u"rr"_qs), iso));
        QVERIFY(ImageList(data).record(archive, iso));

        FakeServices services;
        services.drives.list = {{u"c:"_qs, DriveType::Fixed, u"/"_qs}};
        services.dialogs.answers = {Answer::Yes, Answer::Yes};
        auto images = std::make_unique<ImageFiles>(data);
        FoundFileActions actions{{services.launcher, services.drives, services.dialogs, services.folderPicker,
                                  services.pictures, services.media, images.get()}};
        const QStringList table{u"TXT         &4/usr/bin/editor"_qs, u"EXE         &4/usr/bin/never"_qs};
        FoundRow row;
        row.choose(u"d:\\DOC\\LISEZMOI.TXT"_qs, u"PCFUN"_qs, archive);

        actions.copyInto(row, target.path());
        QCOMPARE(TestSupport::readFile(target.filePath(u"LISEZMOI.TXT"_qs)), kSmall);
        actions.act(row, table);
        QCOMPARE(services.launcher.programs.size(), 1);
        const QString copy = services.launcher.programs[0].value(1);
        QCOMPARE(services.launcher.programs[0][0], u"/usr/bin/editor"_qs);
        QVERIFY(!copy.startsWith(target.path()) && copy.endsWith(u"/LISEZMOI.TXT"_qs));
        QCOMPARE(TestSupport::readFile(copy), kSmall);

        FoundRow program;
        program.choose(u"d:\\SETUP.EXE"_qs, u"PCFUN"_qs, archive);
        actions.act(program, table);
        QVERIFY(services.launcher.windowsFiles.isEmpty() && services.launcher.dosPrograms.isEmpty());

        QVERIFY(QFile::rename(iso, iso + u".moved"_qs));
        QVERIFY(QFile::remove(target.filePath(u"LISEZMOI.TXT"_qs)));
        actions.copyInto(row, target.path());
        actions.act(row, table);
        QVERIFY(!QFile::exists(target.filePath(u"LISEZMOI.TXT"_qs)));
        QCOMPARE(services.launcher.programs.size(), 1);

        images.reset();
        QVERIFY(!QFile::exists(copy));
    }

private:
    QString image(const QString &kind) const { return m_work.filePath(kind + u".img"_qs); }

    QTemporaryDir m_work;
    QString m_tree;
};

QTEST_GUILESS_MAIN(tst_DiscImage)
#include "tst_discimage.moc"
