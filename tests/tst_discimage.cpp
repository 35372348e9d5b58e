// Disc images read without mounting: each gives entry for entry the archive the real lister gives
// of its tree as the system shows it (xorriso's or mtools' extraction, or the source). Damaged
// images end the walk empty or failed, never hanging. Found files come out of the images byte for
// byte, through the list of which archive came from which image.
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
#include <QtEndian>

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

// The 2048-byte sectors of `iso` as they are (mode 0), or as raw 2352-byte CD sectors (sync,
// header, data, zeros for EDC/ECC) in mode 1 or in mode 2 form 1.
bool makeRaw(const QString &iso, const QString &bin, int mode)
{
    const QByteArray data = TestSupport::readFile(iso);
    QByteArray raw = mode == 0 ? data : QByteArray();
    for (qsizetype at = 0, address = 150; mode != 0 && at < data.size(); at += 2048, ++address) {
        QByteArray sector(2352, '\0');
        sector.replace(1, 10, QByteArray(10, char(0xFF)));
        const qsizetype msf[] = {address / 75 / 60, address / 75 % 60, address % 75};
        for (int i = 0; i < 3; ++i)
            sector[12 + i] = char((msf[i] / 10) << 4 | msf[i] % 10); // BCD
        sector[15] = char(mode);
        if (mode == 2)
            sector[18] = sector[22] = char(0x08); // form 1 data
        sector.replace(mode == 1 ? 16 : 24, 2048, data.mid(at, 2048));
        raw += sector;
    }
    return TestSupport::writeFile(bin, raw);
}

// The CUE sheet of `bin`, beside it; empty when it cannot be written.
QString cueOf(const QString &bin, const QString &mode)
{
    const QString cue = bin.chopped(3) + u"cue"_qs;
    return TestSupport::writeFile(cue, "FILE \"" + QFileInfo(bin).fileName().toUtf8() + "\" BINARY\r\n  TRACK 01 "
                                           + mode.toLatin1() + "\r\n    INDEX 01 00:00:00\r\n") ? cue : QString();
}

// Bytes no two chunks of which are alike: a chunk read twice or skipped shows.
QByteArray noise(qsizetype size, quint32 seed)
{
    QList<quint32> words(size / 4 + 1);
    QRandomGenerator(seed).fillRange(words.data(), words.size());
    return QByteArray(reinterpret_cast<const char *>(words.constData()), size);
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
        // hole, then jumps over the file after it. Then 8.3 names, a long one, and a directory of
        // more than one cluster of entries.
        KALVEX_REQUIRE_PROGRAM(u"mcopy"_qs);
        const QDir floppy(m_work.filePath(u"floppy"_qs));
        for (int i = 0; i < 40; ++i)
            makeFile(floppy, u"Jeux/partie numéro %1.sav"_qs.arg(i));
        makeFile(floppy, u"AUTOEXEC.BAT"_qs);
        makeFile(floppy, u"lisez moi.txt"_qs);
        const QString fat = image(u"fat"_qs), hole = m_work.filePath(u"trou.txt"_qs);
        QVERIFY(TestSupport::writeFile(hole, noise(1500, 1)));
        QVERIFY(run(u"mkfs.fat"_qs, {u"-C"_qs, fat, u"1440"_qs}));
        QVERIFY(run(u"mcopy"_qs, {u"-i"_qs, fat, hole, u"::TROU.TXT"_qs}));
        QVERIFY(run(u"mcopy"_qs, {u"-s"_qs, u"-i"_qs, fat, tree.filePath(u"Doc"_qs), u"::"_qs}));
        QVERIFY(run(u"mdel"_qs, {u"-i"_qs, fat, u"::TROU.TXT"_qs}));
        QVERIFY(run(u"mcopy"_qs, {u"-s"_qs, u"-i"_qs, fat, tree.filePath(u"Gros fichiers"_qs), tree.filePath(u"vide.txt"_qs),
                                 floppy.filePath(u"AUTOEXEC.BAT"_qs), floppy.filePath(u"lisez moi.txt"_qs),
                                 floppy.filePath(u"Jeux"_qs), u"::"_qs}));
    }

    void anImageGivesTheArchiveOfItsExtractedTree_data()
    {
        QTest::addColumn<QStringList>("options"); // genisoimage's, or xorriso's after "xorriso"
        QTest::addColumn<QString>("container");   // iso, how the ISO's sectors are wrapped, udf or fat

        const QStringList rr{u"-R"_qs, u"-J"_qs};
        QTest::newRow("ISO 9660 names") << QStringList{} << u"iso"_qs;
        QTest::newRow("Joliet") << QStringList{u"-J"_qs} << u"iso"_qs;
        QTest::newRow("Rock Ridge, relocated") << QStringList{u"-R"_qs} << u"iso"_qs;
        QTest::newRow("Rock Ridge and Joliet") << rr << u"iso"_qs;
        QTest::newRow("two sessions") << QStringList{u"xorriso"_qs} << u"iso"_qs;
        QTest::newRow("BIN/CUE MODE1/2048") << rr << u"MODE1/2048"_qs;
        QTest::newRow("BIN/CUE MODE1/2352") << rr << u"MODE1/2352"_qs;
        QTest::newRow("BIN/CUE MODE2/2352") << rr << u"MODE2/2352"_qs;
        QTest::newRow("raw MDF") << rr << u"mdf"_qs;
        QTest::newRow("raw MDF, mode 2") << rr << u"mdf MODE2"_qs;
        QTest::newRow("UDF") << QStringList{u"-udf"_qs} << u"udf"_qs;
        QTest::newRow("FAT floppy") << QStringList{} << u"fat"_qs;
    }

    void anImageGivesTheArchiveOfItsExtractedTree()
    {
        QFETCH(QStringList, options);
        QFETCH(QString, container);
        const QDir work(m_work.path());
        const QString iso = work.filePath(u"disc.iso"_qs), extracted = work.filePath(u"extracted"_qs);
        const bool fat = container == u"fat"_qs, udf = container == u"udf"_qs;
        QString image = iso;
        QFile::remove(iso);
        QDir(extracted).removeRecursively();
        if (udf) { // genisoimage -udf leaves links and deep chains out: a tree of its own
            for (const QString &file : {u"VIDEO_TS/VIDEO_TS.IFO"_qs, u"Bonus et making-of/Entretien à Noël.txt"_qs,
                                        u"Œuvres/Été.txt"_qs}) // CS0 names of 8 and 16 bits
                makeFile(QDir(extracted), file);
            QVERIFY(run(u"genisoimage"_qs, kGenisoimage + options + QStringList{u"-o"_qs, iso, extracted}));
        } else if (fat) {
            QVERIFY(QDir().mkpath(extracted));
            QVERIFY(run(u"mcopy"_qs, {u"-s"_qs, u"-n"_qs, u"-i"_qs, image = this->image(u"fat"_qs), u"::/*"_qs, extracted}));
        } else if (options.value(0) == u"xorriso"_qs) {
            QVERIFY(run(u"xorriso"_qs, {u"-as"_qs, u"mkisofs"_qs, u"-R"_qs, u"-J"_qs, u"-o"_qs, iso, m_tree}));
            // A second session adds a file and removes one: the last session is the disc.
            const QString added = work.filePath(u"ajout.txt"_qs);
            QVERIFY(TestSupport::writeFile(added, "y"));
            QVERIFY(run(u"xorriso"_qs, {u"-dev"_qs, iso, u"-map"_qs, added, u"/AJOUT.TXT"_qs, u"-rm"_qs,
                                       u"/LISEZMOI"_qs, u"--"_qs, u"-commit"_qs}));
        } else {
            QVERIFY(run(u"genisoimage"_qs, kGenisoimage + options + QStringList{u"-o"_qs, iso, m_tree}));
        }
        if (container.startsWith(u"MODE"_qs) || container.startsWith(u"mdf"_qs)) {
            const bool mdf = container.startsWith(u"mdf"_qs);
            QVERIFY(makeRaw(iso, image = work.filePath(mdf ? u"disc.mdf"_qs : u"disc.bin"_qs),
                            container.endsWith(u"2048"_qs) ? 0 : container.contains(u"MODE2"_qs) ? 2 : 1));
            if (!mdf)
                QVERIFY(!(image = cueOf(image, container)).isEmpty());
        }
        if (!fat && !udf)
            QVERIFY(run(u"xorriso"_qs, {u"-osirrox"_qs, u"on"_qs, u"-indev"_qs, iso, u"-extract"_qs, u"/"_qs, extracted}));
        const QString letter = fat ? u"a:"_qs : u"d:"_qs;
        const Walked expected = walk(extracted, LinuxDirectoryLister(), letter);
        QVERIFY(expected.entries.size() > 5);
        const Walked walked = walk(image, ImageDirectoryLister(), letter);
        QVERIFY(!walked.failed);
        QCOMPARE(walked.entries, expected.entries);
        QCOMPARE(DiscImage::probe(image), fat ? ImageKind::Floppy : ImageKind::Cd);
    }

    void aDamagedImageEndsTheWalk_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<QString>("outcome"); // failed, empty, or whole: the undamaged image's walk

        QTest::newRow("garbage") << u"garbage"_qs << u"empty"_qs;
        QTest::newRow("empty file") << u"empty"_qs << u"empty"_qs;
        QTest::newRow("CUE to a missing BIN") << u"missing bin"_qs << u"empty"_qs;
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
        const quint32 root = qFromLittleEndian<quint32>(bytes.constData() + 16 * 2048 + 158);
        // Directory JEUX's record in the root (plain names), and the end of the root's sector.
        const qsizetype record = bytes.indexOf("\x04JEUX", qsizetype(root) * 2048) - 32;
        const qsizetype rootEnd = record / 2048 * 2048 + 2048;
        constexpr quint32 kFar = 0x200010; // a sector past 4 GiB, where JEUX's sector is moved
        const QByteArray moved = damage != u"4 GB"_qs ? QByteArray()
                                 : bytes.mid(qFromLittleEndian<quint32>(bytes.constData() + record + 2) * qsizetype(2048), 2048);
        QVERIFY(record > 0);
        if (damage == u"garbage"_qs) {
            bytes = QByteArray(300000, char(0x5A));
            bytes.replace(16 * 2048 + 1, 5, "CD001");
        } else if (damage == u"empty"_qs) {
            bytes.clear();
        } else if (damage == u"missing bin"_qs) {
            QVERIFY(!(damaged = cueOf(work.filePath(u"absent.bin"_qs), u"MODE1/2352"_qs)).isEmpty());
        } else if (damage == u"fat loop"_qs) {
            QVERIFY(run(u"mkfs.fat"_qs, {u"-C"_qs, damaged = work.filePath(u"loop.img"_qs), u"1440"_qs}));
            QVERIFY(run(u"mmd"_qs, {u"-i"_qs, damaged, u"::DOS"_qs}));
            bytes = TestSupport::readFile(damaged);
            // DOS's first cluster (2) leads to itself: FAT12 entry 2 is the low 12 bits at 3.
            bytes[512 + 3] = char(0x02);
            bytes[512 + 4] = char(bytes[512 + 4] & 0xF0);
        } else if (damage != u"deleted"_qs && damage != u"cut"_qs) {
            const quint32 target = damage == u"loop"_qs ? root : moved.isEmpty() ? 0x7FFFFFF0u : kFar;
            qToLittleEndian(target, bytes.data() + record + 2);
        }
        if (!damaged.endsWith(u".cue"_qs))
            QVERIFY(TestSupport::writeFile(damaged, bytes));
        if (!moved.isEmpty()) {
            QFile file(damaged);
            QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(qint64(kFar) * 2048) && file.write(moved) == moved.size());
        }
        const Walked result = walk(damaged, ChangedDuringTheWalk([&] {
            if (damage == u"deleted"_qs)
                QFile::remove(damaged);
            else if (damage == u"cut"_qs)
                QFile::resize(damaged, rootEnd);
        }));
        QCOMPARE(result.failed, outcome == u"failed"_qs);
        if (!result.failed)
            QCOMPARE(result.entries, outcome == u"whole"_qs ? walk(image(u"plain"_qs), ImageDirectoryLister()).entries
                                                            : QList<QByteArray>());
    }

    void aFolderOfImagesIsPlannedBeforeAnythingIsWritten_data()
    {
        QTest::addColumn<QStringList>("files"); // of the folders "images" and "archives"
        QTest::addColumn<QStringList>("names"); // the archives the plan will write, in order
        QTest::addColumn<int>("clashes");

        QTest::newRow("upper-cased, cut to 8, not an image left out")
            << QStringList{u"images/pcfun75.iso"_qs, u"images/Disque de jeux.BIN"_qs, u"images/notes.txt"_qs,
                           u"images/été.img"_qs}
            << QStringList{u"DISQUE D"_qs, u"PCFUN75"_qs, u"ÉTÉ"_qs} << 0;
        QTest::newRow("a BIN read through its CUE")
            << QStringList{u"images/jeu.bin"_qs, u"images/jeu.cue"_qs, u"images/seul.bin"_qs}
            << QStringList{u"JEU"_qs, u"SEUL"_qs} << 0;
        QTest::newRow("an archive replaced") << QStringList{u"images/pcmag13.iso"_qs, u"archives/PCMAG13.lst"_qs}
                                             << QStringList{u"PCMAG13"_qs} << 1;
        QTest::newRow("two images, one name") << QStringList{u"images/collection1.iso"_qs, u"images/collection2.iso"_qs}
                                              << QStringList{u"COLLECTI"_qs} << 1;
    }

    void aFolderOfImagesIsPlannedBeforeAnythingIsWritten()
    {
        QFETCH(QStringList, files);
        QFETCH(QStringList, names);
        QFETCH(int, clashes);
        QTemporaryDir dir;
        const QDir base(dir.path());
        for (const QString &file : files)
            makeFile(base, file);
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
        QTemporaryDir directory, target, moved;
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
        FoundRow row, program;
        row.choose(u"d:\\DOC\\LISEZMOI.TXT"_qs, u"PCFUN"_qs, archive);
        program.choose(u"d:\\SETUP.EXE"_qs, u"PCFUN"_qs, archive);

        actions.copyInto(row, target.path());
        QCOMPARE(TestSupport::readFile(target.filePath(u"LISEZMOI.TXT"_qs)), kSmall);
        actions.act(row, table);
        actions.act(program, table);
        const QString copy = services.launcher.programs.value(0).value(1);
        QCOMPARE(services.launcher.programs.value(0).value(0), u"/usr/bin/editor"_qs);
        QVERIFY(!copy.startsWith(target.path()) && copy.endsWith(u"/LISEZMOI.TXT"_qs));
        QCOMPARE(TestSupport::readFile(copy), kSmall);
        QVERIFY(services.launcher.windowsFiles.isEmpty() && services.launcher.dosPrograms.isEmpty());

        QVERIFY(QFile::rename(iso, iso + u".moved"_qs));
        actions.copyInto(row, moved.path());
        actions.act(row, table);
        QVERIFY(QDir(moved.path()).isEmpty());
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
