// The creation window's wiring through the fakes: the name and drive rules are the capture core's,
// the walk the file finder's, the images' reading the image lister's.
#include "createarchiveform.h"
#include "datadirectory.h"
#include "fakemediamounter.h"
#include "fakeservices.h"
#include "gate.h"
#include "testsupport.h"

#include <QAbstractItemModelTester>
#include <QAccessible>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

using TestSupport::child;

namespace {

const QString kHint = u"Choisissez ci-dessous le lecteur où se trouve le support que vous souhaitez archiver : "
                      u"a ,b ,d ,f ,g ,...la lettre du premier lecteur CD-ROM rencontré est : "_qs;

// A data directory with its default folders and a window over fakes, a CD-ROM in e:.
struct Fixture
{
    Fixture()
        : data(dir.path())
    {
        TestSupport::copyProgramFiles(dir.path());
        data.startUp();
        fakes.drives.list = {{u"c:"_qs, DriveType::Fixed, u"/"_qs},
                             {u"d:"_qs, DriveType::Fixed, u"/data"_qs},
                             {u"e:"_qs, DriveType::CdRom, u"/cd"_qs}};
        fakes.directoryLister.set("/cd/", {{"A.TXT"}, {"SUB", true}});
        fakes.directoryLister.set("/cd/SUB/", {{"B.TXT"}});
    }

    CreateArchiveForm &window()
    {
        if (!form) {
            form = std::make_unique<CreateArchiveForm>(data, fakes.drives, fakes.directoryLister, fakes.dialogs,
                                                       fakes.folderPicker, fakes.printer, fakes.pictures, fakes.clock);
            form->show();
        }
        return *form;
    }
    QString text(const QString &label) { return child<QLabel>(&window(), label)->text(); }
    bool noticeShown() { return child<QLabel>(&window(), u"endNotice"_qs)->isVisible(); }
    int foundRows() { return child<QListView>(&window(), u"found"_qs)->model()->rowCount(); }
    QStringList items(const QString &list)
    {
        QStringList out;
        for (const QListWidgetItem *item : child<QListWidget>(&window(), list)->findItems(u"*"_qs, Qt::MatchWildcard))
            out.append(item->text());
        return out;
    }
    // Types the name and clicks `button`; without `finished`, waits for the scan it starts.
    void press(const QString &name, QSignalSpy *finished = nullptr, const QString &button = u"create"_qs)
    {
        QLineEdit *box = child<QLineEdit>(&window(), u"name"_qs);
        box->clear();
        QTest::keyClicks(box, name);
        QSignalSpy own(&window(), &CreateArchiveForm::scanFinished);
        QTest::mouseClick(child<QToolButton>(&window(), button), Qt::LeftButton);
        if (!finished && window().isScanning())
            QVERIFY(own.wait(10000));
    }
    QString archive(const QString &folder, const QString &file) { return data.folderPath(folder) + u'/' + file; }
    QStringList filesIn(const QString &folder)
    {
        return QDir(data.folderPath(folder)).entryList(QDir::Files | QDir::Hidden);
    }

    QTemporaryDir dir;
    DataDirectory data;
    FakeServices fakes;
    std::unique_ptr<CreateArchiveForm> form;
};

const QByteArray kWholeCd = "\"e:\\A.TXT\"\r\n\"e:\\SUB\"\r\n\"e:\\SUB\\.\"\r\n\"e:\\SUB\\..\"\r\n\"e:\\SUB\\B.TXT\"\r\n";

} // namespace

class tst_CreateArchiveForm : public QObject
{
    Q_OBJECT

private slots:
    void opensOnTheFirstCdRomWithEveryControlNamed()
    {
        Fixture f;
        QVERIFY(TestSupport::writeFile(f.archive(u"Divers"_qs, u"PCMAG13.lst"_qs), "\"e:\\X\"\r\n"));
        const QList<QPair<QString, QString>> labels = {
            {u"heading"_qs, u"Création du fichier d'archives."_qs}, {u"driveHint"_qs, kHint + u"e"_qs},
            {u"driveChooserDetails"_qs, u"/cd"_qs}, {u"counter"_qs, u"0 fichiers trouvés"_qs},
            {u"endNotice"_qs, u"L'archivage est terminé"_qs}};
        for (const auto &[name, text] : labels)
            QCOMPARE(f.text(name), text);
        QCOMPARE(child<QComboBox>(&f.window(), u"driveChooser"_qs)->currentText(), u"e:"_qs);
        QCOMPARE(f.items(u"folders"_qs), f.data.archiveFolders());
        QCOMPARE(f.items(u"archives"_qs), QStringList{u"PCMAG13.lst"_qs});
        QCOMPARE(child<QToolButton>(&f.window(), u"create"_qs)->toolTip(), u"Créer un fichier d'archive"_qs);
        QCOMPARE(f.fakes.pictures.icons.first(2), (QStringList{f.data.file(u"File005.ico"_qs), f.data.file(u"inkjet.ico"_qs)}));
        QVERIFY(!f.noticeShown());
        for (QWidget *control : f.window().findChildren<QWidget *>()) {
            if (control->focusPolicy() != Qt::NoFocus && control->isVisible() && control->window() == &f.window()
                && !control->parentWidget()->inherits("QAbstractScrollArea"))
                QVERIFY2(!QAccessible::queryAccessibleInterface(control)->text(QAccessible::Name).isEmpty(),
                         qPrintable(control->objectName()));
        }

        // Without a CD-ROM drive the hint has no letter and the chooser is on the data's drive.
        Fixture g;
        g.fakes.drives.list = {{u"c:"_qs, DriveType::Fixed, u"/"_qs}, {u"d:"_qs, DriveType::Fixed, g.dir.path()}};
        QCOMPARE(g.text(u"driveHint"_qs), kHint);
        QCOMPARE(child<QComboBox>(&g.window(), u"driveChooser"_qs)->currentText(), u"d:"_qs);
    }

    // Drives come and go while the window is open: the chooser follows and the choice stays.
    void theChooserFollowsTheDrives()
    {
        Fixture f;
        QComboBox *chooser = child<QComboBox>(&f.window(), u"driveChooser"_qs);
        const QList<Drive> before = f.fakes.drives.list;
        f.fakes.drives.replace(before + QList<Drive>{{u"f:"_qs, DriveType::Fixed, u"/media/anne/CLE"_qs, u"CLE"_qs,
                                                      u"/dev/sdb1"_qs}});
        QCOMPARE(chooser->currentText(), u"e:"_qs);
        chooser->setCurrentText(u"f:"_qs);
        QCOMPARE(f.text(u"driveChooserDetails"_qs), u"[CLE]  /media/anne/CLE"_qs);
        f.fakes.drives.replace(before); // the stick is pulled out
        QCOMPARE(chooser->count(), 3);
        QCOMPARE(f.text(u"driveChooserDetails"_qs), driveDescription(before.value(chooser->currentIndex())));
    }

    // A scan writes the archive and prints its list; a refusal then clears the list and starts nothing.
    void aScanWritesTheArchiveARefusalStartsNone()
    {
        Fixture f;
        f.press(u"pcfun75x"_qs);
        QCOMPARE(child<QLineEdit>(&f.window(), u"name"_qs)->text(), u"PCFUN75X"_qs);
        QCOMPARE(TestSupport::readFile(f.archive(u"Divers"_qs, u"PCFUN75X.lst"_qs)), kWholeCd);
        QCOMPARE(f.text(u"counter"_qs), u"5 fichiers trouvés"_qs);
        QCOMPARE(f.items(u"archives"_qs), QStringList{u"PCFUN75X.lst"_qs});
        QVERIFY(f.noticeShown() && f.fakes.dialogs.beeps == 3 && !QApplication::overrideCursor());
        QTest::mouseClick(child<QToolButton>(&f.window(), u"print"_qs), Qt::LeftButton);
        QCOMPARE(f.fakes.printer.printedLines().mid(0, 3), (QStringList{u"03-21-2001"_qs, QString(), u"e:\\A.TXT"_qs}));
        QCOMPARE(f.fakes.printer.printedLines().size(), 7);
        QTest::keyClick(child<QLineEdit>(&f.window(), u"name"_qs), Qt::Key_Backspace); // editing hides the notice
        QVERIFY(!f.noticeShown());

        f.press(u"../../ab"_qs);
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{u"Vous devez indiquer un nom de fichier (PCFun75,PCMag13...)"_qs});
        QVERIFY(!f.window().isScanning() && f.foundRows() == 0);
        QCOMPARE(f.filesIn(u"Divers"_qs), QStringList{u"PCFUN75X.lst"_qs});
    }

    // The archive is written while the walk runs; a folder or a name chosen meanwhile still
    // decides where it goes. Reopening the window puts its folder list back on the first folder:
    // a scan left running would then write where the user never chose, so closing stops it.
    void theFolderAndNameDecideAtTheWalksEndClosingStopsIt()
    {
        Fixture f;
        f.fakes.directoryLister.set("/cd/", {{"A", true}, {"B", true}, {"C.TXT"}});
        f.fakes.directoryLister.set("/cd/A/", {{"X.TXT"}});
        f.fakes.directoryLister.set("/cd/B/", {{"Y.TXT"}});
        Gate changed, closed; // each walk waits inside A: until the choices change, until the window closes
        Gate *gate = &changed;
        f.fakes.directoryLister.onList = [&](const QByteArray &path) {
            if (path == "/cd/A/")
                gate->pass();
        };
        QAbstractItemModelTester tester(child<QListView>(&f.window(), u"found"_qs)->model());
        QSignalSpy finished(&f.window(), &CreateArchiveForm::scanFinished);
        f.press(u"FIRST"_qs, &finished);
        QVERIFY(changed.waitForArrivals(1));
        QTRY_COMPARE(f.text(u"counter"_qs), u"3 fichiers trouvés"_qs);
        QTRY_COMPARE(f.foundRows(), 3);
        child<QListWidget>(&f.window(), u"folders"_qs)->setCurrentRow(int(f.data.archiveFolders().indexOf(u"Photos"_qs)));
        child<QLineEdit>(&f.window(), u"name"_qs)->setText(u"LATER"_qs);
        changed.open();
        QVERIFY(finished.wait(10000));
        QCOMPARE(TestSupport::readFile(f.archive(u"Photos"_qs, u"LATER.lst"_qs)).count('\n'), 9);

        gate = &closed;
        f.press(u"FERME"_qs, &finished);
        QVERIFY(closed.waitForArrivals(1));
        f.window().close();
        f.window().show();
        closed.open();
        QVERIFY(finished.wait(5000));
        for (const QString &name : f.data.archiveFolders())
            QCOMPARE(f.filesIn(name), name == u"Photos" ? QStringList{u"LATER.lst"_qs} : QStringList());
        QVERIFY(!f.noticeShown());
        f.press(u"FERME"_qs); // the next scan runs whole, into the folder now chosen
        QCOMPARE(TestSupport::readFile(f.archive(f.data.archiveFolders().first(), u"FERME.lst"_qs)).count('\n'), 9);
    }

    void aMediumGoneOrEmptyWritesNothing_data()
    {
        QTest::addColumn<bool>("gone");
        QTest::addColumn<QString>("counter");
        QTest::newRow("gone during the walk") << true << u"2 fichiers trouvés"_qs;
        QTest::newRow("empty") << false << u"0 fichiers trouvés"_qs;
    }

    // ENOTCONN, EIO or ENOENT on a directory the walk has just seen: the medium went away.
    void aMediumGoneOrEmptyWritesNothing()
    {
        QFETCH(bool, gone);
        QFETCH(QString, counter);
        Fixture f;
        const QByteArray old = "\"e:\\OLD\"\r\n";
        QVERIFY(TestSupport::writeFile(f.archive(u"Divers"_qs, u"DISQUE.lst"_qs), old));
        if (gone)
            f.fakes.directoryLister.outcomes.insert("/cd/SUB/", DirectoryLister::Result::Failed);
        else
            f.fakes.directoryLister.set("/cd/", {});
        f.press(u"DISQUE"_qs);
        QCOMPARE(TestSupport::readFile(f.archive(u"Divers"_qs, u"DISQUE.lst"_qs)), old);
        QCOMPARE(f.filesIn(u"Divers"_qs), QStringList{u"DISQUE.lst"_qs}); // no temporary file left
        QCOMPARE(f.text(u"counter"_qs), counter);
        QVERIFY(!f.noticeShown() && f.fakes.dialogs.beeps == 0 && f.fakes.dialogs.messages().isEmpty());
    }

    // Only what the drive holds is mounted: a stick listed alone leaves the drive empty and
    // nothing is written; the disc, once listed, is mounted and scanned.
    void theCreateButtonMountsTheDiscItScans()
    {
        Fixture f;
        f.fakes.drives.list[2] = {u"e:"_qs, DriveType::CdRom, {}, {}, u"/dev/sr0"_qs};
        f.fakes.directoryLister.set("/media/root/PCFUN75/", {{"A.TXT"}});
        FakeMediaMounter mounter;
        mounter.media = {u"/dev/sdb1"_qs};
        mounter.mountPoints = {{u"/dev/sr0"_qs, u"/media/root/PCFUN75"_qs}, {u"/dev/sdb1"_qs, u"/media/root/CLE"_qs}};
        mounter.onMount = [&](const QString &, const QString &point) { f.fakes.drives.list[2].mountPoint = point; };
        f.fakes.drives.setMounter(&mounter);
        f.press(u"PCFUN75"_qs);
        QVERIFY(mounter.mounted.isEmpty() && !QFile::exists(f.archive(u"Divers"_qs, u"PCFUN75.lst"_qs)));
        mounter.media = {u"/dev/sr0"_qs};
        f.press(u"PCFUN75"_qs);
        QCOMPARE(mounter.mounted, QStringList{u"/dev/sr0"_qs});
        QCOMPARE(TestSupport::readFile(f.archive(u"Divers"_qs, u"PCFUN75.lst"_qs)), QByteArray("\"e:\\A.TXT\"\r\n"));
    }

    // An image file is walked as the first CD-ROM drive; a folder of images, once its clashes
    // are accepted, image by image (a floppy's as a:); the system's drives are never read.
    void imagesAreCataloguedAsTheirDrives()
    {
        KALVEX_REQUIRE_PROGRAM(u"genisoimage"_qs);
        KALVEX_REQUIRE_PROGRAM(u"mcopy"_qs);
        Fixture f;
        const QDir base(f.dir.path());
        QVERIFY(TestSupport::writeFile(base.filePath(u"tree/A.TXT"_qs), "a") && base.mkpath(u"images"_qs)
                && TestSupport::writeFile(base.filePath(u"tree/SUB/B.TXT"_qs), "b"));
        const QString cd = base.filePath(u"images/pcfun75.iso"_qs), floppy = base.filePath(u"images/pcmag13.img"_qs);
        QVERIFY(TestSupport::run(u"genisoimage"_qs, {u"-quiet"_qs, u"-o"_qs, cd, base.filePath(u"tree"_qs)}));
        QVERIFY(TestSupport::run(u"mkfs.fat"_qs, {u"-C"_qs, floppy, u"1440"_qs})
                && TestSupport::run(u"mcopy"_qs, {u"-i"_qs, floppy, base.filePath(u"tree/A.TXT"_qs), u"::"_qs}));

        QSignalSpy finished(&f.window(), &CreateArchiveForm::scanFinished);
        f.press(u"image1"_qs, &finished, u"image"_qs); // no image chosen
        QVERIFY(f.fakes.folderPicker.filePatterns.contains(u"*.cue"_qs));
        QVERIFY(!QFile::exists(f.archive(u"Divers"_qs, u"IMAGE1.lst"_qs)));
        f.fakes.folderPicker.fileAnswers = {cd};
        f.press(u"image1"_qs, &finished, u"image"_qs);
        QVERIFY(finished.count() == 1 || finished.wait(10000));
        QCOMPARE(TestSupport::readFile(f.archive(u"Divers"_qs, u"IMAGE1.lst"_qs)), kWholeCd);

        QVERIFY(TestSupport::writeFile(f.archive(u"Divers"_qs, u"PCFUN75.lst"_qs), "old"));
        f.fakes.folderPicker.answers = {base.filePath(u"images"_qs), base.filePath(u"images"_qs)};
        f.fakes.dialogs.clear();
        f.fakes.dialogs.answers = {Answer::No, Answer::Yes};
        QSignalSpy done(&f.window(), &CreateArchiveForm::imagesFinished);
        QToolButton *imageFolder = child<QToolButton>(&f.window(), u"imageFolder"_qs);
        QTest::mouseClick(imageFolder, Qt::LeftButton); // the clash refused: nothing written
        QVERIFY(f.fakes.dialogs.shown.size() == 1 && f.fakes.dialogs.shown[0].text.contains(u"PCFUN75.lst"_qs));
        QVERIFY(!child<QWidget>(&f.window(), u"imageProgress"_qs)->isVisible()); // no image walked
        QTest::mouseClick(imageFolder, Qt::LeftButton);
        QVERIFY(done.count() == 1 || done.wait(10000));
        QCOMPARE(TestSupport::readFile(f.archive(u"Divers"_qs, u"PCFUN75.lst"_qs)), kWholeCd);
        QCOMPARE(TestSupport::readFile(f.archive(u"Divers"_qs, u"PCMAG13.lst"_qs)), "\"a:\\A.TXT\"\r\n");
        QVERIFY(f.fakes.dialogs.messages().value(0).startsWith(u"2 archive(s) écrite(s)"_qs));
        QVERIFY(f.fakes.directoryLister.listed.isEmpty());
    }
};

QTEST_MAIN(tst_CreateArchiveForm)
#include "tst_createarchiveform.moc"
