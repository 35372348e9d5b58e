#include "desktoplauncher.h"

#include <QTest>

// A PATH holding only `present`, in /usr/bin.
static std::function<QString(const QString &)> only(const QStringList &present)
{
    return [present](const QString &name) { return present.contains(name) ? u"/usr/bin/"_qs + name : QString(); };
}

class tst_DesktopLauncher : public QObject
{
    Q_OBJECT

private slots:
    void displaySettingsToolIsTheFirstFound()
    {
        CommandLine command = displaySettingsCommand(only({u"arandr"_qs, u"kcmshell5"_qs}));
        QCOMPARE(command.program, u"/usr/bin/kcmshell5"_qs);
        QCOMPARE(command.arguments, QStringList{u"kcm_kscreen"_qs});
        command = displaySettingsCommand(only({u"gnome-control-center"_qs, u"arandr"_qs}));
        QCOMPARE(command.program, u"/usr/bin/gnome-control-center"_qs);
        QCOMPARE(command.arguments, QStringList{u"display"_qs});
        QVERIFY(displaySettingsCommand(only({})).program.isEmpty());
    }

    void oldProgramsStartThroughWineOrDosbox()
    {
        // Names that a shell would misread reach wine as one argument.
        const QString odd = u"/media/cd/JEUX $(rm)/A B;C.EXE"_qs;
        CommandLine command = wineCommand(odd, only({u"wine"_qs}));
        QCOMPARE(command.program, u"/usr/bin/wine"_qs);
        QCOMPARE(command.arguments, (QStringList{u"start"_qs, u"/unix"_qs, odd}));
        QVERIFY(wineCommand(odd, only({u"dosbox"_qs})).program.isEmpty());

        command = dosCommand(u"/media/cd/Jeux DOS/TETRIS.COM"_qs, only({u"wine"_qs, u"dosbox"_qs}));
        QCOMPARE(command.program, u"/usr/bin/dosbox"_qs);
        QCOMPARE(command.arguments, (QStringList{u"-c"_qs, u"mount c \"/media/cd/Jeux DOS\""_qs, u"-c"_qs, u"c:"_qs,
                                                 u"-c"_qs, u"TETRIS.COM"_qs}));
        // No dosbox: wine, else nothing.
        QCOMPARE(dosCommand(u"/cd/T.COM"_qs, only({u"wine"_qs})).arguments, (QStringList{u"start"_qs, u"/unix"_qs, u"/cd/T.COM"_qs}));
        QVERIFY(dosCommand(u"/cd/T.COM"_qs, only({})).program.isEmpty());
    }

    void helpFilesStandForPagesOfTheirName()
    {
        QCOMPARE(helpPageName(u"DEMO.HLP"_qs), u"demo.htm"_qs);
        QCOMPARE(helpPageName(u"Kalvex.hlp"_qs), u"kalvex.htm"_qs);
    }

    void missingProgramsAndFilesAreIgnored()
    {
        DesktopLauncher launcher(u"/nonexistent-kalvex"_qs);
        launcher.startProgram(u"kalvex-no-such-program"_qs, {u"x"_qs});
        launcher.startProgram(u"/nonexistent-kalvex/prog"_qs, {});
        launcher.openDocument(u"/nonexistent-kalvex/kalvex2.htm"_qs);
        launcher.openHelp({u"DEMO.HLP"_qs, 1000});
        launcher.startWindowsFile(u"/nonexistent-kalvex/SETUP.EXE"_qs);
        launcher.startDosProgram(u"/nonexistent-kalvex/TETRIS.COM"_qs);
    }
};

QTEST_GUILESS_MAIN(tst_DesktopLauncher)
#include "tst_desktoplauncher.moc"
