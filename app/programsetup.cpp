#include "programsetup.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

void setUpProgram()
{
    QApplication::setApplicationName(QStringLiteral("Kalvex2"));
    QApplication::setDesktopFileName(QStringLiteral("kalvex2"));

    // The standard dialogs and buttons speak French ("Oui", "Non", "Annuler") whatever the locale.
    QLocale::setDefault(QLocale(QLocale::French, QLocale::France));
    auto *qtTranslations = new QTranslator(qApp);
    if (qtTranslations->load(QLocale(QLocale::French), QStringLiteral("qtbase"), QStringLiteral("_"),
                             QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(qtTranslations);
}
