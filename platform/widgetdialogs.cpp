#include "widgetdialogs.h"

#include "launcher.h"

#include <QApplication>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QKeyEvent>

namespace {

// F1 anywhere in a box opens its help; the box stays open.
class HelpKeyFilter : public QObject
{
public:
    HelpKeyFilter(Launcher &launcher, HelpTopic topic)
        : m_launcher(launcher)
        , m_topic(std::move(topic))
    {
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_F1) {
            m_launcher.openHelp(m_topic);
            return true;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    Launcher &m_launcher;
    HelpTopic m_topic;
};

} // namespace

QWidget *dialogOwner()
{
    QWidget *active = QApplication::activeWindow();
    QWidget *modal = QApplication::activeModalWidget();
    if (!modal)
        return active;
    // A window opened from the modal one (a viewer over the search window) is not blocked by it:
    // the box belongs to it, so that closing the box brings that window back, not the modal one.
    for (QWidget *owner = active; owner; owner = owner->parentWidget()) {
        if (owner == modal)
            return active;
    }
    return modal;
}

DialogOwner::DialogOwner()
    : m_owner(dialogOwner())
{
}

DialogOwner::~DialogOwner()
{
    if (m_owner && m_owner->isVisible() && m_owner != QApplication::activeModalWidget()) {
        m_owner->raise();
        m_owner->activateWindow();
    }
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
    const DialogOwner owner;
    QMessageBox box(QMessageBox::NoIcon, titleOrApplication(title), text, QMessageBox::Ok, owner.widget());
    box.exec();
}

Answer WidgetDialogs::question(const QString &text, const QString &title, const HelpTopic &help)
{
    const DialogOwner owner;
    QMessageBox box(QMessageBox::Critical, titleOrApplication(title), text,
                    QMessageBox::Yes | QMessageBox::No, owner.widget());
    box.setDefaultButton(QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
    HelpKeyFilter helpKey(m_helpOpener, help);
    box.installEventFilter(&helpKey);
    return box.exec() == QMessageBox::Yes ? Answer::Yes : Answer::No;
}

QString WidgetDialogs::input(const QString &prompt, const QString &title, const QString &initial)
{
    bool ok = false;
    const DialogOwner owner;
    const QString answer = QInputDialog::getText(owner.widget(), titleOrApplication(title), prompt,
                                                 QLineEdit::Normal, initial, &ok);
    return ok ? answer : QString();
}

void WidgetDialogs::beep()
{
    QApplication::beep();
}

std::optional<QString> WidgetFolderPicker::pickFolder()
{
    const DialogOwner owner;
    const QString folder = QFileDialog::getExistingDirectory(owner.widget(), QString(), QString(),
                                                             QFileDialog::ShowDirsOnly);
    if (folder.isEmpty())
        return std::nullopt;
    return folder;
}

std::optional<QString> WidgetFolderPicker::pickFile(const QString &title, const QStringList &patterns)
{
    // Qt's name filters heed case on Linux: "*.iso" becomes "*.[iI][sS][oO]".
    QStringList anyCase;
    for (const QString &pattern : patterns) {
        QString out;
        for (const QChar c : pattern)
            out += c.isLetter() ? u'[' + QString(c.toLower()) + QString(c.toUpper()) + u']' : QString(c);
        anyCase.append(out);
    }
    const DialogOwner owner;
    const QString file = QFileDialog::getOpenFileName(owner.widget(), title, QString(),
                                                      title + QStringLiteral(" (") + anyCase.join(u' ') + u')');
    if (file.isEmpty())
        return std::nullopt;
    return file;
}
