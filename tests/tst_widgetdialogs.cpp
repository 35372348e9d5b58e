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

// Runs `act` on the first modal box of type Box that opens.
template <typename Box>
void whenBoxOpens(std::function<void(Box *)> act)
{
    auto *timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, act] {
        if (auto *box = qobject_cast<Box *>(QApplication::activeModalWidget())) {
            timer->deleteLater();
            timer->stop();
            act(box);
        }
    });
    timer->start();
}

} // namespace

class tst_WidgetDialogs : public QObject
{
    Q_OBJECT

    QTranslator m_translator;
    FakeLauncher m_launcher;
    WidgetDialogs m_dialogs{m_launcher, u"Kalvex2"_qs};

private slots:
    void initTestCase()
    {
        QVERIFY(m_translator.load(QLocale(QLocale::French), u"qtbase"_qs, u"_"_qs, QLibraryInfo::path(QLibraryInfo::TranslationsPath)));
        QApplication::installTranslator(&m_translator);
    }

    // A question: in French, critical, No by default, help on F1; only Yes says yes. A message:
    // the application's title and one button. An input: the text, or empty when cancelled.
    void boxes()
    {
        QString seen;
        whenBoxOpens<QMessageBox>([&](QMessageBox *box) {
            seen = QStringList{box->button(QMessageBox::Yes)->text(), box->button(QMessageBox::No)->text(),
                               box->windowTitle(), QString::number(box->icon())}.join(u'|').remove(u'&');
            QTest::keyClick(box->button(QMessageBox::No), Qt::Key_F1); // from the focused button
            QTest::keyClick(box, Qt::Key_Return);
        });
        QCOMPARE(m_dialogs.question(u"Souhaitez-vous SUPPRIMER ce thème jeux"_qs, u"Suppression de fichier "_qs, kDemoHelp), Answer::No);
        QCOMPARE(seen, u"Oui|Non|Suppression de fichier |3"_qs); // 3: the critical icon
        QVERIFY(m_launcher.helps.size() == 1 && m_launcher.helps[0].file == u"DEMO.HLP"_qs && m_launcher.helps[0].context == 1000);
        whenBoxOpens<QMessageBox>([](QMessageBox *box) { box->button(QMessageBox::Yes)->click(); });
        QCOMPARE(m_dialogs.question(u"?"_qs, u"t"_qs, kDemoHelp), Answer::Yes);
        whenBoxOpens<QMessageBox>([](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); });
        QCOMPARE(m_dialogs.question(u"?"_qs, u"t"_qs, kDemoHelp), Answer::No);

        whenBoxOpens<QMessageBox>([&](QMessageBox *box) {
            seen = QStringList{box->windowTitle(), box->text(), QString::number(box->buttons().size())}.join(u'|');
            box->button(QMessageBox::Ok)->click();
        });
        m_dialogs.message(u"Nom trop long (8 caractères maxi)"_qs);
        QCOMPARE(seen, u"Kalvex2|Nom trop long (8 caractères maxi)|1"_qs);

        for (bool accepted : {true, false}) {
            whenBoxOpens<QInputDialog>([accepted](QInputDialog *box) {
                QTest::keyClicks(box->findChild<QLineEdit *>(), u"pcfun75"_qs);
                accepted ? box->accept() : box->reject();
            });
            QCOMPARE(m_dialogs.input(u"Nom du fichier, sans extension ? "_qs), accepted ? u"pcfun75"_qs : QString());
        }
    }

    // A viewer opened over the application-modal search window is not blocked by it: a box
    // opened from the viewer belongs to the viewer, and closing it gives the viewer back. A
    // window the modal one blocks never owns a box.
    void aBoxBelongsToTheActiveWindowOverTheModalOne()
    {
        QDialog search;
        search.setWindowModality(Qt::ApplicationModal);
        search.show();
        QDialog viewer(&search);
        viewer.show();
        viewer.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&viewer));
        QWidget *owner = nullptr;
        whenBoxOpens<QMessageBox>([&](QMessageBox *box) {
            owner = box->parentWidget();
            box->button(QMessageBox::Ok)->click();
        });
        m_dialogs.message(u"Copie"_qs);
        QCOMPARE(owner, &viewer);
        QVERIFY(QTest::qWaitForWindowActive(&viewer));
        QDialog other;
        other.show();
        QApplication::setActiveWindow(&other);
        QCOMPARE(dialogOwner(), &search);
    }
};

QTEST_MAIN(tst_WidgetDialogs)
#include "tst_widgetdialogs.moc"
