#include "widgetdialogs.h"

#include "launcher.h"

#include <QApplication>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QShortcut>

QWidget *dialogOwner()
{
    if (QWidget *modal = QApplication::activeModalWidget())
        return modal;
    return QApplication::activeWindow();
}

WidgetDialogs::WidgetDialogs(Launcher &helpOpener, QString applicationTitle)
    : m_helpOpener(helpOpener)
    , m_applicationTitle(std::move(applicationTitle))
{
}

QString WidgetDialogs::titleOrApplication(const QString &title) const
{
    return title.isEmpty() ? m_applicationTitle : title;
}

void WidgetDialogs::message(const QString &text, const QString &title)
{
    QMessageBox box(QMessageBox::NoIcon, titleOrApplication(title), text, QMessageBox::Ok, dialogOwner());
    box.exec();
}

Answer WidgetDialogs::question(const QString &text, const QString &title, const HelpTopic &help)
{
    QMessageBox box(QMessageBox::Critical, titleOrApplication(title), text,
                    QMessageBox::Yes | QMessageBox::No, dialogOwner());
    box.setDefaultButton(QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
    const QShortcut helpKey(QKeySequence(Qt::Key_F1), &box);
    QObject::connect(&helpKey, &QShortcut::activated, &box, [this, help] { m_helpOpener.openHelp(help); });
    return box.exec() == QMessageBox::Yes ? Answer::Yes : Answer::No;
}

QString WidgetDialogs::input(const QString &prompt, const QString &title, const QString &initial)
{
    bool ok = false;
    const QString answer = QInputDialog::getText(dialogOwner(), titleOrApplication(title), prompt,
                                                 QLineEdit::Normal, initial, &ok);
    return ok ? answer : QString();
}

void WidgetDialogs::beep()
{
    QApplication::beep();
}

std::optional<QString> WidgetFolderPicker::pickFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(dialogOwner(), QString(), QString(),
                                                             QFileDialog::ShowDirsOnly);
    if (folder.isEmpty())
        return std::nullopt;
    return folder;
}
