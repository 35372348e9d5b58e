#pragma once

#include "dialogs.h"
#include "folderpicker.h"

#include <QList>
#include <QStringList>
#include <functional>
#include <optional>

// Records every box a window shows and answers from a script (No and an empty text by default).
class FakeDialogs final : public Dialogs
{
public:
    struct Shown
    {
        QString kind; // "message", "question" or "input"
        QString text;
        QString title;
        HelpTopic help;
    };

    void message(const QString &text, const QString &title = {}) override;
    Answer question(const QString &text, const QString &title, const HelpTopic &help) override;
    QString input(const QString &prompt, const QString &title = {}, const QString &initial = {}) override;
    void beep() override { ++beeps; }

    QStringList messages() const; // texts of the message boxes, in order
    void clear() { shown.clear(); beeps = 0; }

    QList<Shown> shown;
    QList<Answer> answers;  // consumed by question()
    QStringList inputs;     // consumed by input()
    int beeps = 0;
    std::function<void(const Shown &)> onShown; // runs while the box would be open
};

class FakeFolderPicker final : public FolderPicker
{
public:
    std::optional<QString> pickFolder() override;
    std::optional<QString> pickFile(const QString &title, const QStringList &patterns) override;

    QList<std::optional<QString>> answers; // consumed in order; nothing left means cancelled
    int asked = 0;
    QList<std::optional<QString>> fileAnswers; // the same for files
    QStringList filePatterns;                  // what the last file choice offered
};
