// The creation window's image button, end to end through the fakes: the chosen image is walked
// as the first CD-ROM drive (a floppy image as a:) and its archive written under the typed name.
#include "createarchiveform.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

using TestSupport::child;

class tst_ImageWindow : public QObject
{
    Q_OBJECT

private slots:
    void theChosenImageIsCataloguedAsItsDrive_data()
    {
        QTest::addColumn<QString>("maker");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("CD image as e:") << u"genisoimage"_qs
                                        << QByteArray("\"e:\\A.TXT\"\r\n\"e:\\SUB\"\r\n\"e:\\SUB\\.\"\r\n"
                                                      "\"e:\\SUB\\..\"\r\n\"e:\\SUB\\B.TXT\"\r\n");
        QTest::newRow("floppy image as a:") << u"mkfs.fat"_qs << QByteArray("\"a:\\A.TXT\"\r\n");
        QTest::newRow("cancelled") << QString() << QByteArray();
    }

    void theChosenImageIsCataloguedAsItsDrive()
    {
        QFETCH(QString, maker);
        QFETCH(QByteArray, expected);
        QTemporaryDir dir;
        const QString image = dir.filePath(u"Disque.ISO"_qs);
        const QDir tree(dir.filePath(u"tree"_qs));
        QVERIFY(tree.mkpath(u"SUB"_qs));
        QVERIFY(TestSupport::writeFile(tree.filePath(u"A.TXT"_qs), "a"));
        if (maker == u"genisoimage"_qs) {
            KALVEX_REQUIRE_PROGRAM(maker);
            QVERIFY(TestSupport::writeFile(tree.filePath(u"SUB/B.TXT"_qs), "b"));
            QVERIFY(TestSupport::run(maker, {u"-quiet"_qs, u"-o"_qs, image, tree.path()}));
        } else if (!maker.isEmpty()) {
            KALVEX_REQUIRE_PROGRAM(maker);
            KALVEX_REQUIRE_PROGRAM(u"mcopy"_qs);
            QVERIFY(TestSupport::run(maker, {u"-C"_qs, image, u"1440"_qs}));
            QVERIFY(TestSupport::run(u"mcopy"_qs, {u"-i"_qs, image, tree.filePath(u"A.TXT"_qs), u"::"_qs}));
        }

        DataDirectory data(dir.filePath(u"data"_qs));
        QVERIFY(QDir().mkpath(data.path()));
        data.startUp();
        FakeServices fakes;
        fakes.drives.list = {{u"c:"_qs, DriveType::Fixed, u"/"_qs}, {u"e:"_qs, DriveType::CdRom, u"/cd"_qs}};
        if (!maker.isEmpty())
            fakes.folderPicker.fileAnswers = {image};
        CreateArchiveForm form(data, fakes.drives, fakes.directoryLister, fakes.dialogs, fakes.folderPicker,
                               fakes.printer, fakes.pictures, fakes.clock);
        form.show();
        QTest::keyClicks(child<QLineEdit>(&form, u"name"_qs), u"image1"_qs);
        QSignalSpy finished(&form, &CreateArchiveForm::scanFinished);
        QTest::mouseClick(child<QToolButton>(&form, u"image"_qs), Qt::LeftButton);
        QVERIFY(fakes.folderPicker.filePatterns.contains(u"*.cue"_qs));
        if (!maker.isEmpty())
            QVERIFY(finished.count() == 1 || finished.wait(10000));
        QCOMPARE(TestSupport::readFile(data.folderPath(data.archiveFolders().value(0)) + u"/IMAGE1.lst"_qs), expected);
        QVERIFY(fakes.directoryLister.listed.isEmpty()); // the system's drives were never read
    }

    // Two images and an archive of the first's name already there: the clash is asked about
    // first; "Non" writes nothing, "Oui" catalogues both and sums up.
    void aFolderOfImagesIsCataloguedAfterItsClashesAreAccepted_data()
    {
        QTest::addColumn<bool>("accepted");
        QTest::newRow("Non") << false;
        QTest::newRow("Oui") << true;
    }

    void aFolderOfImagesIsCataloguedAfterItsClashesAreAccepted()
    {
        KALVEX_REQUIRE_PROGRAM(u"genisoimage"_qs);
        QFETCH(bool, accepted);
        QTemporaryDir dir;
        const QDir base(dir.path());
        QVERIFY(base.mkpath(u"tree"_qs) && base.mkpath(u"images"_qs));
        QVERIFY(TestSupport::writeFile(base.filePath(u"tree/A.TXT"_qs), "a"));
        for (const QString &name : {u"pcfun75.iso"_qs, u"pcmag13.iso"_qs})
            QVERIFY(TestSupport::run(u"genisoimage"_qs, {u"-quiet"_qs, u"-o"_qs, base.filePath(u"images/"_qs + name),
                                                       base.filePath(u"tree"_qs)}));
        DataDirectory data(base.filePath(u"data"_qs));
        QVERIFY(base.mkpath(u"data"_qs));
        data.startUp();
        const QString folder = data.folderPath(data.archiveFolders().value(0));
        QVERIFY(TestSupport::writeFile(folder + u"/PCFUN75.lst"_qs, "old"));
        FakeServices fakes;
        fakes.drives.list = {{u"d:"_qs, DriveType::CdRom, u"/cd"_qs}};
        fakes.folderPicker.answers = {base.filePath(u"images"_qs)};
        fakes.dialogs.answers = {accepted ? Answer::Yes : Answer::No};
        CreateArchiveForm form(data, fakes.drives, fakes.directoryLister, fakes.dialogs, fakes.folderPicker,
                               fakes.printer, fakes.pictures, fakes.clock);
        form.show();
        QSignalSpy done(&form, &CreateArchiveForm::imagesFinished);
        QTest::mouseClick(child<QToolButton>(&form, u"imageFolder"_qs), Qt::LeftButton);
        QCOMPARE(fakes.dialogs.shown.size(), 1);
        QVERIFY(fakes.dialogs.shown[0].text.contains(u"PCFUN75.lst"_qs));
        if (accepted)
            QVERIFY(done.count() == 1 || done.wait(10000));
        QCOMPARE(TestSupport::readFile(folder + u"/PCFUN75.lst"_qs),
                 accepted ? QByteArray("\"d:\\A.TXT\"\r\n") : QByteArray("old"));
        QCOMPARE(QFile::exists(folder + u"/PCMAG13.lst"_qs), accepted);
        if (accepted)
            QVERIFY(fakes.dialogs.messages().value(0).startsWith(u"2 archive(s) écrite(s)"_qs));
    }
};

QTEST_MAIN(tst_ImageWindow)
#include "tst_imagewindow.moc"
