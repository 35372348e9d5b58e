// Shows one viewer over a folder of files, drives it as a user would (running, paused, copying,
// stopped) and grabs the screen at each step: a look at the windows under a real X server.
//   viewer_demo samples DIR                 writes sample pictures, icons and texts into DIR
//   viewer_demo images|icons|texts DIR SHOTS   shows the viewer over DIR's files, screenshots in SHOTS
#include "datadirectory.h"
#include "desktoplauncher.h"
#include "foundfiles.h"
#include "icongalleryform.h"
#include "imageviewerform.h"
#include "qtpictureloader.h"
#include "samplepictures.h"
#include "systemclock.h"
#include "testsupport.h"
#include "textviewerform.h"
#include "widgetdialogs.h"
#include "fakeprinter.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QMessageBox>
#include <QPainter>
#include <QScreen>
#include <QTimer>

namespace {

class FolderFiles final : public FoundFiles
{
public:
    explicit FolderFiles(const QString &folder) : m_dir(folder)
    {
        m_names = m_dir.entryList(QDir::Files, QDir::Name);
    }
    int count() const override { return int(m_names.size()); }
    QString name(int row) const override { return m_names.at(row); }
    QString storedPath(int row) const override { return QStringLiteral("D:\\DEMO\\") + m_names.at(row); }
    QString localPath(int row) const override { return m_dir.filePath(m_names.at(row)); }

private:
    QDir m_dir;
    QStringList m_names;
};

class ChosenFolder final : public FolderPicker
{
public:
    std::optional<QString> pickFolder() override { return folder; }
    QString folder;
};

QImage scene(int width, int height, const QColor &sky)
{
    QImage image(width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(image.rect(), sky);
    painter.setBrush(QColor(250, 210, 60));
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(QPointF(width * 0.75, height * 0.3), height * 0.12, height * 0.12);
    painter.setBrush(QColor(40, 120, 60));
    painter.drawPolygon(QPolygonF{{0, double(height)}, {width * 0.3, height * 0.45}, {width * 0.6, double(height)}});
    painter.setBrush(QColor(60, 150, 80));
    painter.drawRect(QRectF(0, height * 0.8, width, height * 0.2));
    return image;
}

void writeSamples(const QString &folder)
{
    QDir dir(folder);
    dir.mkpath(QStringLiteral("images"));
    dir.mkpath(QStringLiteral("icones"));
    dir.mkpath(QStringLiteral("textes"));
    const QString images = dir.filePath(QStringLiteral("images/"));
    scene(320, 200, QColor(120, 170, 230)).save(images + QStringLiteral("PAYSAGE.BMP"), "BMP");
    scene(180, 120, QColor(230, 150, 90)).save(images + QStringLiteral("SOIR.JPG"), "JPEG");
    scene(640, 400, QColor(90, 90, 160)).save(images + QStringLiteral("GRAND.JPG"), "JPEG");
    TestSupport::writeFile(images + QStringLiteral("NOEL.WMF"),
                           SamplePictures::wmf(300, 150, QColor(255, 250, 230), QColor(180, 30, 30), QStringLiteral("Joyeux Noël à tous")));
    TestSupport::writeFile(images + QStringLiteral("ETE.EMF"),
                           SamplePictures::emf(300, 150, QColor(230, 250, 255), QColor(30, 90, 180), QStringLiteral("Été <&> Hiver")));
    const QString icons = dir.filePath(QStringLiteral("icones/"));
    for (int i = 1; i <= 75; ++i) {
        QImage picture(32, 32, QImage::Format_ARGB32);
        picture.fill(Qt::white);
        QPainter painter(&picture);
        painter.setBrush(QColor::fromHsv((i * 29) % 360, 200, 230));
        painter.setPen(Qt::black);
        if (i % 3 == 0)
            painter.drawEllipse(3, 3, 26, 26);
        else if (i % 3 == 1)
            painter.drawRect(4, 4, 24, 24);
        else
            painter.drawPolygon(QPolygon{{16, 2}, {30, 29}, {2, 29}});
        painter.end();
        QImage mask(32, 32, QImage::Format_RGB32);
        mask.fill(Qt::white);
        TestSupport::writeFile(icons + QStringLiteral("ICONE%1.%2").arg(i, 2, 10, QLatin1Char('0')).arg(i % 10 ? QStringLiteral("ICO") : QStringLiteral("CUR")),
                               SamplePictures::icon(picture, 24, mask, i % 10 == 0));
    }
    const QString texts = dir.filePath(QStringLiteral("textes/"));
    TestSupport::writeFile(texts + QStringLiteral("FILE_ID.DIZ"), "   Kalvex d\xe9mo 1.0\r\n   Un catalogue de vos disquettes\r\n   (c) 1998\r\n\x1a");
    TestSupport::writeFile(texts + QStringLiteral("LISEZMOI.TXT"), "Lisez-moi\r\n=========\r\n\r\nCe disque contient des images, des ic\xf4nes et des textes.\r\nBonne d\xe9\x63ouverte !\r\n");
    TestSupport::writeFile(texts + QStringLiteral("VIDE.TXT"), {});
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false); // the stopped viewer hides; its screenshot follows
    const QStringList args = app.arguments();
    if (args.size() == 3 && args.at(1) == QLatin1String("samples")) {
        writeSamples(args.at(2));
        return 0;
    }
    if (args.size() != 4)
        return 2;
    const QString kind = args.at(1);
    const QString shots = args.at(3);
    QDir().mkpath(shots);
    FolderFiles found(args.at(2));
    DataDirectory data(TestSupport::programDirectory()); // KALVEX_PROGRAM_DIR: the staged icons
    SystemClock clock;
    DesktopLauncher launcher(data.path());
    WidgetDialogs dialogs(launcher, QStringLiteral("Kalvex2"));
    ChosenFolder folder;
    folder.folder = QDir(shots).filePath(QStringLiteral("copies"));
    QDir().mkpath(folder.folder);
    QtPictureLoader pictures;
    FakePrinter printer;
    const ViewerForm::Services services{data, clock, dialogs, folder, pictures};

    std::unique_ptr<ViewerForm> window;
    if (kind == QLatin1String("images"))
        window = std::make_unique<ImageViewerForm>(found, services, printer);
    else if (kind == QLatin1String("icons"))
        window = std::make_unique<IconGalleryForm>(found, services);
    else
        window = std::make_unique<TextViewerForm>(found, services, printer);
    window->show();

    const auto shot = [&](const QString &name) {
        QApplication::screens().first()->grabWindow(0).save(QDir(shots).filePath(kind + QLatin1Char('-') + name + QStringLiteral(".png")));
    };
    const auto child = [&](const char *name) { return window->findChild<QAbstractButton *>(QLatin1String(name)); };
    int at = 0;
    const auto after = [&](int ms, std::function<void()> action) {
        at += ms;
        QTimer::singleShot(at, window.get(), action);
    };
    const int firstWait = kind == QLatin1String("icons") ? 1000 : 3000; // the gallery's first page
    after(0, [&] { child("start")->click(); });
    after(firstWait, [&] { shot(QStringLiteral("1-running")); });
    after(300, [&] { child("pause")->click(); });
    after(2500, [&] { shot(QStringLiteral("2-paused")); });
    after(300, [&] { child("pause")->click(); });
    after(300, [&] { child(kind == QLatin1String("icons") ? "copyAll" : "copy")->click(); });
    after(700, [&] { shot(QStringLiteral("3-copying")); });
    after(200, [&] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
            box->button(QMessageBox::Yes)->click();
    });
    after(2500, [&] { shot(QStringLiteral("4-after-copy")); });
    after(300, [&] { child("stop")->click(); });
    after(400, [&] { shot(QStringLiteral("5-stopping")); });
    after(1500, [&] { shot(QStringLiteral("6-stopped")); QCoreApplication::exit(0); });
    return app.exec();
}
