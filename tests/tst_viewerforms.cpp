#include "datadirectory.h"
#include "fakeservices.h"
#include "foundfiles.h"
#include "icongalleryform.h"
#include "imageviewerform.h"
#include "pictureframe.h"
#include "samplepictures.h"
#include "testsupport.h"
#include "textviewerform.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

using TestSupport::child;

namespace {

// Found rows stored as on a disc in D:, found in a real directory here (none: the medium is gone).
struct FakeFoundFiles final : FoundFiles
{
    int count() const override { return int(rows.size()); }
    QString name(int row) const override { return at(row).first; }
    QString storedPath(int row) const override { return u"D:\\IMAGES\\"_qs + at(row).first; }
    QString localPath(int row) const override { return at(row).second; }

    QList<std::pair<QString, QString>> rows; // name, local path
    mutable bool readPastTheEnd = false;
    std::pair<QString, QString> at(int row) const
    {
        readPastTheEnd |= row < 0 || row >= rows.size();
        return readPastTheEnd ? std::pair<QString, QString>() : rows.at(row);
    }
};

// A data directory with the program's icons, a folder of found files, and the services; every
// reading of the clock moves it on half a second and runs onWait, so each wait of a show ends.
struct Fixture
{
    Fixture() : data(dir.path())
    {
        TestSupport::copyProgramFiles(dir.path());
        QDir(dir.path()).mkdir(u"copies"_qs);
        fakes.clock.onRead = [this] {
            fakes.clock.advanceSeconds(0.5);
            if (onWait)
                onWait();
        };
    }
    QString copies() const { return dir.filePath(u"copies"_qs); }
    void add(const QString &name, const QByteArray &bytes) // a file, or none (gone) when empty
    {
        found.rows.append({name, bytes.isEmpty() ? QString() : dir.filePath(name)});
        TestSupport::writeFile(dir.filePath(name), bytes);
    }
    ViewerForm::Services services() { return {data, fakes.clock, fakes.dialogs, fakes.folderPicker, fakes.pictures}; }

    QTemporaryDir dir;
    DataDirectory data;
    FakeServices fakes;
    FakeFoundFiles found;
    std::function<void()> onWait;
};

QString text(QWidget &window, const char *name) { return child<QLabel>(&window, QLatin1String(name))->text(); }

} // namespace

class TestViewerForms : public QObject
{
    Q_OBJECT

private slots:
    // The show draws each picture as fitted (a WMF too) and starts at 2 seconds whatever the
    // slider said; a file that does not load, or is gone, leaves the previous picture. Closing the
    // window hides it and runs the show out without waits. Then the copy of the file last shown, and
    // its print at its natural size.
    void imageViewer()
    {
        Fixture f;
        f.add(u"PETIT.BMP"_qs, "-");
        SamplePictures::bands(100, 80, {Qt::red}).save(f.dir.filePath(u"PETIT.BMP"_qs), "BMP");
        f.add(u"CASSE.BMP"_qs, "BM not a bitmap");
        f.add(u"ABSENT.BMP"_qs, {});
        f.add(u"DESSIN.WMF"_qs, SamplePictures::wmf(120, 60, Qt::white, Qt::blue, u"é"_qs));
        ImageViewerForm window(f.found, f.services(), f.fakes.printer);
        window.show();
        window.frame()->setFixedSize(400, 300);
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(window.windowTitle() + text(window, "sliderCaption") + text(window, "delay"),
                 u"Visualisation des images:BMP,GIF,JPG,ICO,WMF,DIB,CUR ou EMF Temps de défilement : 1 à 10 secondes 2"_qs);
        child<QSlider>(&window, u"delaySlider"_qs)->setValue(9); // the slider drives the delay
        QVERIFY(text(window, "delay") == u"9"_qs && !child<QAbstractButton>(&window, u"print"_qs)->icon().isNull());
        QStringList seen;
        f.onWait = [&] {
            const QImage canvas = window.frame()->canvas();
            const QString shown = u"%1 %2x%3 %4 %5 delay=%6"_qs.arg(text(window, "currentFile").mid(10)).arg(window.sizingBox().width())
                                      .arg(window.sizingBox().height()).arg(QColor(canvas.pixel(150, 110)).name(),
                                           QColor(canvas.pixel(149, 110)).name(), text(window, "delay"));
            if (seen.isEmpty() || seen.last() != shown)
                seen.append(shown);
            if (window.isVisible())
                window.close();
        };
        child<QAbstractButton>(&window, u"start"_qs)->click();
        QVERIFY(!window.isVisible());
        QCOMPARE(seen.join(u'|').replace(window.palette().color(QPalette::Window).name(), u"bg"_qs),
                 u"PETIT.BMP 100x80 #ff0000 bg delay=2|PETIT.BMP 100x80 #ff0000 bg delay=|CASSE.BMP 100x80 #ff0000 bg delay=|"
                 "ABSENT.BMP 100x80 #ff0000 bg delay=|DESSIN.WMF 120x60 bg bg delay="_qs); // the WMF's white edge at (140, 120)
        QVERIFY(f.fakes.dialogs.shown.isEmpty());

        window.copy(); // folder choice cancelled
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{u"<Annuler> a été activé"_qs});
        f.fakes.folderPicker.answers = {f.copies()};
        f.fakes.dialogs.answers = {Answer::Yes};
        window.copy();
        const FakeDialogs::Shown question = f.fakes.dialogs.shown.last();
        QCOMPARE(question.text, u"Etes-vous sûr de vouloir copier  D:\\IMAGES\\DESSIN.WMF dans le répertoire %1/ ?"_qs.arg(f.copies()));
        QVERIFY(question.title == u"Copie d'un fichier"_qs && question.help.context == 1000);
        QCOMPARE(text(window, "targetPath"), f.copies() + u"/DESSIN.WMF"_qs);
        QCOMPARE(TestSupport::readFile(f.copies() + u"/DESSIN.WMF"_qs), TestSupport::readFile(f.dir.filePath(u"DESSIN.WMF"_qs)));
        window.print();
        QCOMPARE(f.fakes.printer.log, (QStringList{u"x=2000"_qs, u"y=1000"_qs, u"choosePrinter"_qs, u"picture=120x60@1,1"_qs, u"endDocument"_qs}));
    }

    // 72 icons, a broken one and a gone one: the first page whole, then cells 1 to 4; captions
    // drop ".ICO"; a file that does not load, or is gone, keeps the cell's icon. Copying all copies every file there, after one question.
    void gallery()
    {
        Fixture f;
        const auto colourOf = [](int i) { return QColor::fromHsv((i * 37) % 360, 255, 200 + i % 50).rgb(); };
        for (int i = 1; i <= 72; ++i)
            f.add(u"ICON%1.ICO"_qs.arg(i, 3, 10, QLatin1Char('0')), SamplePictures::icon(SamplePictures::bands(32, 32, {colourOf(i)}), 24, {}));
        f.add(u"CASSE.ICO"_qs, "not an icon");
        f.add(u"ABSENT.ICO"_qs, {});
        IconGalleryForm window(f.found, f.services());
        QCOMPARE(window.windowTitle() + text(window, "sliderCaption"), u"Visualisation des Icônes Temps de défilement : 1 à 20 secondes "_qs);
        window.show();
        child<QAbstractButton>(&window, u"start"_qs)->click();
        for (int n : {1, 2, 3, 4, 70})
            QCOMPARE(window.cellPicture(n)->pixmap().toImage().pixel(16, 16), colourOf(n <= 2 ? n + 70 : n));
        QVERIFY(window.cellCaption(70)->text() == u"ICON070"_qs && window.cellCaption(4)->text() == u"ABSENT"_qs);

        f.fakes.folderPicker.answers = {f.copies()};
        f.fakes.dialogs.answers = {Answer::Yes};
        window.copyAll();
        QCOMPARE(f.fakes.dialogs.shown.size(), 1);
        QCOMPARE(f.fakes.dialogs.shown.first().text, u"Etes-vous sûr de vouloir copier tous les icônes dans le répertoire %1/ ?"_qs.arg(f.copies()));
        const QStringList copied = QDir(f.copies()).entryList(QDir::Files);
        QVERIFY(copied.size() == 73 && copied.first() == u"CASSE.ICO"_qs);
        f.onWait = [&] { f.found.rows.resize(1); }; // fewer rows while the show waits: none read past the end
        window.start();
        QVERIFY(!f.found.readPastTheEnd);
    }

    // Each text as read from its file, a gone one as an empty box, silently; a new search leaving
    // fewer rows while the show runs: no row is read past the end. Then the print: every line
    // starts at the left of the block centred on the page, left of the page here. Then a stop.
    void textViewer()
    {
        Fixture f;
        f.add(u"LISEZMOI.TXT"_qs, "Ol\xe9\r\ndeux");
        f.add(u"FILE_ID.DIZ"_qs, {});
        f.add(u"T.TXT"_qs, "texte");
        TextViewerForm window(f.found, f.services(), f.fakes.printer);
        window.resize(1100, 500);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(window.windowTitle(), u"Kalvex2: Fichiers DIZ ou  TXT"_qs);
        QStringList seen;
        f.onWait = [&] {
            const QString shown = text(window, "currentFile") + u'=' + window.textBox()->toPlainText();
            if (seen.isEmpty() || seen.last() != shown)
                seen.append(shown);
            if (seen.size() == 2)
                f.found.rows.resize(2);
        };
        window.start();
        QCOMPARE(seen, (QStringList{u"D:\\IMAGES\\LISEZMOI.TXT=Olé\ndeux"_qs, u"D:\\IMAGES\\FILE_ID.DIZ="_qs}));
        QVERIFY(!f.found.readPastTheEnd && f.fakes.dialogs.shown.isEmpty());

        window.textBox()->setPlainText(u"un\ndeux"_qs);
        f.fakes.printer.fontAnswer = {QString(), 14, true, true};
        f.fakes.printer.colourAnswer = Qt::darkRed;
        window.print();
        const int x = (f.fakes.printer.pageWidth() - window.textBox()->width() * 1440 / window.textBox()->logicalDpiX()) / 2;
        QVERIFY(x < 0);
        QCOMPARE(f.fakes.printer.fontFlags, 3);
        QCOMPARE(f.fakes.printer.log, (QStringList{u"choosePrinter"_qs, u"chooseFont"_qs, u"font=MS Sans Serif,14,italic"_qs,
            u"chooseColour"_qs, u"colour=#800000"_qs, u"y=10"_qs, u"x=%1"_qs.arg(x), u"print:un"_qs, u"x=%1"_qs.arg(x),
            u"print:deux"_qs, u"endDocument"_qs}));

        // The stop box ticked during a wait ends the show and the window.
        auto *stop = child<QCheckBox>(&window, u"stop"_qs);
        f.onWait = [&] {
            if (!stop->isChecked())
                QTest::mouseClick(stop, Qt::LeftButton);
        };
        window.start();
        QVERIFY(!window.isVisible());
        QCOMPARE(text(window, "currentFile"), u"D:\\IMAGES\\LISEZMOI.TXT"_qs);
    }
};

QTEST_MAIN(TestViewerForms)
#include "tst_viewerforms.moc"
