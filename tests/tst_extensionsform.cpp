#include "datadirectory.h"
#include "extensionsform.h"
#include "fakeservices.h"
#include "testsupport.h"

#include <QAbstractButton>
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
#include <QTreeView>

using TestSupport::child;

namespace {

// A data directory, a medium as drive d: holding EDIT.COM and DOS/TOOL.EXE, and the window.
struct Fixture
{
    explicit Fixture(const QByteArray &table = {})
        : prepared(prepare(table))
    {
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
    }

    bool prepare(const QByteArray &table)
    {
        TestSupport::copyProgramFiles(dataDir.path());
        QDir(disk.path()).mkpath(u"DOS"_qs);
        TestSupport::writeFile(disk.filePath(u"EDIT.COM"_qs), "x");
        TestSupport::writeFile(disk.filePath(u"DOS/TOOL.EXE"_qs), "x");
        if (!table.isEmpty())
            TestSupport::writeFile(tablePath(), table);
        fakes.drives.list = {{u"c:"_qs, DriveType::Fixed, u"/"_qs}, {u"d:"_qs, DriveType::CdRom, disk.path()}};
        return true;
    }

    QString tablePath() const { return dataDir.filePath(u"extens.txt"_qs); }
    QString label(const QString &name) { return child<QLabel>(&window, name)->text(); }
    QListWidget *list(const QString &name) { return child<QListWidget>(&window, name); }
    void click(const QString &button) { QTest::mouseClick(child<QAbstractButton>(&window, button), Qt::LeftButton); }
    void clickItem(const QString &name, int row)
    {
        QTest::mouseClick(list(name)->viewport(), Qt::LeftButton, {}, list(name)->visualItemRect(list(name)->item(row)).center());
    }
    void add(const QString &extension)
    {
        auto *box = child<QLineEdit>(&window, u"newExtension"_qs);
        box->clear();
        QTest::keyClicks(box, extension);
        click(u"add"_qs);
    }

    QTemporaryDir dataDir;
    QTemporaryDir disk;
    FakeServices fakes;
    DataDirectory data{dataDir.path()};
    bool prepared;
    ExtensionsForm window{data, fakes.drives, fakes.dialogs, fakes.printer, fakes.pictures, fakes.clock};
};

} // namespace

class tst_ExtensionsForm : public QObject
{
    Q_OBJECT

private slots:
    void opensTopLeftWithEveryControl()
    {
        Fixture f;
        QCOMPARE(f.window.windowTitle(), u"Kalvex2 Extensions"_qs);
        QCOMPARE(f.window.frameGeometry().topLeft(), QPoint(0, 0));
        QCOMPARE(f.label(u"count"_qs), u" 0 extensions"_qs);
        QCOMPARE(f.label(u"currentDirectory"_qs), f.dataDir.path());
        QCOMPARE(f.list(u"classes"_qs)->count(), 9);
        QCOMPARE(f.list(u"classes"_qs)->item(8)->text(), u"Divers"_qs);
        QCOMPARE(f.fakes.pictures.icons, QStringList{f.dataDir.filePath(u"inkjet.ico"_qs)});
        QVERIFY(!QFile::exists(f.tablePath())); // opening writes nothing
        for (QWidget *control : f.window.findChildren<QWidget *>()) {
            // A label is named by its text: one showing no value yet has nothing to say.
            const auto *label = qobject_cast<QLabel *>(control);
            if (control->focusPolicy() != Qt::NoFocus && !control->inherits("QScrollBar") && control->isVisible()
                && !control->parentWidget()->inherits("QAbstractScrollArea") && !(label && label->text().isEmpty()))
                QVERIFY2(!QAccessible::queryAccessibleInterface(control)->text(QAccessible::Name).isEmpty(),
                         control->metaObject()->className());
        }
        f.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&f.window));
        QCOMPARE(QApplication::focusWidget(), child<QLineEdit>(&f.window, u"newExtension"_qs));
    }

    // The refusals are the core's (tst_extensiontable); here one, then entries added from a
    // program chosen in a directory of another drive, the choices kept for the next.
    void addsFromTheChosenProgramAndClass()
    {
        Fixture f;
        f.add(u"c"_qs);
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{u"Vous devez associer un logiciel à chaque nouvelle extension !"_qs});
        QTest::keyClick(child<QComboBox>(&f.window, u"drives"_qs), Qt::Key_Down);
        QCOMPARE(f.label(u"currentDirectory"_qs), f.disk.path());
        auto *files = child<QListView>(&f.window, u"programFiles"_qs);
        QCOMPARE(files->model()->rowCount(), 1); // EDIT.COM only
        auto *tree = child<QTreeView>(&f.window, u"directories"_qs);
        QModelIndex dos; // clicked once the tree lists it
        QTRY_VERIFY((dos = static_cast<QFileSystemModel *>(tree->model())->index(f.disk.filePath(u"DOS"_qs))).isValid()
                    && !tree->visualRect(dos).isEmpty());
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(dos).center());
        QCOMPARE(f.label(u"currentDirectory"_qs), f.disk.filePath(u"DOS"_qs));
        const QModelIndexList tool = files->model()->match(files->model()->index(0, 0), Qt::DisplayRole, u"TOOL.EXE"_qs);
        QCOMPARE(tool.size(), 1);
        QTest::mouseClick(files->viewport(), Qt::LeftButton, {}, files->visualRect(tool[0]).center());
        const QString program = f.disk.filePath(u"DOS/TOOL"_qs);
        QCOMPARE(f.label(u"chosenProgram"_qs), program);
        f.clickItem(u"classes"_qs, 8);
        QCOMPARE(f.label(u"chosenClass"_qs), u"Divers"_qs);
        f.click(u"add"_qs);
        f.add(u"txt"_qs);
        QCOMPARE(f.fakes.dialogs.messages().size(), 1);
        const QByteArray bytes = QFile::encodeName(program);
        QCOMPARE(TestSupport::readFile(f.tablePath()), "C         &9" + bytes + "\r\nTXT         &9" + bytes + "\r\n");
        QCOMPARE(f.list(u"lines"_qs)->count(), 2);
        QCOMPARE(f.label(u"count"_qs), u" 2 extensions"_qs);
        QCOMPARE(child<QLineEdit>(&f.window, u"newExtension"_qs)->text(), u"TXT"_qs);
    }

    void removesOnYesAndPrintsTheFields()
    {
        Fixture f("GIF         &1C:\\V\r\nTXT         &4C:\\MES PROGS,V2\\E\r\n");
        const QStringList fields = {u"GIF         &1C:\\V"_qs, u"TXT         &4C:\\MES PROGS"_qs, u"V2\\E"_qs};
        QCOMPARE(f.label(u"count"_qs), u" 3 extensions"_qs);
        f.click(u"print"_qs);
        QCOMPARE(f.fakes.printer.printedLines(), (QStringList{u"03-21-2001"_qs, QString()} + fields));

        f.clickItem(u"lines"_qs, 0);
        QCOMPARE(f.label(u"selected"_qs), fields[0]);
        f.click(u"remove"_qs); // the fake answers No
        const FakeDialogs::Shown question = f.fakes.dialogs.shown.last();
        QCOMPARE((QStringList{question.kind, question.text, question.title, question.help.file}),
                 (QStringList{u"question"_qs, u"Souhaitez-vous SUPPRIMER cette extension "_qs + fields[0],
                              u"Suppression de fichier "_qs, u"DEMO.HLP"_qs}));
        QCOMPARE(question.help.context, 1000);
        QCOMPARE(f.list(u"lines"_qs)->count(), 3);
        f.fakes.dialogs.answers = {Answer::Yes, Answer::Yes};
        f.click(u"remove"_qs);
        QCOMPARE(TestSupport::readFile(f.tablePath()), QByteArray("TXT         &4C:\\MES PROGS\r\nV2\\E\r\n"));
        QCOMPARE(f.label(u"count"_qs), u" 2 extensions"_qs);
        f.click(u"remove"_qs); // nothing selected: nothing removed
        QCOMPARE(f.fakes.dialogs.shown.last().text, u"Souhaitez-vous SUPPRIMER cette extension "_qs);
        QCOMPARE(f.list(u"lines"_qs)->count(), 2);
    }
};

QTEST_MAIN(tst_ExtensionsForm)
#include "tst_extensionsform.moc"
