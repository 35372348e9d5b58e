#include "archivefile.h"
#include "createarchiveform.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "searchrun.h"
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
#include <QScopeGuard>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

namespace {

using Item = FakeDirectoryLister::Item;

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
                                                       fakes.printer, fakes.pictures, fakes.clock);
            form->show();
        }
        return *form;
    }
    template<typename T> T *child(const QString &name) { return window().findChild<T *>(name); }
    QString counter() { return child<QLabel>(u"counter"_qs)->text(); }
    bool noticeShown() { return child<QLabel>(u"endNotice"_qs)->isVisible(); }
    int foundRows() { return child<QListView>(u"found"_qs)->model()->rowCount(); }

    // Types a name and presses the create button; waits for the scan when one starts.
    void create(const QString &name)
    {
        QLineEdit *box = child<QLineEdit>(u"name"_qs);
        box->clear();
        QTest::keyClicks(box, name);
        QSignalSpy finished(&window(), &CreateArchiveForm::scanFinished);
        QTest::mouseClick(child<QToolButton>(u"create"_qs), Qt::LeftButton);
        if (window().isScanning())
            QVERIFY(finished.wait(10000));
    }
    QString archive(const QString &folder, const QString &file) { return data.folderPath(folder) + u"/"_qs + file; }

    QTemporaryDir dir;
    DataDirectory data;
    FakeServices fakes;
    std::unique_ptr<CreateArchiveForm> form;
};

QStringList texts(QListWidget *list)
{
    QStringList out;
    for (int i = 0; i < list->count(); ++i)
        out.append(list->item(i)->text());
    return out;
}

} // namespace

class tst_CreateArchiveForm : public QObject
{
    Q_OBJECT

private slots:
    void openingFillsEveryControl()
    {
        Fixture f;
        QVERIFY(TestSupport::writeFile(f.archive(u"Divers"_qs, u"PCMAG13.lst"_qs), "\"e:\\X\"\r\n"));
        QVERIFY(TestSupport::writeFile(f.archive(u"Divers"_qs, u"notes.txt"_qs), "x"));
        f.window();
        QCOMPARE(f.child<QLabel>(u"heading"_qs)->text(), u"Création du fichier d'archives."_qs);
        QCOMPARE(f.child<QLabel>(u"driveHint"_qs)->text(), kHint + u"e"_qs);
        QCOMPARE(f.child<QComboBox>(u"driveChooser"_qs)->currentText(), u"e:"_qs);
        QCOMPARE(f.child<QComboBox>(u"driveChooser"_qs)->count(), 3);
        QCOMPARE(texts(f.child<QListWidget>(u"folders"_qs)), f.data.archiveFolders());
        QCOMPARE(texts(f.child<QListWidget>(u"archives"_qs)), QStringList{u"PCMAG13.lst"_qs});
        QCOMPARE(f.counter(), u"0 fichiers trouvés"_qs);
        QVERIFY(!f.noticeShown());
        QCOMPARE(f.child<QLabel>(u"endNotice"_qs)->text(), u"L'archivage est terminé"_qs);
        QCOMPARE(f.child<QToolButton>(u"create"_qs)->toolTip(), u"Créer un fichier d'archive"_qs);
        QVERIFY(!f.child<QToolButton>(u"create"_qs)->icon().isNull());
        QVERIFY(!f.child<QToolButton>(u"print"_qs)->icon().isNull());
        QCOMPARE(f.fakes.pictures.icons,
                 (QStringList{f.data.file(u"File005.ico"_qs), f.data.file(u"inkjet.ico"_qs)}));
        for (QWidget *control : f.window().findChildren<QWidget *>()) {
            if (control->focusPolicy() != Qt::NoFocus && control->isVisible() && control->window() == &f.window()
                && !control->parentWidget()->inherits("QAbstractScrollArea"))
                QVERIFY2(!QAccessible::queryAccessibleInterface(control)->text(QAccessible::Name).isEmpty(),
                         qPrintable(control->objectName()));
        }
        // The counter is read as it shows: its value, not a fixed name.
        QCOMPARE(QAccessible::queryAccessibleInterface(f.child<QLabel>(u"counter"_qs))->text(QAccessible::Name),
                 u"0 fichiers trouvés"_qs);
        QCOMPARE(QDir::currentPath(), QDir(f.dir.path()).canonicalPath());
    }

    void withoutCdRomTheHintHasNoLetter()
    {
        Fixture f;
        f.fakes.drives.list = {{u"c:"_qs, DriveType::Fixed, u"/"_qs},
                               {u"d:"_qs, DriveType::Fixed, f.dir.path()}};
        f.window();
        QCOMPARE(f.child<QLabel>(u"driveHint"_qs)->text(), kHint);
        QCOMPARE(f.child<QComboBox>(u"driveChooser"_qs)->currentText(), u"d:"_qs); // the data directory's
    }

    // Drives come and go while the window is open: the chooser follows, the choice stays, and the
    // line under it shows the chosen drive's label and mount point.
    void theChooserFollowsTheDrives()
    {
        Fixture f;
        f.window();
        QComboBox *chooser = f.child<QComboBox>(u"driveChooser"_qs);
        QLabel *details = f.child<QLabel>(u"driveChooserDetails"_qs);
        QCOMPARE(details->text(), u"/cd"_qs);
        QVERIFY(details->accessibleName().isEmpty()); // a screen reader reads the text itself

        const QList<Drive> before = f.fakes.drives.list;
        QList<Drive> withStick = before;
        withStick.append({u"f:"_qs, DriveType::Fixed, u"/media/anne/CLE"_qs, u"CLE"_qs, u"/dev/sdb1"_qs});
        f.fakes.drives.replace(withStick);
        QCOMPARE(chooser->count(), 4);
        QCOMPARE(chooser->itemText(3), u"f:"_qs);
        QCOMPARE(chooser->currentText(), u"e:"_qs);
        QCOMPARE(details->text(), u"/cd"_qs);

        chooser->setCurrentText(u"f:"_qs);
        QCOMPARE(details->text(), u"[CLE]  /media/anne/CLE"_qs);
        f.fakes.drives.replace(before); // the stick is pulled out
        QCOMPARE(chooser->count(), 3);
        QVERIFY(chooser->currentText() != u"f:"_qs);
        QCOMPARE(details->text(), driveDescription(before.value(chooser->currentIndex())));
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("drive");
        QTest::addColumn<QString>("message");
        QTest::newRow("nine characters") << u"ABCDEFGHI"_qs << u"e:"_qs << u"Nom trop long (8 caractères maxi)"_qs;
        QTest::newRow("empty") << QString() << u"e:"_qs
                               << u"Vous devez indiquer un nom de fichier (PCFun75,PCMag13...)"_qs;
        for (const QString &path : {u"../../AB"_qs, u"/TMPX"_qs, u"A\\B"_qs, u".."_qs})
            QTest::newRow(qPrintable(path)) << path << u"e:"_qs
                                            << u"Vous devez indiquer un nom de fichier (PCFun75,PCMag13...)"_qs;
        QTest::newRow("system disk") << u"pcfun75"_qs << u"c:"_qs
                                     << u"Ce logiciel est destiné uniquement à archiver des CD-Rom ou des disquettes, "
                                        u"vous ne pouvez pas archiver un disque dur. "_qs
                                            + kHint + u"e"_qs;
    }

    void refusals()
    {
        QFETCH(QString, name);
        QFETCH(QString, drive);
        QFETCH(QString, message);
        Fixture f;
        f.create(u"FIRST"_qs); // leaves a found list and the end notice
        QVERIFY(f.noticeShown());
        f.fakes.dialogs.clear();
        f.child<QComboBox>(u"driveChooser"_qs)->setCurrentText(drive);
        f.create(name);
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{message});
        QVERIFY(!f.window().isScanning());
        QCOMPARE(f.foundRows(), 0);
        QVERIFY(!f.noticeShown());
        QCOMPARE(f.fakes.dialogs.beeps, 0);
        QCOMPARE(QDir(f.data.folderPath(u"Divers"_qs)).entryList(QDir::Files), QStringList{u"FIRST.lst"_qs});
    }

    void anUpperCasedNameOfEightWritesTheArchive()
    {
        Fixture f;
        f.create(u"pcfun75x"_qs);
        QCOMPARE(f.child<QLineEdit>(u"name"_qs)->text(), u"PCFUN75X"_qs);
        QCOMPARE(TestSupport::readFile(f.archive(u"Divers"_qs, u"PCFUN75X.lst"_qs)),
                 QByteArray("\"e:\\A.TXT\"\r\n\"e:\\SUB\"\r\n\"e:\\SUB\\.\"\r\n\"e:\\SUB\\..\"\r\n"
                            "\"e:\\SUB\\B.TXT\"\r\n"));
        QCOMPARE(f.counter(), u"5 fichiers trouvés"_qs);
        QCOMPARE(f.foundRows(), 5);
        QCOMPARE(f.child<QListView>(u"found"_qs)->model()->index(0, 0).data().toString(), u"e:\\A.TXT"_qs);
        QVERIFY(f.noticeShown());
        QCOMPARE(texts(f.child<QListWidget>(u"archives"_qs)), QStringList{u"PCFUN75X.lst"_qs});
        QCOMPARE(f.fakes.dialogs.beeps, 3);
        QVERIFY(f.fakes.dialogs.messages().isEmpty());
        QCOMPARE(QApplication::overrideCursor(), nullptr);
        QCOMPARE(QDir::currentPath(), QDir(f.dir.path()).canonicalPath());

        // Editing the name hides the notice.
        QTest::keyClick(f.child<QLineEdit>(u"name"_qs), Qt::Key_Backspace);
        QVERIFY(!f.noticeShown());

        // Upper-cased as the code page does: "ß" stays one letter, so the name keeps its length.
        f.create(u"straße"_qs);
        QCOMPARE(f.child<QLineEdit>(u"name"_qs)->text(), u"STRAßE"_qs);
        QVERIFY(QFile::exists(f.archive(u"Divers"_qs, u"STRAßE.lst"_qs)));
    }

    void aNameOfBlanksIsUsedAsItIs()
    {
        Fixture f;
        f.create(u"   "_qs);
        QVERIFY(QFile::exists(f.archive(u"Divers"_qs, u"   .lst"_qs)));
        QVERIFY(f.fakes.dialogs.messages().isEmpty());
    }

    void theChosenFolderReceivesTheArchiveAndAnOldOneIsReplaced()
    {
        Fixture f;
        QVERIFY(TestSupport::writeFile(f.archive(u"Photos"_qs, u"CD1.lst"_qs), "\"e:\\OLD\"\r\n\"e:\\OLDER\"\r\n"));
        auto *folders = f.child<QListWidget>(u"folders"_qs);
        folders->setCurrentRow(int(f.data.archiveFolders().indexOf(u"Photos"_qs)));
        QCOMPARE(texts(f.child<QListWidget>(u"archives"_qs)), QStringList{u"CD1.lst"_qs});
        f.fakes.directoryLister.set("/cd/", {{"NEW"}});
        f.create(u"cd1"_qs);
        QCOMPARE(TestSupport::readFile(f.archive(u"Photos"_qs, u"CD1.lst"_qs)), QByteArray("\"e:\\NEW\"\r\n"));
        QVERIFY(!QFile::exists(f.archive(u"Divers"_qs, u"CD1.lst"_qs)));
    }

    void theArchiveGoesWhereTheFolderAndNameSayWhenTheWalkEnds_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("same folder, another name") << u"Divers"_qs;
        QTest::newRow("another folder and name") << u"Photos"_qs;
    }

    // The archive is written while the walk runs; a folder or a name chosen meanwhile still
    // decides where it goes.
    void theArchiveGoesWhereTheFolderAndNameSayWhenTheWalkEnds()
    {
        QFETCH(QString, folder);
        Fixture f;
        f.fakes.directoryLister.set("/cd/", {{"A", true}, {"B", true}, {"C.TXT"}});
        f.fakes.directoryLister.set("/cd/A/", {{"X.TXT"}});
        f.fakes.directoryLister.set("/cd/B/", {{"Y.TXT"}});
        Gate gate; // the walk waits inside A until the folder and the name have changed
        f.fakes.directoryLister.onList = [&](const QByteArray &path) {
            if (path == "/cd/A/")
                gate.pass();
        };
        QTest::keyClicks(f.child<QLineEdit>(u"name"_qs), u"FIRST"_qs);
        QSignalSpy finished(&f.window(), &CreateArchiveForm::scanFinished);
        QTest::mouseClick(f.child<QToolButton>(u"create"_qs), Qt::LeftButton);
        QVERIFY(gate.waitForArrivals(1));
        QTRY_COMPARE(f.counter(), u"3 fichiers trouvés"_qs);
        auto *folders = f.child<QListWidget>(u"folders"_qs);
        folders->setCurrentRow(int(f.data.archiveFolders().indexOf(folder)));
        f.child<QLineEdit>(u"name"_qs)->setText(u"LATER"_qs);
        gate.open();
        QVERIFY(finished.wait(10000));

        QCOMPARE(TestSupport::readFile(f.archive(folder, u"LATER.lst"_qs)),
                 QByteArray("\"e:\\A\"\r\n\"e:\\B\"\r\n\"e:\\C.TXT\"\r\n\"e:\\A\\.\"\r\n\"e:\\A\\..\"\r\n"
                            "\"e:\\A\\X.TXT\"\r\n\"e:\\B\\.\"\r\n\"e:\\B\\..\"\r\n\"e:\\B\\Y.TXT\"\r\n"));
        for (const QString &name : f.data.archiveFolders())
            QCOMPARE(QDir(f.data.folderPath(name)).entryList(QDir::Files),
                     name == folder ? QStringList{u"LATER.lst"_qs} : QStringList());
        QVERIFY(f.noticeShown());
    }

    void aWindowClosedDuringTheWalkLeavesNoFile()
    {
        Fixture f;
        QList<Item> root;
        for (int d = 0; d < 20; ++d)
            root.append({"D" + QByteArray::number(d), true});
        f.fakes.directoryLister.set("/cd/", root);
        Gate gate; // the walk waits in the first sub-directory while the window shows the root's entries
        f.fakes.directoryLister.onList = [&](const QByteArray &path) {
            if (path != "/cd/")
                gate.pass();
        };
        QTest::keyClicks(f.child<QLineEdit>(u"name"_qs), u"COUPE"_qs);
        QTest::mouseClick(f.child<QToolButton>(u"create"_qs), Qt::LeftButton);
        QVERIFY(gate.waitForArrivals(1));
        QTRY_COMPARE(f.counter(), u"20 fichiers trouvés"_qs);
        QVERIFY(f.window().isScanning());
        gate.open(); // the window goes before its end of scan, whether the walk ends first or not
        f.form.reset();
        QVERIFY(QDir(f.data.folderPath(u"Divers"_qs)).entryList(QDir::Files).isEmpty());
    }

    // ENOTCONN, EIO or ENOENT on a directory the walk has just seen: the medium went away.
    void aMediumGoneDuringTheScanKeepsTheOldArchive()
    {
        Fixture f;
        const QByteArray old = "\"e:\\OLD\"\r\n";
        QVERIFY(TestSupport::writeFile(f.archive(u"Divers"_qs, u"DISQUE.lst"_qs), old));
        f.fakes.directoryLister.outcomes.insert("/cd/SUB/", DirectoryLister::Result::Failed);
        f.create(u"DISQUE"_qs);
        QCOMPARE(TestSupport::readFile(f.archive(u"Divers"_qs, u"DISQUE.lst"_qs)), old);
        QCOMPARE(QDir(f.data.folderPath(u"Divers"_qs)).entryList(QDir::Files | QDir::Hidden),
                 QStringList{u"DISQUE.lst"_qs}); // no temporary file left either
        QVERIFY(!f.noticeShown());
        QCOMPARE(f.fakes.dialogs.beeps, 0);
        QVERIFY(f.fakes.dialogs.messages().isEmpty());
        QCOMPARE(f.counter(), u"2 fichiers trouvés"_qs); // what was found before it went

        // The same medium back in its drive scans whole.
        f.fakes.directoryLister.outcomes.clear();
        f.create(u"DISQUE"_qs);
        QCOMPARE(TestSupport::readFile(f.archive(u"Divers"_qs, u"DISQUE.lst"_qs)),
                 QByteArray("\"e:\\A.TXT\"\r\n\"e:\\SUB\"\r\n\"e:\\SUB\\.\"\r\n\"e:\\SUB\\..\"\r\n"
                            "\"e:\\SUB\\B.TXT\"\r\n"));
        QVERIFY(f.noticeShown());
        QCOMPARE(f.fakes.dialogs.beeps, 3);
    }

    // Reopening the window puts its folder list back on the first folder: a scan left running
    // would then write where the user never chose. Closing the window stops the scan instead.
    void closingTheWindowDuringTheScanStopsIt()
    {
        Fixture f;
        QSemaphore reached, gate;
        const auto release = qScopeGuard([&] { gate.release(); }); // a failure must not hang the walk
        f.fakes.directoryLister.onList = [&](const QByteArray &path) {
            if (path == "/cd/SUB/") {
                reached.release();
                gate.acquire();
            }
        };
        f.child<QListWidget>(u"folders"_qs)->setCurrentRow(int(f.data.archiveFolders().indexOf(u"Photos"_qs)));
        QTest::keyClicks(f.child<QLineEdit>(u"name"_qs), u"FERME"_qs);
        QSignalSpy finished(&f.window(), &CreateArchiveForm::scanFinished);
        QTest::mouseClick(f.child<QToolButton>(u"create"_qs), Qt::LeftButton);
        QVERIFY(reached.tryAcquire(1, 5000));
        f.window().close();
        f.window().show();
        gate.release();
        QVERIFY(finished.wait(5000));
        for (const QString &name : f.data.archiveFolders())
            QVERIFY2(QDir(f.data.folderPath(name)).entryList(QDir::Files | QDir::Hidden).isEmpty(), qPrintable(name));
        QVERIFY(!f.noticeShown());
        QCOMPARE(f.fakes.dialogs.beeps, 0);

        // The next scan runs whole, into the folder now chosen.
        f.fakes.directoryLister.onList = nullptr;
        f.create(u"FERME"_qs);
        QVERIFY(QFile::exists(f.archive(f.data.archiveFolders().first(), u"FERME.lst"_qs)));
        QVERIFY(f.noticeShown());
    }

    void anEmptyMediumWritesNothing()
    {
        Fixture f;
        f.fakes.directoryLister.set("/cd/", {});
        f.create(u"VIDE"_qs);
        QCOMPARE(f.counter(), u"0 fichiers trouvés"_qs);
        QVERIFY(!QFile::exists(f.archive(u"Divers"_qs, u"VIDE.lst"_qs)));
        QVERIFY(!f.noticeShown());
        QCOMPARE(f.fakes.dialogs.beeps, 0);
        QVERIFY(f.fakes.dialogs.messages().isEmpty());
    }

    void anyDriveButCIsScanned()
    {
        Fixture f;
        f.fakes.directoryLister.set("/data/", {{"DISQUE.DAT"}});
        f.child<QComboBox>(u"driveChooser"_qs)->setCurrentText(u"d:"_qs);
        f.create(u"DUR"_qs);
        QCOMPARE(TestSupport::readFile(f.archive(u"Divers"_qs, u"DUR.lst"_qs)), QByteArray("\"d:\\DISQUE.DAT\"\r\n"));
    }

    void theCounterMovesWhileTheWalkRunsAndStopsAt32767()
    {
        Fixture f;
        QList<Item> root;
        for (int d = 0; d < 40; ++d) {
            const QByteArray name = "D" + QByteArray::number(d);
            root.append({name, true});
            QList<Item> files;
            for (int i = 0; i < 1000; ++i)
                files.append({"F" + QByteArray::number(i)});
            f.fakes.directoryLister.set("/cd/" + name + "/", files);
        }
        f.fakes.directoryLister.set("/cd/", root);
        // Each directory is read when the test lets it: the counter must show every step.
        QSemaphore directories;
        const auto release = qScopeGuard([&] { directories.release(1000); }); // nor here
        f.fakes.directoryLister.onList = [&](const QByteArray &path) {
            if (path != "/cd/")
                directories.acquire();
        };
        QAbstractItemModelTester tester(f.child<QListView>(u"found"_qs)->model());

        QTest::keyClicks(f.child<QLineEdit>(u"name"_qs), u"GROS"_qs);
        QSignalSpy finished(&f.window(), &CreateArchiveForm::scanFinished);
        QTest::mouseClick(f.child<QToolButton>(u"create"_qs), Qt::LeftButton);
        for (int step = 0; step < 3; ++step) {
            QTRY_COMPARE(f.counter(), QString::number(40 + step * 1002) + u" fichiers trouvés"_qs);
            QTRY_COMPARE(f.foundRows(), 40 + step * 1002);
            directories.release();
        }
        directories.release(40);
        QVERIFY(finished.wait(10000));
        QCOMPARE(f.counter(), u"32767 fichiers trouvés"_qs);
        QCOMPARE(f.foundRows(), 32767);
        const QList<QByteArray> lines = ArchiveReader::lines(TestSupport::readFile(f.archive(u"Divers"_qs, u"GROS.lst"_qs)));
        QCOMPARE(lines.size(), 32767);
        QCOMPARE(lines.first(), QByteArray("\"e:\\D0\""));
        QVERIFY(f.noticeShown());
    }

    // Scans of a large and a small medium one after the other, with searches between: each
    // archive and found list holds its own medium's entries and nothing of the last one's.
    void largeAndSmallScansInTurnNeverMix()
    {
        Fixture f;
        f.fakes.drives.list.append({u"g:"_qs, DriveType::Removable, u"/clip"_qs});
        QList<Item> many, few;
        for (int i = 0; i < 3000; ++i)
            many.append({"GROS" + QByteArray::number(i) + ".WMF"});
        for (int i = 0; i < 6; ++i)
            few.append({"CLIP" + QByteArray::number(i) + ".WMF"});
        f.fakes.directoryLister.set("/cd/", many);
        f.fakes.directoryLister.set("/clip/", few);
        auto *drive = f.child<QComboBox>(u"driveChooser"_qs);
        for (int round = 0; round < 8; ++round) {
            drive->setCurrentText(u"e:"_qs);
            f.create(u"GROSDVD"_qs);
            SearchRequest search;
            search.kind = SearchKind::Extension;
            search.term = searchTerm(u"WMF"_qs);
            search.archives = {{f.archive(u"Divers"_qs, u"GROSDVD.lst"_qs), u"GROSDVD"_qs}};
            search.rowLimit = 30000;
            QCOMPARE(SearchRun::runAndWait(search).size(), 3000);
            drive->setCurrentText(u"g:"_qs);
            f.create(u"CLIPART"_qs);
            QCOMPARE(f.counter(), u"6 fichiers trouvés"_qs);
            QCOMPARE(f.foundRows(), 6);
            const QList<QByteArray> lines = ArchiveReader::lines(TestSupport::readFile(f.archive(u"Divers"_qs, u"CLIPART.lst"_qs)));
            QCOMPARE(lines.size(), 6);
            QCOMPARE(lines.last(), QByteArray("\"g:\\CLIP5.WMF\""));
        }
    }

    void printsTheFoundList()
    {
        Fixture f;
        QTemporaryDir out;
        const QString pdf = out.filePath(u"list.pdf"_qs);
        FakePrinter printer(pdf);
        CreateArchiveForm window(f.data, f.fakes.drives, f.fakes.directoryLister, f.fakes.dialogs, printer,
                                 f.fakes.pictures, f.fakes.clock);
        window.show();
        QTest::keyClicks(window.findChild<QLineEdit *>(u"name"_qs), u"PRINT"_qs);
        QSignalSpy finished(&window, &CreateArchiveForm::scanFinished);
        QTest::mouseClick(window.findChild<QToolButton *>(u"create"_qs), Qt::LeftButton);
        QVERIFY(finished.wait(5000));
        QTest::mouseClick(window.findChild<QToolButton *>(u"print"_qs), Qt::LeftButton);
        QCOMPARE(printer.printedLines(), (QStringList{u"03-21-2001"_qs, QString(), u"e:\\A.TXT"_qs, u"e:\\SUB"_qs,
                                                      u"e:\\SUB\\."_qs, u"e:\\SUB\\.."_qs, u"e:\\SUB\\B.TXT"_qs}));
        QVERIFY(printer.log.contains(u"x=2000"_qs));
        KALVEX_REQUIRE_PROGRAM(u"pdftotext"_qs);
        QStringList words;
        for (const TestSupport::PdfWord &word : TestSupport::pdfWords(pdf))
            words.append(word.text);
        QVERIFY(words.contains(u"03-21-2001"_qs));
        QVERIFY(words.contains(u"e:\\SUB\\B.TXT"_qs));
    }

};

QTEST_MAIN(tst_CreateArchiveForm)
#include "tst_createarchiveform.moc"
