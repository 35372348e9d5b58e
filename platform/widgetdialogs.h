#pragma once

#include "dialogs.h"
#include "folderpicker.h"

#include <QPointer>
#include <QWidget>

class Launcher;

// Message, question and input boxes as Qt's standard dialogs, owned by the active window.
class WidgetDialogs final : public Dialogs
{
public:
    WidgetDialogs(Launcher &helpOpener, QString applicationTitle);

    void message(const QString &text, const QString &title = {}) override;
    Answer question(const QString &text, const QString &title, const HelpTopic &help) override;
    QString input(const QString &prompt, const QString &title = {}, const QString &initial = {}) override;
    void beep() override;

private:
    QString titleOrApplication(const QString &title) const;

    Launcher &m_helpOpener;
    QString m_applicationTitle;
};

class WidgetFolderPicker final : public FolderPicker
{
public:
    std::optional<QString> pickFolder() override;
    std::optional<QString> pickFile(const QString &title, const QStringList &patterns) override;
};

// The window that owns a dialog opened now: the active window when the modal one does not block
// it (none, or a window opened from the modal one), else the modal one.
QWidget *dialogOwner();

// Holds the owner of a dialog while it is open, and gives that window the focus back when the
// dialog is over: Qt would activate the application-modal window instead, and a viewer opened
// over it would vanish behind it.
class DialogOwner
{
public:
    DialogOwner();
    ~DialogOwner();
    DialogOwner(const DialogOwner &) = delete;
    DialogOwner &operator=(const DialogOwner &) = delete;

    QWidget *widget() const { return m_owner; }

private:
    QPointer<QWidget> m_owner;
};
