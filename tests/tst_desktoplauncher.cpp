#include "desktoplauncher.h"

#include <QTest>

// A PATH holding only `present`, in /usr/bin.
static std::function<QString(const QString &)> only(const QStringList &present)
{
    return [present](const QString &name) { return present.contains(name) ? u"/usr/bin/"_qs + name : QString(); };
}

static QStringList line(const CommandLine &command)
{
    return QStringList{command.program} + command.arguments;
}

class tst_DesktopLauncher : public QObject
{
    Q_OBJECT

private slots:
    void commands()
    {
        QCOMPARE(line(displaySettingsCommand(only({u"arandr"_qs, u"kcmshell5"_qs}))), (QStringList{u"/usr/bin/kcmshell5"_qs, u"kcm_kscreen"_qs}));
        QCOMPARE(line(displaySettingsCommand(only({u"gnome-control-center"_qs, u"arandr"_qs}))),
                 (QStringList{u"/usr/bin/gnome-control-center"_qs, u"display"_qs}));
        QCOMPARE(line(displaySettingsCommand(only({}))), QStringList{QString()});

        // Names that a shell would misread reach wine as one argument.
        const QString odd = u"/media/cd/JEUX $(rm)/A B;C.EXE"_qs;
        QCOMPARE(line(wineCommand(odd, only({u"wine"_qs}))), (QStringList{u"/usr/bin/wine"_qs, u"start"_qs, u"/unix"_qs, odd}));
        QCOMPARE(line(wineCommand(odd, only({u"dosbox"_qs}))).first(), QString());
        QCOMPARE(line(dosCommand(u"/media/cd/Jeux DOS/TETRIS.COM"_qs, only({u"wine"_qs, u"dosbox"_qs}))),
                 (QStringList{u"/usr/bin/dosbox"_qs, u"-c"_qs, u"mount c \"/media/cd/Jeux DOS\""_qs, u"-c"_qs, u"c:"_qs, u"-c"_qs, u"TETRIS.COM"_qs}));
        // No dosbox: wine, else nothing.
        QCOMPARE(line(dosCommand(u"/cd/T.COM"_qs, only({u"wine"_qs}))), (QStringList{u"/usr/bin/wine"_qs, u"start"_qs, u"/unix"_qs, u"/cd/T.COM"_qs}));
        QCOMPARE(line(dosCommand(u"/cd/T.COM"_qs, only({}))).first(), QString());

        QCOMPARE(helpPageName(u"DEMO.HLP"_qs), u"demo.htm"_qs);
        QCOMPARE(helpPageName(u"Kalvex.hlp"_qs), u"kalvex.htm"_qs);
    }
};

QTEST_GUILESS_MAIN(tst_DesktopLauncher)
#include "tst_desktoplauncher.moc"
