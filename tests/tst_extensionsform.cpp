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
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QTreeView>

using TestSupport::child;

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

    template<typename T>
    T *child(const QString &name) { return TestSupport::child<T>(&window, name); }
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
    void opensTopLeftWithEveryControl()
    {
        Setup setup;
        Driver driver(setup, setup.fakes.printer);
        QCOMPARE(driver.window.windowTitle(), u"Kalvex2 Extensions"_qs);
        QCOMPARE(driver.window.frameGeometry().topLeft(), QPoint(0, 0));
        const QList<QPair<QString, QString>> labels = {{u"count"_qs, u" 0 extensions"_qs},
                                                       {u"currentDirectory"_qs, setup.dataDir.path()}};
        for (const auto &[name, text] : labels)
            QCOMPARE(driver.label(name), text);
        auto *classes = child<QListWidget>(&driver.window, u"classes"_qs);
        QCOMPARE(classes->count(), 9);
        QCOMPARE(classes->item(8)->text(), u"Divers"_qs);
        QCOMPARE(setup.fakes.pictures.icons, QStringList{setup.dataDir.filePath(u"inkjet.ico"_qs)});
        QVERIFY(!QFile::exists(setup.tablePath())); // opening writes nothing
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
        QCOMPARE(QApplication::focusWidget(), child<QLineEdit>(&driver.window, u"newExtension"_qs));
    }

    // The refusals are the core's (tst_extensiontable); here one, then an entry added from a
    // program chosen in a nested directory of another drive, the choices kept for the next.
    void addsFromTheChosenProgramAndClass()
    {
        Setup setup;
        Driver driver(setup, setup.fakes.printer);
        driver.typeExtension(u"c"_qs);
        driver.click(u"add"_qs);
        QCOMPARE(setup.fakes.dialogs.messages(),
                 QStringList{u"Vous devez associer un logiciel à chaque nouvelle extension !"_qs});
        driver.chooseDriveBelow();
        QCOMPARE(driver.label(u"currentDirectory"_qs), setup.disk.path());
        QCOMPARE(child<QListView>(&driver.window, u"programFiles"_qs)->model()->rowCount(), 1); // EDIT.COM only
        driver.clickDirectory(setup.disk.filePath(u"DOS"_qs), true);
        driver.clickDirectory(setup.disk.filePath(u"DOS/SUB"_qs), false);
        QCOMPARE(driver.label(u"currentDirectory"_qs), setup.disk.filePath(u"DOS/SUB"_qs));
        driver.clickProgramFile(u"TOOL.EXE"_qs);
        const QString program = setup.disk.filePath(u"DOS/SUB/TOOL"_qs);
        QCOMPARE(driver.label(u"chosenProgram"_qs), program);
        driver.chooseClass(8);
        QCOMPARE(driver.label(u"chosenClass"_qs), u"Divers"_qs);
        driver.click(u"add"_qs);
        driver.typeExtension(u"txt"_qs);
        driver.click(u"add"_qs);
        QCOMPARE(setup.fakes.dialogs.messages().size(), 1);
        QCOMPARE(setup.table(), "C         &9" + QFile::encodeName(program) + "\r\nTXT         &9"
                                    + QFile::encodeName(program) + "\r\n");
        QCOMPARE(driver.entries().size(), 2);
        QCOMPARE(driver.label(u"count"_qs), u" 2 extensions"_qs);
        QCOMPARE(child<QLineEdit>(&driver.window, u"newExtension"_qs)->text(), u"TXT"_qs);
    }

    void removesOnYesAndPrintsTheFields()
    {
        Setup setup;
        TestSupport::writeFile(setup.tablePath(), "GIF         &1C:\\V\r\nTXT         &4C:\\MES PROGS,V2\\E\r\n");
        Driver driver(setup, setup.fakes.printer);
        QCOMPARE(driver.entries(), (QStringList{u"GIF         &1C:\\V"_qs, u"TXT         &4C:\\MES PROGS"_qs, u"V2\\E"_qs}));
        QCOMPARE(driver.label(u"count"_qs), u" 3 extensions"_qs);
        driver.click(u"print"_qs);
        QCOMPARE(setup.fakes.printer.printedLines(), (QStringList{u"03-21-2001"_qs, QString()} + driver.entries()));
        QVERIFY(setup.fakes.printer.log.contains(u"x=2000"_qs));

        driver.chooseEntry(0);
        QCOMPARE(driver.label(u"selected"_qs), u"GIF         &1C:\\V"_qs);
        driver.click(u"remove"_qs); // the fake answers No
        const FakeDialogs::Shown question = setup.fakes.dialogs.shown.last();
        QCOMPARE(question.kind, u"question"_qs);
        QCOMPARE(question.text, u"Souhaitez-vous SUPPRIMER cette extension GIF         &1C:\\V"_qs);
        QCOMPARE(question.title, u"Suppression de fichier "_qs);
        QCOMPARE(question.help.file, u"DEMO.HLP"_qs);
        QCOMPARE(question.help.context, 1000);
        QCOMPARE(driver.entries().size(), 3);
        setup.fakes.dialogs.answers = {Answer::Yes, Answer::Yes};
        driver.click(u"remove"_qs);
        QCOMPARE(setup.table(), QByteArray("TXT         &4C:\\MES PROGS\r\nV2\\E\r\n"));
        QCOMPARE(driver.label(u"count"_qs), u" 2 extensions"_qs);
        driver.click(u"remove"_qs); // nothing selected: nothing removed
        QCOMPARE(setup.fakes.dialogs.shown.last().text, u"Souhaitez-vous SUPPRIMER cette extension "_qs);
        QCOMPARE(driver.entries().size(), 2);
    }
};

QTEST_MAIN(tst_ExtensionsForm)
#include "tst_extensionsform.moc"
