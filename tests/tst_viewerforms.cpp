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
    ViewerForm::Services services() { return {data, fakes.clock, fakes.dialogs, fakes.folderPicker, fakes.pictures}; }

    QTemporaryDir dir;
    DataDirectory data;
    FakeServices fakes;
    FakeFoundFiles found;
    std::function<void()> onWait; // runs at every reading of the clock: inside the show's waits
};

QString text(QWidget &window, const char *name)
{
    return child<QLabel>(&window, QLatin1String(name))->text();
}

} // namespace

class TestViewerForms : public QObject
{
    Q_OBJECT

private slots:
    void controls_data()
    {
        QTest::addColumn<int>("window"); // 0 pictures, 1 icons, 2 texts
        QTest::addColumn<QString>("name"); // empty: the window's title
        QTest::addColumn<QString>("text");
        QTest::newRow("pictures title") << 0 << QString() << u"Visualisation des images:BMP,GIF,JPG,ICO,WMF,DIB,CUR ou EMF "_qs;
        QTest::newRow("pictures slider") << 0 << u"sliderCaption"_qs << u"Temps de défilement : 1 à 10 secondes "_qs;
        QTest::newRow("pictures delay") << 0 << u"delay"_qs << u"2"_qs;
        QTest::newRow("pictures pause") << 0 << u"pause"_qs << u"PAUSE"_qs;
        QTest::newRow("icons title") << 1 << QString() << u"Visualisation des Icônes "_qs;
        QTest::newRow("icons slider") << 1 << u"sliderCaption"_qs << u"Temps de défilement : 1 à 20 secondes "_qs;
        QTest::newRow("texts title") << 2 << QString() << u"Kalvex2: Fichiers DIZ ou  TXT"_qs;
    }
    void controls()
    {
        QFETCH(int, window);
        QFETCH(QString, name);
        QFETCH(QString, text);
        Fixture f;
        std::unique_ptr<ViewerForm> form;
        if (window == 0)
            form = std::make_unique<ImageViewerForm>(f.found, f.services(), f.fakes.printer);
        else if (window == 1)
            form = std::make_unique<IconGalleryForm>(f.found, f.services());
        else
            form = std::make_unique<TextViewerForm>(f.found, f.services(), f.fakes.printer);
        form->show();
        if (name.isEmpty())
            QCOMPARE(form->windowTitle(), text);
        else if (auto *box = form->findChild<QCheckBox *>(name))
            QCOMPARE(box->text(), text);
        else
            QCOMPARE(child<QLabel>(form.get(), name)->text(), text);
        if (window == 0) {
            child<QSlider>(form.get(), u"delaySlider"_qs)->setValue(7);
            QCOMPARE(::text(*form, "delay"), u"7"_qs);
            QVERIFY(!child<QAbstractButton>(form.get(), u"print"_qs)->icon().isNull());
        }
    }

    // The show draws each picture by the fitting rule; a file that does not load, or is not
    // there, leaves the previous picture; the start resets the delay the slider had.
    void imageViewerShow()
    {
        Fixture f;
        f.addPicture(u"PETIT.BMP"_qs, SamplePictures::bands(100, 80, {Qt::red}));
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
            const QString current = text(window, "currentFile");
            if (!seen.isEmpty() && seen.last().startsWith(current))
                return;
            const QImage canvas = window.frame()->canvas();
            seen.append(QStringLiteral("%1 %2x%3 %4 %5 delay=%6").arg(current).arg(window.sizingBox().width())
                            .arg(window.sizingBox().height()).arg(QColor(canvas.pixel(150, 110)).name())
                            .arg(QColor(canvas.pixel(149, 110)).name()).arg(text(window, "delay")));
        };
        child<QAbstractButton>(&window, u"start"_qs)->click();
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
            if (window.isVisible() && text(window, "delay") == u"2"_qs)
                window.close();
        };
        child<QAbstractButton>(&window, u"start"_qs)->click();
        QVERIFY(!window.isVisible());
        QCOMPARE(text(window, "delay"), QString());
        QCOMPARE(text(window, "currentFile"), u"D:\\IMAGES\\P3.BMP"_qs);
        QVERIFY(start.secsTo(f.fakes.clock.current) < 8); // not three more waits of 2 seconds
    }

    // Copy after a show the stop box ended, then print at the picture's natural size.
    void imageViewerCopyAndPrint()
    {
        Fixture f;
        f.addPicture(u"PLAGE.BMP"_qs, SamplePictures::bands(123, 45, {Qt::blue}));
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
        f.fakes.folderPicker.answers = {u"/"_qs};
        window.copy(); // answered No: nothing copied
        QCOMPARE(text(window, "targetFolder"), u"/"_qs);
        const FakeDialogs::Shown question = f.fakes.dialogs.shown.last();
        QCOMPARE(question.text, u"Etes-vous sûr de vouloir copier  D:\\IMAGES\\PLAGE.BMP dans le répertoire / ?"_qs);
        QCOMPARE(question.title, u"Copie d'un fichier"_qs);
        QCOMPARE(question.help.context, 1000);
        f.fakes.folderPicker.answers = {f.copies()};
        f.fakes.dialogs.answers = {Answer::Yes};
        window.copy();
        QCOMPARE(text(window, "targetPath"), f.copies() + u"/PLAGE.BMP"_qs);
        QCOMPARE(TestSupport::readFile(f.copies() + u"/PLAGE.BMP"_qs), TestSupport::readFile(f.disc(u"PLAGE.BMP"_qs)));

        window.print();
        QCOMPARE(f.fakes.printer.log, (QStringList{u"x=2000"_qs, u"y=1000"_qs, u"choosePrinter"_qs,
                                                   u"picture=123x45@1,1"_qs, u"endDocument"_qs}));
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
        child<QAbstractButton>(&window, u"start"_qs)->click();
        QCOMPARE(waits, 1);
        QCOMPARE(atWait, u"D:\\IMAGES\\ICON070.ICO"_qs);
        for (int n : {1, 5})
            QCOMPARE(cellColour(n).rgb(), colourOf(70 + n).rgb());
        QCOMPARE(cellColour(6).rgb(), colourOf(6).rgb());
        QCOMPARE(window.cellCaption(1)->text(), u"ICON071"_qs);
        QCOMPARE(window.cellCaption(6)->text(), u"ICON006"_qs);

        // A file that does not load keeps the cell's icon.
        f.found.rows = {{u"A.IC"_qs, QString()}, {u"ICO"_qs, f.disc(u"ICON001.ICO"_qs)}};
        window.start();
        QCOMPARE(cellColour(1).rgb(), colourOf(71).rgb());
        QCOMPARE(window.cellCaption(2)->text(), u"ICON072"_qs);
        QCOMPARE(cellColour(2).rgb(), colourOf(1).rgb());
    }

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
        QCOMPARE(f.fakes.dialogs.shown.first().text,
                 u"Etes-vous sûr de vouloir copier tous les icônes dans le répertoire "_qs + f.copies() + u"/ ?"_qs);
        QCOMPARE(QDir(f.copies()).entryList(QDir::Files), (QStringList{u"DEUX.CUR"_qs, u"UN.ICO"_qs}));
        QCOMPARE(f.fakes.dialogs.messages(), QStringList());
    }

    // Texts: an empty file and a missing one show an empty box, silently; Windows-1252 decoded.
    void textViewerShow()
    {
        Fixture f;
        f.addFile(u"LISEZMOI.TXT"_qs, "Ol\xe9\r\n");
        f.addFile(u"VIDE.TXT"_qs, {});
        f.found.rows.append({u"FILE_ID.DIZ"_qs, QString()});
        TextViewerForm window(f.found, f.services(), f.fakes.printer);
        window.show();
        QStringList seen;
        f.onWait = [&] {
            const QString shown = text(window, "currentFile") + QLatin1Char('=') + window.textBox()->toPlainText();
            if (seen.isEmpty() || seen.last() != shown)
                seen.append(shown);
        };
        window.start();
        QCOMPARE(seen, (QStringList{u"D:\\IMAGES\\LISEZMOI.TXT=Olé\n"_qs, u"D:\\IMAGES\\VIDE.TXT="_qs,
                                    u"D:\\IMAGES\\FILE_ID.DIZ="_qs}));
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
        f.found.rows = QList<FakeFoundFiles::Row>(72, {u"I.ICO"_qs, QString()});
        icons.start();
        QVERIFY(!f.found.readPastTheEnd);
    }

    // A page narrower than the text box: the text starts left of the page, as computed.
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
        f.fakes.printer.colourAnswer = Qt::darkRed;
        window.print();
        const int boxTwips = window.textBox()->width() * 1440 / window.textBox()->logicalDpiX();
        const int x = (f.fakes.printer.pageWidth() - boxTwips) / 2;
        QVERIFY(x < 0);
        QCOMPARE(f.fakes.printer.fontFlags, 3);
        QCOMPARE(f.fakes.printer.log, (QStringList{
            u"choosePrinter"_qs, u"chooseFont"_qs, u"font=MS Sans Serif,14,italic"_qs, u"chooseColour"_qs,
            u"colour=#800000"_qs, u"y=10"_qs, QStringLiteral("x=%1").arg(x), u"print:un"_qs,
            QStringLiteral("x=%1").arg(x), u"print:deux"_qs, u"endDocument"_qs}));
    }
};

QTEST_MAIN(TestViewerForms)
#include "tst_viewerforms.moc"
