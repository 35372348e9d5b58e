#include "desktoplauncher.h"

#include <QTest>

class tst_DesktopLauncher : public QObject
{
    Q_OBJECT

private slots:
    void displaySettingsToolIsTheFirstFound()
    {
        const auto only = [](QStringList present) {
            return [present](const QString &name) {
                return present.contains(name) ? u"/usr/bin/"_qs + name : QString();
            };
        };
        CommandLine command = displaySettingsCommand(only({u"arandr"_qs, u"kcmshell5"_qs}));
        QCOMPARE(command.program, u"/usr/bin/kcmshell5"_qs);
        QCOMPARE(command.arguments, QStringList{u"kcm_kscreen"_qs});
        command = displaySettingsCommand(only({u"gnome-control-center"_qs, u"arandr"_qs}));
        QCOMPARE(command.program, u"/usr/bin/gnome-control-center"_qs);
        QCOMPARE(command.arguments, QStringList{u"display"_qs});
        QVERIFY(displaySettingsCommand(only({})).program.isEmpty());
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
    }
};

QTEST_GUILESS_MAIN(tst_DesktopLauncher)
#include "tst_desktoplauncher.moc"
