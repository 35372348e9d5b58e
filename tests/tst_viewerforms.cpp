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
#include <QProcess>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

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
    QString storedPath(int row) const override { return QStringLiteral("D:\\IMAGES\\") + at(row).name; }
    QString localPath(int row) const override { return at(row).localPath; }

    QList<Row> rows;
    mutable bool readPastTheEnd = false;

private:
    Row at(int row) const
    {
        if (row < 0 || row >= rows.size()) {
            readPastTheEnd = true;
            return {};
        }
        return rows.at(row);
    }
};

// A data directory with the program's icons, a folder of found files, and the services.
struct Fixture
{
    Fixture()
        : data(dir.path())
    {
        TestSupport::copyProgramFiles(dir.path());
        QDir(dir.path()).mkdir(QStringLiteral("disc"));
        QDir(dir.path()).mkdir(QStringLiteral("copies"));
        // Every reading of the clock moves it on, so each wait ends after a few readings.
        fakes.clock.onRead = [this] {
            fakes.clock.advanceSeconds(0.5);
            if (onWait)
                onWait();
        };
    }

    QString disc(const QString &name) const { return dir.filePath(QStringLiteral("disc/") + name); }
    QString copies() const { return dir.filePath(QStringLiteral("copies")); }
    void addFile(const QString &name, const QByteArray &bytes)
    {
        TestSupport::writeFile(disc(name), bytes);
        found.rows.append({name, disc(name)});
    }
    void addPicture(const QString &name, const QImage &image)
    {
        image.save(disc(name), "BMP");
        found.rows.append({name, disc(name)});
    }
    ViewerForm::Services services()
    {
        return {data, fakes.clock, fakes.dialogs, fakes.folderPicker, fakes.pictures};
    }

    QTemporaryDir dir;
    DataDirectory data;
    FakeServices fakes;
    FakeFoundFiles found;
    std::function<void()> onWait; // runs at every reading of the clock: inside the show's waits
};

template<class T>
T *child(QWidget &window, const QString &name)
{
    T *widget = window.findChild<T *>(name);
    if (!widget)
        qFatal("no %s", qPrintable(name));
    return widget;
}

QString text(QWidget &window, const char *name)
{
    return child<QLabel>(window, QLatin1String(name))->text();
}

} // namespace

class TestViewerForms : public QObject
{
    Q_OBJECT

private slots:
    void imageViewerOpensWithItsTextsAndDelay()
    {
        Fixture f;
        ImageViewerForm window(f.found, f.services(), f.fakes.printer);
        window.show();
        QCOMPARE(window.windowTitle(), QStringLiteral("Visualisation des images:BMP,GIF,JPG,ICO,WMF,DIB,CUR ou EMF "));
        QCOMPARE(text(window, "sliderCaption"), QStringLiteral("Temps de défilement : 1 à 10 secondes "));
        QCOMPARE(text(window, "delay"), QStringLiteral("2"));
        QCOMPARE(child<QCheckBox>(window, QStringLiteral("pause"))->text(), QStringLiteral("PAUSE"));
        auto *slider = child<QSlider>(window, QStringLiteral("delaySlider"));
        QCOMPARE(slider->maximum(), 10);
        slider->setValue(7);
        QCOMPARE(text(window, "delay"), QStringLiteral("7"));
        QVERIFY(!child<QAbstractButton>(window, QStringLiteral("copy"))->icon().isNull());
        QVERIFY(!child<QAbstractButton>(window, QStringLiteral("print"))->icon().isNull());
    }

    // The show draws each picture by the fitting rule; a file that does not load, or is not
    // there, leaves the previous picture; the start resets the delay the slider had.
    void imageViewerShow()
    {
        Fixture f;
        f.addPicture(QStringLiteral("PETIT.BMP"), SamplePictures::bands(100, 80, {Qt::red}));
        f.addFile(QStringLiteral("CASSE.BMP"), QByteArray("BM not a bitmap"));
        f.found.rows.append({QStringLiteral("ABSENT.BMP"), QString()});
        f.addFile(QStringLiteral("DESSIN.WMF"), SamplePictures::wmf(120, 60, Qt::white, Qt::blue, QStringLiteral("é")));
        ImageViewerForm window(f.found, f.services(), f.fakes.printer);
        window.show();
        window.frame()->setFixedSize(400, 300);
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        child<QSlider>(window, QStringLiteral("delaySlider"))->setValue(9);

        QStringList seen;
        f.onWait = [&] {
            const QString current = text(window, "currentFile");
            if (!seen.isEmpty() && seen.last().startsWith(current))
                return;
            const QImage canvas = window.frame()->canvas();
            seen.append(QStringLiteral("%1 %2x%3 %4 %5 delay=%6").arg(current).arg(window.sizingBox().width())
                            .arg(window.sizingBox().height()).arg(QColor(canvas.pixel(150, 110)).name())
                            .arg(QColor(canvas.pixel(149, 110)).name()).arg(text(window, "delay")));
        };
        child<QAbstractButton>(window, QStringLiteral("start"))->click();
        const QString background = window.palette().color(QPalette::Window).name();
        QCOMPARE(seen, (QStringList{
            QStringLiteral("D:\\IMAGES\\PETIT.BMP 100x80 #ff0000 %1 delay=2").arg(background),
            QStringLiteral("D:\\IMAGES\\CASSE.BMP 100x80 #ff0000 %1 delay=2").arg(background),
            QStringLiteral("D:\\IMAGES\\ABSENT.BMP 100x80 #ff0000 %1 delay=2").arg(background),
            // 120 x 60 at (140, 120): the page's white left edge, the fill from 142
            QStringLiteral("D:\\IMAGES\\DESSIN.WMF 120x60 %1 %1 delay=2").arg(background),
        }));
        QCOMPARE(f.fakes.dialogs.shown.size(), 0);
    }

    // Closing the window during a show: hidden after one second, the show runs out at once.
    void closingDuringTheShow()
    {
        Fixture f;
        for (int i = 0; i < 4; ++i)
            f.addPicture(QStringLiteral("P%1.BMP").arg(i), SamplePictures::bands(10, 10, {Qt::green}));
        ImageViewerForm window(f.found, f.services(), f.fakes.printer);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QDateTime start = f.fakes.clock.current;
        f.onWait = [&] {
            if (window.isVisible() && text(window, "delay") == QStringLiteral("2"))
                window.close();
        };
        child<QAbstractButton>(window, QStringLiteral("start"))->click();
        QVERIFY(!window.isVisible());
        QCOMPARE(text(window, "delay"), QString());
        QCOMPARE(text(window, "currentFile"), QStringLiteral("D:\\IMAGES\\P3.BMP"));
        QVERIFY(start.secsTo(f.fakes.clock.current) < 8); // not three more waits of 2 seconds
    }

    void imageViewerCopy()
    {
        Fixture f;
        f.addPicture(QStringLiteral("PLAGE.BMP"), SamplePictures::bands(20, 20, {Qt::blue}));
        ImageViewerForm window(f.found, f.services(), f.fakes.printer);
        window.show();
        f.onWait = [&] { child<QCheckBox>(window, QStringLiteral("stop"))->setChecked(true); };
        window.start();
        f.onWait = nullptr;

        // Cancelled folder choice.
        window.copy();
        QCOMPARE(f.fakes.dialogs.messages(), QStringList{QStringLiteral("<Annuler> a été activé")});

        // A root: one separator, and the question answered No copies nothing.
        f.fakes.folderPicker.answers = {QStringLiteral("/")};
        window.copy();
        QCOMPARE(text(window, "targetFolder"), QStringLiteral("/"));
        const FakeDialogs::Shown question = f.fakes.dialogs.shown.last();
        QCOMPARE(question.kind, QStringLiteral("question"));
        QCOMPARE(question.text, QStringLiteral("Etes-vous sûr de vouloir copier  D:\\IMAGES\\PLAGE.BMP dans le répertoire / ?"));
        QCOMPARE(question.title, QStringLiteral("Copie d'un fichier"));
        QCOMPARE(question.help.file, QStringLiteral("DEMO.HLP"));
        QCOMPARE(question.help.context, 1000);

        f.fakes.folderPicker.answers = {f.copies()};
        f.fakes.dialogs.answers = {Answer::Yes};
        window.copy();
        QCOMPARE(text(window, "targetPath"), f.copies() + QStringLiteral("/PLAGE.BMP"));
        QCOMPARE(TestSupport::readFile(f.copies() + QStringLiteral("/PLAGE.BMP")), TestSupport::readFile(f.disc(QStringLiteral("PLAGE.BMP"))));
    }

    // The picture goes on the page at its natural size: read back from the PDF.
    void imageViewerPrint()
    {
        KALVEX_REQUIRE_PROGRAM(QStringLiteral("pdfimages"));
        Fixture f;
        f.addPicture(QStringLiteral("PLAGE.BMP"), SamplePictures::bands(123, 45, {Qt::blue, Qt::yellow}));
        const QString pdf = f.dir.filePath(QStringLiteral("out.pdf"));
        FakePrinter printer(pdf);
        ImageViewerForm window(f.found, f.services(), printer);
        window.show();
        window.start();
        window.print();
        QCOMPARE(printer.log.mid(0, 3), (QStringList{QStringLiteral("x=2000"), QStringLiteral("y=1000"), QStringLiteral("choosePrinter")}));
        QProcess process;
        process.start(QStringLiteral("pdfimages"), {QStringLiteral("-list"), pdf});
        QVERIFY(process.waitForFinished(30000));
        const QStringList lines = QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QVERIFY2(lines.size() >= 3, qPrintable(lines.join(QLatin1Char('\n'))));
        const QStringList fields = lines.at(2).simplified().split(QLatin1Char(' '));
        QCOMPARE(fields.at(3), QStringLiteral("123"));
        QCOMPARE(fields.at(4), QStringLiteral("45"));
    }

    // 75 icons: the first page whole, then cells 1 to 5 with icons 71 to 75 and cells 6 to 70
    // keeping the first page's; one wait only. Captions drop ".ICO".
    void galleryPages()
    {
        Fixture f;
        const auto colourOf = [](int i) { return QColor::fromHsv((i * 37) % 360, 255, 200 + i % 50); };
        for (int i = 1; i <= 75; ++i)
            f.addFile(QStringLiteral("ICON%1.ICO").arg(i, 3, 10, QLatin1Char('0')),
                      SamplePictures::icon(SamplePictures::bands(32, 32, {colourOf(i)}), 24, {}));
        IconGalleryForm window(f.found, f.services());
        window.show();
        QCOMPARE(window.windowTitle(), QStringLiteral("Visualisation des Icônes "));
        QCOMPARE(text(window, "sliderCaption"), QStringLiteral("Temps de défilement : 1 à 20 secondes "));
        const auto cellColour = [&window](int n) { return QColor(window.cellPicture(n)->pixmap().toImage().pixel(16, 16)); };
        int waits = 0;
        QString atWait;
        f.onWait = [&] {
            if (text(window, "currentFile") != atWait) {
                atWait = text(window, "currentFile");
                ++waits;
                QCOMPARE(cellColour(70).rgb(), colourOf(70).rgb());
            }
        };
        child<QAbstractButton>(window, QStringLiteral("start"))->click();
        QCOMPARE(waits, 1);
        QCOMPARE(atWait, QStringLiteral("D:\\IMAGES\\ICON070.ICO"));
        for (int n : {1, 5})
            QCOMPARE(cellColour(n).rgb(), colourOf(70 + n).rgb());
        for (int n : {6, 70})
            QCOMPARE(cellColour(n).rgb(), colourOf(n).rgb());
        QCOMPARE(window.cellCaption(1)->text(), QStringLiteral("ICON071"));
        QCOMPARE(window.cellCaption(6)->text(), QStringLiteral("ICON006"));
        QCOMPARE(text(window, "currentFile"), QStringLiteral("D:\\IMAGES\\ICON075.ICO"));

        // Four characters give an empty caption, three keep the cell's; a file that does not
        // load keeps the cell's icon.
        f.found.rows = {{QStringLiteral("A.IC"), QString()}, {QStringLiteral("ICO"), f.disc(QStringLiteral("ICON001.ICO"))}};
        window.start();
        QCOMPARE(window.cellCaption(1)->text(), QString());
        QCOMPARE(cellColour(1).rgb(), colourOf(71).rgb());
        QCOMPARE(window.cellCaption(2)->text(), QStringLiteral("ICON072"));
        QCOMPARE(cellColour(2).rgb(), colourOf(1).rgb());
    }

    // The stop box ticked during the wait after a full page: the next page never starts.
    void galleryStopDuringTheWait()
    {
        Fixture f;
        for (int i = 1; i <= 72; ++i)
            f.found.rows.append({QStringLiteral("I%1.ICO").arg(i), QString()});
        IconGalleryForm window(f.found, f.services());
        window.show();
        f.onWait = [&] {
            if (!child<QCheckBox>(window, QStringLiteral("stop"))->isChecked())
                QTest::mouseClick(child<QCheckBox>(window, QStringLiteral("stop")), Qt::LeftButton);
        };
        window.start();
        QCOMPARE(text(window, "currentFile"), QStringLiteral("D:\\IMAGES\\I70.ICO"));
        QCOMPARE(window.cellCaption(1)->text(), QStringLiteral("I1"));
        QVERIFY(!window.isVisible());
    }

    void galleryCopiesEveryFile()
    {
        Fixture f;
        IconGalleryForm window(f.found, f.services());
        // No file found: the question, then nothing.
        f.fakes.folderPicker.answers = {f.copies()};
        f.fakes.dialogs.answers = {Answer::Yes};
        window.copyAll();
        QCOMPARE(f.fakes.dialogs.shown.size(), 1);
        QCOMPARE(f.fakes.dialogs.shown.first().text,
                 QStringLiteral("Etes-vous sûr de vouloir copier tous les icônes dans le répertoire ") + f.copies() + QStringLiteral("/ ?"));
        QVERIFY(QDir(f.copies()).isEmpty());

        f.addFile(QStringLiteral("UN.ICO"), "one");
        f.found.rows.append({QStringLiteral("ABSENT.ICO"), QString()});
        f.addFile(QStringLiteral("DEUX.CUR"), "two");
        f.fakes.folderPicker.answers = {f.copies()};
        f.fakes.dialogs.answers = {Answer::Yes};
        window.copyAll();
        QCOMPARE(QDir(f.copies()).entryList(QDir::Files), (QStringList{QStringLiteral("DEUX.CUR"), QStringLiteral("UN.ICO")}));
        QCOMPARE(f.fakes.dialogs.messages(), QStringList());
    }

    // Texts: an empty file and a missing one show an empty box, silently; Windows-1252 decoded.
    void textViewerShow()
    {
        Fixture f;
        f.addFile(QStringLiteral("LISEZMOI.TXT"), "Ol\xe9\r\n");
        f.addFile(QStringLiteral("VIDE.TXT"), {});
        f.found.rows.append({QStringLiteral("FILE_ID.DIZ"), QString()});
        TextViewerForm window(f.found, f.services(), f.fakes.printer);
        window.show();
        QCOMPARE(window.windowTitle(), QStringLiteral("Kalvex2: Fichiers DIZ ou  TXT"));
        QStringList seen;
        f.onWait = [&] {
            const QString shown = text(window, "currentFile") + QLatin1Char('=') + window.textBox()->toPlainText();
            if (seen.isEmpty() || seen.last() != shown)
                seen.append(shown);
        };
        window.start();
        QCOMPARE(seen, (QStringList{QStringLiteral("D:\\IMAGES\\LISEZMOI.TXT=Olé\n"), QStringLiteral("D:\\IMAGES\\VIDE.TXT="),
                                    QStringLiteral("D:\\IMAGES\\FILE_ID.DIZ=")}));
        QCOMPARE(f.fakes.dialogs.shown.size(), 0);
    }

    // A new search while a show runs leaves fewer rows: the show reads none past the end.
    void rowsShrinkingDuringTheShow()
    {
        Fixture f;
        for (int i = 0; i < 3; ++i)
            f.addFile(QStringLiteral("T%1.TXT").arg(i), "texte");
        TextViewerForm texts(f.found, f.services(), f.fakes.printer);
        IconGalleryForm icons(f.found, f.services());
        f.onWait = [&] { f.found.rows.resize(1); };
        texts.start();
        QVERIFY(!f.found.readPastTheEnd);
        f.found.rows = QList<FakeFoundFiles::Row>(72, {QStringLiteral("I.ICO"), QString()});
        icons.start();
        QVERIFY(!f.found.readPastTheEnd);
    }

    // A page narrower than the text box: the text starts left of the page, as computed.
    void textViewerPrint()
    {
        Fixture f;
        f.addFile(QStringLiteral("A.TXT"), "un\r\ndeux");
        TextViewerForm window(f.found, f.services(), f.fakes.printer);
        window.resize(1100, 500);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.start();
        f.fakes.printer.fontAnswer = {};
        f.fakes.printer.fontAnswer.pointSize = 14;
        f.fakes.printer.fontAnswer.italic = true;
        f.fakes.printer.colourAnswer = Qt::darkRed;
        window.print();
        const int boxTwips = window.textBox()->width() * 1440 / window.textBox()->logicalDpiX();
        const int x = (f.fakes.printer.pageWidth() - boxTwips) / 2;
        QVERIFY(x < 0);
        QCOMPARE(f.fakes.printer.fontFlags, 3);
        QCOMPARE(f.fakes.printer.log, (QStringList{
            QStringLiteral("choosePrinter"), QStringLiteral("chooseFont"), QStringLiteral("font=MS Sans Serif,14,italic"),
            QStringLiteral("chooseColour"), QStringLiteral("colour=#800000"), QStringLiteral("y=10"),
            QStringLiteral("x=%1").arg(x), QStringLiteral("print:un"), QStringLiteral("x=%1").arg(x),
            QStringLiteral("print:deux"), QStringLiteral("endDocument")}));
    }
};

QTEST_MAIN(TestViewerForms)
#include "tst_viewerforms.moc"
