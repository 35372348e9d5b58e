#include "datadirectory.h"
#include "extensionsform.h"
#include "fakeservices.h"
#include "testsupport.h"
#include "themesform.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileSystemModel>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QTreeView>

namespace {

// A data directory, and a medium as drive d: holding EDIT.COM at its root and DOS/SUB/TOOL.EXE.
struct Setup
{
    QTemporaryDir dataDir;
    QTemporaryDir disk;
    FakeServices fakes;
    DataDirectory data{dataDir.path()};

    Setup()
    {
        TestSupport::copyProgramFiles(dataDir.path());
        QDir(disk.path()).mkpath(u"DOS/SUB"_qs);
        TestSupport::writeFile(disk.filePath(u"EDIT.COM"_qs), "x");
        TestSupport::writeFile(disk.filePath(u"LISEZMOI.TXT"_qs), "x");
        TestSupport::writeFile(disk.filePath(u"DOS/SUB/TOOL.EXE"_qs), "x");
        fakes.drives.list = {{u"c:"_qs, DriveType::Fixed, u"/"_qs}, {u"d:"_qs, DriveType::CdRom, disk.path()}};
    }

    QString tablePath() const { return dataDir.filePath(u"extens.txt"_qs); }
    QByteArray table() const { return TestSupport::readFile(tablePath()); }
};

class Driver
{
public:
    Driver(Setup &setup, Printer &printer)
        : window(setup.data, setup.fakes.drives, setup.fakes.dialogs, printer, setup.fakes.pictures,
                 setup.fakes.clock)
    {
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
    }

    template <typename T>
    T *child(const QString &name) { return window.findChild<T *>(name); }
    QString label(const QString &name) { return child<QLabel>(name)->text(); }
    QStringList entries()
    {
        QStringList texts;
        auto *list = child<QListWidget>(u"lines"_qs);
        for (int i = 0; i < list->count(); ++i)
            texts.append(list->item(i)->text());
        return texts;
    }

    void click(const QString &button) { QTest::mouseClick(child<QAbstractButton>(button), Qt::LeftButton); }
    void clickItem(QListWidget *list, int row)
    {
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(row)).center());
    }
    void chooseClass(int row) { clickItem(child<QListWidget>(u"classes"_qs), row); }
    void chooseEntry(int row) { clickItem(child<QListWidget>(u"lines"_qs), row); }
    void typeExtension(const QString &text)
    {
        auto *box = child<QLineEdit>(u"newExtension"_qs);
        box->clear();
        QTest::keyClicks(box, text);
    }
    void chooseDriveBelow() { QTest::keyClick(child<QComboBox>(u"drives"_qs), Qt::Key_Down); }

    void clickProgramFile(const QString &name)
    {
        auto *files = child<QListView>(u"programFiles"_qs);
        const QModelIndexList found = files->model()->match(files->model()->index(0, 0), Qt::DisplayRole, name);
        QVERIFY2(found.size() == 1, qPrintable(name));
        QTest::mouseClick(files->viewport(), Qt::LeftButton, {}, files->visualRect(found[0]).center());
    }

    // Clicks a directory in the tree once it is listed; `expand` also opens it.
    void clickDirectory(const QString &path, bool expand)
    {
        auto *tree = child<QTreeView>(u"directories"_qs);
        auto *model = static_cast<QFileSystemModel *>(tree->model());
        QModelIndex index;
        QTRY_VERIFY((index = model->index(path)).isValid() && !tree->visualRect(index).isEmpty());
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(index).center());
        if (expand)
            tree->expand(index);
    }

    ExtensionsForm window;
};

} // namespace

class tst_ExtensionsForm : public QObject
{
    Q_OBJECT

private slots:
    void opensTopLeftOnAnEmptyTableWithFocusOnTheNewExtension()
    {
        Setup setup;
        Driver driver(setup, setup.fakes.printer);
        QCOMPARE(driver.window.windowTitle(), u"Kalvex2 Extensions"_qs);
        QCOMPARE(driver.window.frameGeometry().topLeft(), QPoint(0, 0));
        QCOMPARE(driver.label(u"count"_qs), u" 0 extensions"_qs);
        QVERIFY(driver.entries().isEmpty());
        QVERIFY(!QFile::exists(setup.tablePath())); // opening writes nothing

        QStringList classes;
        auto *classList = driver.child<QListWidget>(u"classes"_qs);
        for (int i = 0; i < classList->count(); ++i)
            classes.append(classList->item(i)->text());
        QCOMPARE(classes, (QStringList{u"Images"_qs, u"Icônes"_qs, u"Sons et Musiques"_qs, u"Textes"_qs,
                                       u"Vidéos"_qs, u"Fichiers DIZ"_qs, u"Fichiers exécutables (BAT,COM,EXE)"_qs,
                                       u"Fichiers compressés (ZIP,LHZ,ARC,...)"_qs, u"Divers"_qs}));
        QStringList captions;
        for (QLabel *label : driver.window.findChildren<QLabel *>())
            captions.append(label->text());
        QVERIFY(captions.contains(u"Nouvelle extension--->"_qs));
        QVERIFY(captions.contains(u"Classification du fichier"_qs));
        QVERIFY(captions.contains(u"Nom du fichier associé:"_qs));

        // The program chooser starts on the data directory, on the drive holding it.
        QCOMPARE(driver.child<QComboBox>(u"drives"_qs)->currentIndex(), 0);
        QCOMPARE(driver.label(u"currentDirectory"_qs), setup.dataDir.path());
        QVERIFY(!driver.child<QToolButton>(u"print"_qs)->icon().isNull());
        QCOMPARE(setup.fakes.pictures.icons, QStringList{setup.dataDir.filePath(u"inkjet.ico"_qs)});

        for (QWidget *control : driver.window.findChildren<QWidget *>()) {
            // A label is named by its text: one showing no value yet has nothing to say.
            const auto *label = qobject_cast<QLabel *>(control);
            if (control->focusPolicy() != Qt::NoFocus && !control->inherits("QScrollBar") && control->isVisible()
                && control->parentWidget() && !control->parentWidget()->inherits("QAbstractScrollArea")
                && !(label && label->text().isEmpty()))
                QVERIFY2(!QAccessible::queryAccessibleInterface(control)->text(QAccessible::Name).isEmpty(),
                         control->metaObject()->className());
        }

        driver.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&driver.window));
        QCOMPARE(QApplication::focusWidget(), driver.child<QLineEdit>(u"newExtension"_qs));
    }

    void refusesInOrderThenAddsKeepingTheChoices()
    {
        Setup setup;
        Driver driver(setup, setup.fakes.printer);
        driver.typeExtension(u"jpeg"_qs);
        driver.click(u"add"_qs); // nothing chosen: the program check comes first
        driver.chooseDriveBelow();
        QCOMPARE(driver.label(u"currentDirectory"_qs), setup.disk.path());
        QCOMPARE(driver.child<QListView>(u"programFiles"_qs)->model()->rowCount(), 1); // EDIT.COM only
        driver.clickProgramFile(u"EDIT.COM"_qs);
        const QString program = setup.disk.path() + u"/EDIT"_qs;
        QCOMPARE(driver.label(u"chosenProgram"_qs), program);
        driver.click(u"add"_qs);
        driver.chooseClass(3);
        QCOMPARE(driver.label(u"chosenClass"_qs), u"Textes"_qs);
        driver.typeExtension(QString());
        driver.click(u"add"_qs);
        driver.typeExtension(u"jpeg"_qs);
        driver.click(u"add"_qs);
        QCOMPARE(setup.fakes.dialogs.messages(),
                 (QStringList{u"Vous devez associer un logiciel à chaque nouvelle extension !"_qs,
                              u"Vous devez choisir une classification du fichier !"_qs,
                              u"Vous n'avez pas donné de nom à l'extension !"_qs,
                              u"Nom trop long (3 caractères maxi)"_qs}));
        QVERIFY(!QFile::exists(setup.tablePath()));

        driver.typeExtension(u"txt"_qs);
        driver.click(u"add"_qs);
        driver.click(u"add"_qs); // the same again: a second line, not refused
        QCOMPARE(setup.fakes.dialogs.messages().size(), 4);
        const QByteArray line = "TXT         &4" + QFile::encodeName(program) + "\r\n";
        QCOMPARE(setup.table(), line + line);
        QCOMPARE(driver.entries().size(), 2);
        QCOMPARE(driver.label(u"count"_qs), u" 2 extensions"_qs);
        QCOMPARE(driver.child<QLineEdit>(u"newExtension"_qs)->text(), u"TXT"_qs);
        QCOMPARE(driver.label(u"chosenClass"_qs), u"Textes"_qs);
        QCOMPARE(driver.label(u"chosenProgram"_qs), program);

        driver.typeExtension(u"d"_qs);
        driver.click(u"add"_qs); // class and program kept for the next extension
        QCOMPARE(driver.entries().last(), u"D         &4"_qs + program);
    }

    void programFromANestedDirectory()
    {
        Setup setup;
        Driver driver(setup, setup.fakes.printer);
        driver.chooseDriveBelow();
        driver.clickDirectory(setup.disk.filePath(u"DOS"_qs), true);
        QCOMPARE(driver.label(u"currentDirectory"_qs), setup.disk.filePath(u"DOS"_qs));
        QCOMPARE(driver.child<QListView>(u"programFiles"_qs)->model()->rowCount(), 0);
        driver.clickDirectory(setup.disk.filePath(u"DOS/SUB"_qs), false);
        QCOMPARE(driver.label(u"currentDirectory"_qs), setup.disk.filePath(u"DOS/SUB"_qs));
        driver.clickProgramFile(u"TOOL.EXE"_qs);
        driver.chooseClass(8);
        driver.typeExtension(u"c"_qs);
        driver.click(u"add"_qs);
        QCOMPARE(setup.table(), "C         &9" + QFile::encodeName(setup.disk.filePath(u"DOS/SUB/TOOL"_qs)) + "\r\n");
    }

    void removalAskedAndDoneOnlyOnYes()
    {
        Setup setup;
        const QByteArray original = "GIF         &1C:\\V\r\nTXT         &4C:\\E\r\nZIP         &8C:\\Z\r\n";
        TestSupport::writeFile(setup.tablePath(), original);
        Driver driver(setup, setup.fakes.printer);
        QCOMPARE(driver.label(u"count"_qs), u" 3 extensions"_qs);
        driver.chooseEntry(1);
        QCOMPARE(driver.label(u"selected"_qs), u"TXT         &4C:\\E"_qs);

        driver.click(u"remove"_qs); // the fake answers No
        QCOMPARE(setup.fakes.dialogs.shown.size(), 1);
        const FakeDialogs::Shown question = setup.fakes.dialogs.shown[0];
        QCOMPARE(question.kind, u"question"_qs);
        QCOMPARE(question.text, u"Souhaitez-vous SUPPRIMER cette extension TXT         &4C:\\E"_qs);
        QCOMPARE(question.title, u"Suppression de fichier "_qs);
        QCOMPARE(question.help.file, u"DEMO.HLP"_qs);
        QCOMPARE(question.help.context, 1000);
        QCOMPARE(setup.table(), original);
        QCOMPARE(driver.entries().size(), 3);

        setup.fakes.dialogs.answers = {Answer::Yes, Answer::Yes};
        driver.click(u"remove"_qs);
        const QByteArray remaining = "GIF         &1C:\\V\r\nZIP         &8C:\\Z\r\n";
        QCOMPARE(setup.table(), remaining);
        QCOMPARE(driver.label(u"count"_qs), u" 2 extensions"_qs);

        // Nothing selected now: the file is rewritten as it stands.
        QFile::remove(setup.tablePath());
        driver.click(u"remove"_qs);
        QCOMPARE(setup.fakes.dialogs.shown.last().text, u"Souhaitez-vous SUPPRIMER cette extension "_qs);
        QCOMPARE(setup.table(), remaining);
        QCOMPARE(setup.fakes.dialogs.messages(), QStringList());
    }

    void readsCommaSeparatedFieldsAndPrintsThem()
    {
        KALVEX_REQUIRE_PROGRAM(u"pdftotext"_qs);
        Setup setup;
        TestSupport::writeFile(setup.tablePath(), "GIF         &1C:\\V\r\nTXT         &4C:\\MES PROGS,V2\\E\r\n");
        const QString pdf = setup.dataDir.filePath(u"extensions.pdf"_qs);
        {
            FakePrinter printer(pdf);
            Driver driver(setup, printer);
            QCOMPARE(driver.entries(), (QStringList{u"GIF         &1C:\\V"_qs, u"TXT         &4C:\\MES PROGS"_qs,
                                                    u"V2\\E"_qs}));
            QCOMPARE(driver.label(u"count"_qs), u" 3 extensions"_qs);
            driver.click(u"print"_qs);
            QCOMPARE(printer.printedLines(), (QStringList{u"03-21-2001"_qs, QString()} + driver.entries()));
        }
        // The first word of every line, 2000 twips from the left edge, top to bottom.
        QList<TestSupport::PdfWord> starts;
        for (const TestSupport::PdfWord &word : TestSupport::pdfWords(pdf)) {
            if (qAbs(word.box.left() - 2000 / 20.0) < 2)
                starts.append(word);
        }
        std::sort(starts.begin(), starts.end(), [](const auto &a, const auto &b) { return a.box.top() < b.box.top(); });
        QStringList firstWords;
        for (const TestSupport::PdfWord &word : std::as_const(starts))
            firstWords.append(word.text);
        QCOMPARE(firstWords, (QStringList{u"03-21-2001"_qs, u"GIF"_qs, u"TXT"_qs, u"V2\\E"_qs}));
    }

};

QTEST_MAIN(tst_ExtensionsForm)
#include "tst_extensionsform.moc"
