#pragma once

#include <QString>

// A help reference as the question boxes carry it: a help file named without a directory and a
// context number ("DEMO.HLP", 1000).
struct HelpTopic
{
    QString file;
    int context = 0;
};

inline const HelpTopic kDemoHelp{QStringLiteral("DEMO.HLP"), 1000};

enum class Answer { Yes, No };

// Message, question and input boxes, and the system beep.
class Dialogs
{
public:
    virtual ~Dialogs() = default;

    // A plain information box with an OK button; an empty title gives the application's title.
    virtual void message(const QString &text, const QString &title = {}) = 0;

    // A Yes/No box with the stop icon and No as the default button; F1 in the box opens `help`.
    // Only an explicit Yes gives Answer::Yes.
    virtual Answer question(const QString &text, const QString &title, const HelpTopic &help) = 0;

    // A one-line input box. A cancelled box gives an empty text, exactly like an empty answer.
    virtual QString input(const QString &prompt, const QString &title = {},
                          const QString &initial = {}) = 0;

    virtual void beep() = 0;
};
