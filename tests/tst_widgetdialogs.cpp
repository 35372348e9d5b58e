#include "fakelauncher.h"
#include "widgetdialogs.h"

#include <QApplication>
#include <QDialog>
#include <QInputDialog>
#include <QLibraryInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTranslator>

namespace {

// Runs `act` on the first modal box that opens.
template <typename Box>
void whenBoxOpens(std::function<void(Box *)> act)
{
    auto *timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, act] {
        if (auto *box = qobject_cast<Box *>(QApplication::activeModalWidget())) {
            timer->stop();
            timer->deleteLater();
            act(box);
        }
    });
    timer->start();
}

} // namespace

class tst_WidgetDialogs : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_translator.load(QLocale(QLocale::French), u"qtbase"_qs, u"_"_qs,
                                  QLibraryInfo::path(QLibraryInfo::TranslationsPath)));
        QApplication::installTranslator(&m_translator);
    }

    void questionDefaultsToNoSpeaksFrenchAndOpensHelpOnF1()
    {
        FakeLauncher launcher;
        WidgetDialogs dialogs(launcher, u"Kalvex2"_qs);
        QString seen;
        whenBoxOpens<QMessageBox>([&](QMessageBox *box) {
            seen = QStringList{box->button(QMessageBox::Yes)->text(), box->button(QMessageBox::No)->text(),
                               box->windowTitle(), QString::number(box->icon())}.join(u'|').remove(u'&');
            QTest::keyClick(box->button(QMessageBox::No), Qt::Key_F1); // from the focused button
            QTest::keyClick(box, Qt::Key_Return); // the default button
        });
        const Answer answer = dialogs.question(u"Souhaitez-vous SUPPRIMER ce thème jeux"_qs,
                                               u"Suppression de fichier "_qs, kDemoHelp);
        QCOMPARE(answer, Answer::No);
        QCOMPARE(seen, u"Oui|Non|Suppression de fichier |3"_qs); // 3: the critical icon
        QCOMPARE(launcher.helps.size(), 1);
        QCOMPARE(launcher.helps[0].file, u"DEMO.HLP"_qs);
        QCOMPARE(launcher.helps[0].context, 1000);

        // Only Yes says yes.
        whenBoxOpens<QMessageBox>([](QMessageBox *box) { box->button(QMessageBox::Yes)->click(); });
        QCOMPARE(dialogs.question(u"?"_qs, u"t"_qs, kDemoHelp), Answer::Yes);
        whenBoxOpens<QMessageBox>([](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); });
        QCOMPARE(dialogs.question(u"?"_qs, u"t"_qs, kDemoHelp), Answer::No);
    }

    void messageHasTheApplicationTitleAndOneButton()
    {
        FakeLauncher launcher;
        WidgetDialogs dialogs(launcher, u"Kalvex2"_qs);
        QString seen;
        whenBoxOpens<QMessageBox>([&](QMessageBox *box) {
            seen = QStringList{box->windowTitle(), box->text(), QString::number(box->buttons().size())}.join(u'|');
            box->button(QMessageBox::Ok)->click();
        });
        dialogs.message(u"Nom trop long (8 caractères maxi)"_qs);
        QCOMPARE(seen, u"Kalvex2|Nom trop long (8 caractères maxi)|1"_qs);
    }

    // A viewer opened over the application-modal search window is not blocked by it: a box
    // opened from the viewer belongs to the viewer, so closing it gives the viewer back.
    void aBoxBelongsToTheActiveWindowOverTheModalOne()
    {
        FakeLauncher launcher;
        WidgetDialogs dialogs(launcher, u"Kalvex2"_qs);
        QDialog search;
        search.setWindowModality(Qt::ApplicationModal);
        search.show();
        QDialog viewer(&search);
        viewer.show();
        viewer.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&viewer));
        QCOMPARE(dialogOwner(), &viewer);
        QWidget *owner = nullptr;
        whenBoxOpens<QMessageBox>([&](QMessageBox *box) {
            owner = box->parentWidget();
            box->button(QMessageBox::Ok)->click();
        });
        dialogs.message(u"Copie"_qs);
        QCOMPARE(owner, &viewer);
        QVERIFY(QTest::qWaitForWindowActive(&viewer));
        QCOMPARE(QApplication::activeWindow(), &viewer);

        // A window the modal one blocks never owns a box.
        QDialog other;
        other.show();
        QApplication::setActiveWindow(&other);
        QCOMPARE(dialogOwner(), &search);
    }

    void inputGivesTheTextOrEmptyOnCancel()
    {
        FakeLauncher launcher;
        WidgetDialogs dialogs(launcher, u"Kalvex2"_qs);
        whenBoxOpens<QInputDialog>([](QInputDialog *box) {
            QTest::keyClicks(box->findChild<QLineEdit *>(), u"pcfun75"_qs);
            box->accept();
        });
        QCOMPARE(dialogs.input(u"Nom du fichier, sans extension ? "_qs), u"pcfun75"_qs);
        whenBoxOpens<QInputDialog>([](QInputDialog *box) {
            QTest::keyClicks(box->findChild<QLineEdit *>(), u"typed"_qs);
            box->reject();
        });
        QCOMPARE(dialogs.input(u"?"_qs), QString());
    }

private:
    QTranslator m_translator;
};

QTEST_MAIN(tst_WidgetDialogs)
#include "tst_widgetdialogs.moc"
