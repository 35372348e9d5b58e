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

// Found rows over real files: stored as on a disc in D:, found in a real directory here.
class FakeFoundFiles final : public FoundFiles
{
public:
    struct Row
    {
        QString name;
        QString localPath; // empty: the medium is not there
    };
    int count() const override { return int(rows.size()); }
    QString name(int row) const override { return at(row).name; }
    QString storedPath(int row) const override { return u"D:\\IMAGES\\"_qs + at(row).name; }
    QString localPath(int row) const override { return at(row).localPath; }

    QList<Row> rows;
    mutable bool readPastTheEnd = false;

private:
    Row at(int row) const
    {
        readPastTheEnd |= row < 0 || row >= rows.size();
        return readPastTheEnd ? Row() : rows.at(row);
    }
};

// A data directory with the program's icons, a folder of found files, and the services; every
// reading of the clock moves it on half a second and runs onWait, so each wait of a show ends.
struct Fixture
{
    Fixture()
        : data(dir.path())
    {
        TestSupport::copyProgramFiles(dir.path());
        QDir(dir.path()).mkdir(u"disc"_qs);
        QDir(dir.path()).mkdir(u"copies"_qs);
        fakes.clock.onRead = [this] {
            fakes.clock.advanceSeconds(0.5);
            if (onWait)
                onWait();
        };
    }
    QString disc(const QString &name) const { return dir.filePath(u"disc/"_qs + name); }
    QString copies() const { return dir.filePath(u"copies"_qs); }
    void addFile(const QString &name, const QByteArray &bytes)
    {
        TestSupport::writeFile(disc(name), bytes);
        found.rows.append({name, disc(name)});
    }
    void addPicture(const QString &name, int width, int height, Qt::GlobalColor colour)
    {
        SamplePictures::bands(width, height, {colour}).save(disc(name), "BMP");
        found.rows.append({name, disc(name)});
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
    // Each window's title and captions (name=text, the title first); the slider drives the delay.
    void controls_data()
    {
        QTest::addColumn<int>("window"); // 0 pictures, 1 icons, 2 texts
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("pictures") << 0 << QStringList{u"=Visualisation des images:BMP,GIF,JPG,ICO,WMF,DIB,CUR ou EMF "_qs,
                                                      u"sliderCaption=Temps de défilement : 1 à 10 secondes "_qs, u"delay=2"_qs};
        QTest::newRow("icons") << 1 << QStringList{u"=Visualisation des Icônes "_qs, u"sliderCaption=Temps de défilement : 1 à 20 secondes "_qs};
        QTest::newRow("texts") << 2 << QStringList{u"=Kalvex2: Fichiers DIZ ou  TXT"_qs};
    }
    void controls()
    {
        QFETCH(int, window);
        QFETCH(QStringList, texts);
        Fixture f;
        std::unique_ptr<ViewerForm> form;
        if (window == 0)
            form = std::make_unique<ImageViewerForm>(f.found, f.services(), f.fakes.printer);
        else if (window == 1)
            form = std::make_unique<IconGalleryForm>(f.found, f.services());
        else
            form = std::make_unique<TextViewerForm>(f.found, f.services(), f.fakes.printer);
        form->show();
        QCOMPARE(u'=' + form->windowTitle(), texts.takeFirst());
        for (const QString &expected : std::as_const(texts))
            QCOMPARE(expected.section(u'=', 0, 0) + u'=' + text(*form, qPrintable(expected.section(u'=', 0, 0))), expected);
        child<QSlider>(form.get(), u"delaySlider"_qs)->setValue(7);
        QCOMPARE(text(*form, "delay"), u"7"_qs);
        if (window != 1)
            QVERIFY(!child<QAbstractButton>(form.get(), u"print"_qs)->icon().isNull());
    }

    // The show draws each picture as fitted (a WMF too); a file that does not load, or is not
    // there, leaves the previous picture; the start resets the delay the slider had.
    void imageViewerShow()
    {
        Fixture f;
        f.addPicture(u"PETIT.BMP"_qs, 100, 80, Qt::red);
        f.addFile(u"CASSE.BMP"_qs, QByteArray("BM not a bitmap"));
        f.found.rows.append({u"ABSENT.BMP"_qs, QString()});
        f.addFile(u"DESSIN.WMF"_qs, SamplePictures::wmf(120, 60, Qt::white, Qt::blue, u"é"_qs));
        ImageViewerForm window(f.found, f.services(), f.fakes.printer);
        window.show();
        window.frame()->setFixedSize(400, 300);
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        child<QSlider>(&window, u"delaySlider"_qs)->setValue(9);
        QStringList seen;
        f.onWait = [&] {
            const QImage canvas = window.frame()->canvas();
            const QString shown = QStringLiteral("%1 %2 %3 delay=%4").arg(text(window, "currentFile"), QColor(canvas.pixel(150, 110)).name(),
                                                                       QColor(canvas.pixel(149, 110)).name(), text(window, "delay"));
            if (seen.isEmpty() || seen.last() != shown)
                seen.append(shown);
        };
        child<QAbstractButton>(&window, u"start"_qs)->click();
        const QString background = window.palette().color(QPalette::Window).name();
        QCOMPARE(seen, (QStringList{ // the WMF at (140, 120): the page's white left edge
            u"D:\\IMAGES\\PETIT.BMP #ff0000 %1 delay=2"_qs.arg(background), u"D:\\IMAGES\\CASSE.BMP #ff0000 %1 delay=2"_qs.arg(background),
            u"D:\\IMAGES\\ABSENT.BMP #ff0000 %1 delay=2"_qs.arg(background), u"D:\\IMAGES\\DESSIN.WMF %1 %1 delay=2"_qs.arg(background)}));
        QVERIFY(f.fakes.dialogs.shown.isEmpty());
    }

    // Closing the window during a show: hidden after one second, the show runs out at once.
    void closingDuringTheShow()
    {
        Fixture f;
        for (int i = 0; i < 4; ++i)
            f.addPicture(u"P%1.BMP"_qs.arg(i), 10, 10, Qt::green);
        ImageViewerForm window(f.found, f.services(), f.fakes.printer);
        window.show();
        const QDateTime start = f.fakes.clock.current;
        f.onWait = [&] {
            if (window.isVisible() && text(window, "delay") == u"2"_qs)
                window.close();
        };
        window.start();
        QVERIFY(!window.isVisible());
        QCOMPARE(text(window, "delay"), QString());
        QCOMPARE(text(window, "currentFile"), u"D:\\IMAGES\\P3.BMP"_qs);
        QVERIFY(start.secsTo(f.fakes.clock.current) < 8); // not three more waits of 2 seconds
    }

    // Copy after a show the stop box ended, then print at the picture's natural size.
    void imageViewerCopyAndPrint()
    {
        Fixture f;
        f.addPicture(u"PLAGE.BMP"_qs, 123, 45, Qt::blue);
        ImageViewerForm window(f.found, f.services(), f.fakes.printer);
        window.show();
        auto *stop = child<QCheckBox>(&window, u"stop"_qs);
        f.onWait = [&] {
            if (!stop->isChecked())
                QTest::mouseClick(stop, Qt::LeftButton); // ends the show and the window
        };
        window.start();
        QVERIFY(!window.isVisible());
        f.onWait = nullptr;
        window.copy(); // folder choice cancelled
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{u"<Annuler> a été activé"_qs});
        f.fakes.folderPicker.answers = {f.copies()};
        f.fakes.dialogs.answers = {Answer::Yes};
        window.copy();
        const FakeDialogs::Shown question = f.fakes.dialogs.shown.last();
        QCOMPARE(question.text, u"Etes-vous sûr de vouloir copier  D:\\IMAGES\\PLAGE.BMP dans le répertoire %1/ ?"_qs.arg(f.copies()));
        QVERIFY(question.title == u"Copie d'un fichier"_qs && question.help.context == 1000);
        QCOMPARE(text(window, "targetPath"), f.copies() + u"/PLAGE.BMP"_qs);
        QCOMPARE(TestSupport::readFile(f.copies() + u"/PLAGE.BMP"_qs), TestSupport::readFile(f.disc(u"PLAGE.BMP"_qs)));
        window.print();
        QCOMPARE(f.fakes.printer.log, (QStringList{u"x=2000"_qs, u"y=1000"_qs, u"choosePrinter"_qs,
                                                   u"picture=123x45@1,1"_qs, u"endDocument"_qs}));
    }

    // 72 icons: the first page whole, then cells 1 and 2 with icons 71 and 72, cell 3 keeping the
    // first page's; captions drop ".ICO"; a file that does not load keeps the cell's icon.
    void galleryPages()
    {
        Fixture f;
        const auto colourOf = [](int i) { return QColor::fromHsv((i * 37) % 360, 255, 200 + i % 50).rgb(); };
        for (int i = 1; i <= 72; ++i)
            f.addFile(u"ICON%1.ICO"_qs.arg(i, 3, 10, QLatin1Char('0')), SamplePictures::icon(SamplePictures::bands(32, 32, {colourOf(i)}), 24, {}));
        f.found.rows.append({u"ABSENT.ICO"_qs, QString()});
        IconGalleryForm window(f.found, f.services());
        window.show();
        const auto cellColour = [&window](int n) { return window.cellPicture(n)->pixmap().toImage().pixel(16, 16); };
        child<QAbstractButton>(&window, u"start"_qs)->click();
        for (int n : {1, 2, 3})
            QCOMPARE(cellColour(n), colourOf(n == 3 ? 3 : n + 70));
        QCOMPARE(window.cellCaption(70)->text(), u"ICON070"_qs);
        QCOMPARE(window.cellCaption(3)->text(), u"ABSENT"_qs);
    }

    // Every found file there is copied; none is asked for alone.
    void galleryCopiesEveryFile()
    {
        Fixture f;
        IconGalleryForm window(f.found, f.services());
        f.addFile(u"UN.ICO"_qs, "one");
        f.found.rows.append({u"ABSENT.ICO"_qs, QString()});
        f.addFile(u"DEUX.CUR"_qs, "two");
        f.fakes.folderPicker.answers = {f.copies()};
        f.fakes.dialogs.answers = {Answer::Yes};
        window.copyAll();
        QCOMPARE(f.fakes.dialogs.shown.size(), 1);
        QCOMPARE(f.fakes.dialogs.shown.first().text, u"Etes-vous sûr de vouloir copier tous les icônes dans le répertoire %1/ ?"_qs.arg(f.copies()));
        QCOMPARE(QDir(f.copies()).entryList(QDir::Files), (QStringList{u"DEUX.CUR"_qs, u"UN.ICO"_qs}));
    }

    // Each text as read from its file; one whose medium is gone shows an empty box, silently; a
    // new search leaving fewer rows while a show runs: no row is read past the end.
    void textViewerShow()
    {
        Fixture f;
        f.addFile(u"LISEZMOI.TXT"_qs, "Ol\xe9\r\n");
        f.found.rows.append({u"FILE_ID.DIZ"_qs, QString()});
        f.addFile(u"T.TXT"_qs, "texte");
        TextViewerForm window(f.found, f.services(), f.fakes.printer);
        QStringList seen;
        f.onWait = [&] {
            const QString shown = text(window, "currentFile") + u'=' + window.textBox()->toPlainText();
            if (seen.isEmpty() || seen.last() != shown)
                seen.append(shown);
            if (seen.size() == 2)
                f.found.rows.resize(2);
        };
        window.start();
        QCOMPARE(seen, (QStringList{u"D:\\IMAGES\\LISEZMOI.TXT=Olé\n"_qs, u"D:\\IMAGES\\FILE_ID.DIZ="_qs}));
        QVERIFY(!f.found.readPastTheEnd && f.fakes.dialogs.shown.isEmpty());
        IconGalleryForm icons(f.found, f.services());
        f.found.rows = QList<FakeFoundFiles::Row>(72, {u"I.ICO"_qs, QString()});
        f.onWait = [&] { f.found.rows.resize(1); };
        icons.start();
        QVERIFY(!f.found.readPastTheEnd);
    }

    // A page narrower than the text box: every line starts left of the page, as computed.
    void textViewerPrint()
    {
        Fixture f;
        f.addFile(u"A.TXT"_qs, "un\r\ndeux");
        TextViewerForm window(f.found, f.services(), f.fakes.printer);
        window.resize(1100, 500);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.start();
        f.fakes.printer.fontAnswer = {};
        f.fakes.printer.fontAnswer.pointSize = 14;
        f.fakes.printer.fontAnswer.italic = true;
        f.fakes.printer.fontAnswer.bold = true;
        f.fakes.printer.colourAnswer = Qt::darkRed;
        window.print();
        const int x = (f.fakes.printer.pageWidth() - window.textBox()->width() * 1440 / window.textBox()->logicalDpiX()) / 2;
        QVERIFY(x < 0);
        QCOMPARE(f.fakes.printer.fontFlags, 3);
        QCOMPARE(f.fakes.printer.log, (QStringList{u"choosePrinter"_qs, u"chooseFont"_qs, u"font=MS Sans Serif,14,italic"_qs,
            u"chooseColour"_qs, u"colour=#800000"_qs, u"y=10"_qs, u"x=%1"_qs.arg(x), u"print:un"_qs, u"x=%1"_qs.arg(x),
            u"print:deux"_qs, u"endDocument"_qs}));
    }
};

QTEST_MAIN(TestViewerForms)
#include "tst_viewerforms.moc"
