// What the window manager gets as each window's title (_NET_WM_NAME, read back with xprop) under
// a real X server: the titles exactly, with nothing appended. Run under xvfb-run; without an X
// server the test says why and skips.
#include "datadirectory.h"
#include "fakeservices.h"
#include "mainform.h"
#include "programsetup.h"
#include "testsupport.h"
#include "widgetdialogs.h"

#include <QApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {

// The _NET_WM_NAME of a window as xprop prints it: _NET_WM_NAME(UTF8_STRING) = "title".
QString windowManagerName(QWidget *window)
{
    if (!window || !QTest::qWaitForWindowExposed(window))
        return u"(no window)"_qs;
    QProcess xprop;
    xprop.start(u"xprop"_qs, {u"-id"_qs, QString::number(window->winId()), u"_NET_WM_NAME"_qs});
    if (!xprop.waitForFinished(10000))
        return u"(xprop did not answer)"_qs;
    const QString out = QString::fromUtf8(xprop.readAllStandardOutput()).trimmed();
    return out.section(u'"', 1, -2);
}

} // namespace

class tst_WindowTitles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (QGuiApplication::platformName() != u"xcb"_qs) {
            if (qEnvironmentVariableIsSet("CI"))
                QFAIL("no X server: CI runs this test under xvfb-run");
            QSKIP("no X server (DISPLAY unset): the window manager's titles cannot be read here");
        }
        KALVEX_REQUIRE_PROGRAM(u"xprop"_qs);
        setUpProgram();
    }

    // The main window's title, and a box's as given, blanks included.
    void titlesAsTheyAre()
    {
        QTemporaryDir dir;
        FakeServices fakes;
        DataDirectory data(dir.path());
        MainForm main(data, fakes.services());
        main.show();
        QCOMPARE(windowManagerName(&main), u"Kalvex2"_qs);
        WidgetDialogs dialogs(fakes.launcher, QApplication::applicationName());
        QString seen;
        QTimer::singleShot(0, this, [&] {
            seen = windowManagerName(QApplication::activeModalWidget());
            QApplication::activeModalWidget()->close();
        });
        dialogs.question(u"Souhaitez-vous SUPPRIMER ce thème ?"_qs, u"Suppression de fichier "_qs, kDemoHelp);
        QCOMPARE(seen, u"Suppression de fichier "_qs);
    }
};

int main(int argc, char *argv[])
{
    // Under an X server the real window system is used, to read what the window manager gets.
    if (!qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    tst_WindowTitles test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_windowtitles.moc"
