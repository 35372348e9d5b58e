// Found files of archives made from disc images: read out of generated images byte for byte
// (ISO 9660 with Joliet and Rock Ridge, Joliet alone, UDF, a FAT floppy whose file is scattered),
// the list of which archive came from which image, and a found file copied and opened from its
// image while no medium holds it, and no more once the image has moved.
#include "archivefile.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "foundfileactions.h"
#include "foundrow.h"
#include "imagedirectorylister.h"
#include "imagefiles.h"
#include "imagelist.h"
#include "testsupport.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

namespace {

bool tool(const QString &program, const QStringList &arguments)
{
    QString output;
    const bool ok = TestSupport::run(program, arguments, &output);
    if (!ok)
        qWarning("%s: %s", qPrintable(program), qPrintable(output));
    return ok;
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

const QByteArray kSmall = "Lisez-moi d'abord.\r\n";
// Larger than one 64 KiB chunk, and no whole number of sectors or clusters.
const QByteArray kLarge = noise(200 * 1024 + 777, 26);

} // namespace

class tst_ImageFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        KALVEX_REQUIRE_PROGRAM(u"genisoimage"_qs);
        QVERIFY(m_work.isValid());
        const QDir tree(m_work.filePath(u"tree"_qs));
        QVERIFY(tree.mkpath(u"Doc"_qs));
        QVERIFY(tree.mkpath(u"Gros fichiers"_qs));
        QVERIFY(TestSupport::writeFile(tree.filePath(u"Doc/LisezMoi.txt"_qs), kSmall));
        QVERIFY(TestSupport::writeFile(tree.filePath(u"Gros fichiers/Données.bin"_qs), kLarge));
        QVERIFY(TestSupport::writeFile(tree.filePath(u"vide.txt"_qs), {}));
        QVERIFY(TestSupport::writeFile(tree.filePath(u"setup.exe"_qs), QByteArray("MZ") + QByteArray(510, '\0')));
        const QStringList base{u"-quiet"_qs, u"-input-charset"_qs, u"utf-8"_qs, u"-o"_qs};
        QVERIFY(tool(u"genisoimage"_qs, QStringList{u"-J"_qs, u"-R"_qs} + base + QStringList{image(u"rr"_qs)}
                                            + QStringList{tree.path()}));
        QVERIFY(tool(u"genisoimage"_qs, QStringList{u"-J"_qs} + base + QStringList{image(u"joliet"_qs)}
                                            + QStringList{tree.path()}));
        QVERIFY(tool(u"genisoimage"_qs, QStringList{u"-udf"_qs} + base + QStringList{image(u"udf"_qs)}
                                            + QStringList{tree.path()}));
        if (TestSupport::haveProgram(u"mkfs.fat"_qs) && TestSupport::haveProgram(u"mcopy"_qs)) {
            // A small file deleted before the large one is written: the large one's chain fills the
            // hole, then jumps over the file after it.
            const QString fat = image(u"fat"_qs);
            const QString hole = m_work.filePath(u"trou.txt"_qs);
            QVERIFY(TestSupport::writeFile(hole, noise(1500, 1)));
            QVERIFY(tool(u"mkfs.fat"_qs, {u"-C"_qs, fat, u"1440"_qs}));
            QVERIFY(tool(u"mcopy"_qs, {u"-i"_qs, fat, hole, u"::TROU.TXT"_qs}));
            QVERIFY(tool(u"mcopy"_qs, {u"-s"_qs, u"-i"_qs, fat, tree.filePath(u"Doc"_qs), u"::"_qs}));
            QVERIFY(tool(u"mdel"_qs, {u"-i"_qs, fat, u"::TROU.TXT"_qs}));
            QVERIFY(tool(u"mcopy"_qs, {u"-s"_qs, u"-i"_qs, fat, tree.filePath(u"Gros fichiers"_qs), u"::"_qs}));
            QVERIFY(tool(u"mcopy"_qs, {u"-i"_qs, fat, tree.filePath(u"vide.txt"_qs), u"::"_qs}));
        }
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
            // libudf gives "é" as one Latin-1 byte, which the catalogue holds as "?".
            const QString large = kind == u"udf"_qs ? u"d:\\GROS FICHIERS\\DONN?ES.BIN"_qs
                                                    : u"d:\\GROS FICHIERS\\DONNÉES.BIN"_qs;
            QTest::addRow("%s, several chunks, accented", k) << kind << large << kLarge << true;
            QTest::addRow("%s, empty file", k) << kind << u"d:\\VIDE.TXT"_qs << QByteArray() << true;
            QTest::addRow("%s, missing", k) << kind << u"d:\\DOC\\ABSENT.TXT"_qs << QByteArray() << false;
            QTest::addRow("%s, a directory", k) << kind << u"d:\\DOC"_qs << QByteArray() << false;
        }
        QTest::newRow("a dot component") << u"rr"_qs << u"d:\\DOC\\..\\VIDE.TXT"_qs << QByteArray() << false;
        QTest::newRow("cut short") << u"cut"_qs << u"d:\\GROS FICHIERS\\DONNÉES.BIN"_qs << QByteArray() << false;
    }

    void aFileComesOutOfItsImage()
    {
        QFETCH(QString, kind);
        QFETCH(QString, stored);
        QFETCH(QByteArray, expected);
        QFETCH(bool, found);
        if (kind == u"fat"_qs && !QFile::exists(image(kind)))
            QSKIP("mkfs.fat or mtools missing");
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

        QTest::newRow("none") << QByteArray() << QStringList{} << QStringList{u"A="_qs, u"B="_qs};
        QTest::newRow("recorded") << QByteArray() << QStringList{u"+A=/im/a.iso"_qs}
                                  << QStringList{u"A=/im/a.iso"_qs, u"B="_qs};
        QTest::newRow("replaced") << QByteArray() << QStringList{u"+A=/im/a.iso"_qs, u"+B=/im/b.iso"_qs, u"+A=/im/c.iso"_qs}
                                  << QStringList{u"A=/im/c.iso"_qs, u"B=/im/b.iso"_qs};
        QTest::newRow("written again from a drive") << QByteArray() << QStringList{u"+A=/im/a.iso"_qs, u"-A"_qs}
                                                    << QStringList{u"A="_qs};
        QTest::newRow("renamed") << QByteArray() << QStringList{u"+A=/im/a.iso"_qs, u"A>B"_qs}
                                 << QStringList{u"A="_qs, u"B=/im/a.iso"_qs};
        QTest::newRow("garbage") << QByteArray::fromRawData("\x00\xFF\tnot a path\n\n\t/x\nA\n", 21) << QStringList{}
                                 << QStringList{u"A="_qs, u"B="_qs};
        QTest::newRow("garbage, then a record") << QByteArray::fromRawData("\xFF\xFE\x00garbage", 10) << QStringList{u"+B=/im/b.iso"_qs}
                                                << QStringList{u"A="_qs, u"B=/im/b.iso"_qs};
        QTest::newRow("a tab in the image's path") << QByteArray() << QStringList{u"+A=/im/a\t.iso"_qs}
                                                   << QStringList{u"A="_qs};
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
        QVERIFY(QDir(data.path()).mkpath(u"Divers"_qs));
        const QString archive = data.folderPath(u"Divers/PCFUN.lst"_qs);
        QVERIFY(ArchiveFile::write(data.folderPath(u"Divers"_qs), u"PCFUN"_qs,
                                   {"d:\\DOC", "d:\\DOC\\.", "d:\\DOC\\..", "d:\\DOC\\LISEZMOI.TXT"}));
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
        QVERIFY(!copy.startsWith(target.path()));
        QCOMPARE(TestSupport::readFile(copy), kSmall);
        QCOMPARE(QFileInfo(copy).fileName(), u"LISEZMOI.TXT"_qs);

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
};

QTEST_GUILESS_MAIN(tst_ImageFiles)
#include "tst_imagefiles.moc"
