#include "fakedialogs.h"

void FakeDialogs::message(const QString &text, const QString &title)
{
    shown.append({QStringLiteral("message"), text, title, {}});
    if (onShown)
        onShown(shown.last());
}

Answer FakeDialogs::question(const QString &text, const QString &title, const HelpTopic &help)
{
    shown.append({QStringLiteral("question"), text, title, help});
    if (onShown)
        onShown(shown.last());
    return answers.isEmpty() ? Answer::No : answers.takeFirst();
}

QString FakeDialogs::input(const QString &prompt, const QString &title, const QString &initial)
{
    Q_UNUSED(initial)
    shown.append({QStringLiteral("input"), prompt, title, {}});
    if (onShown)
        onShown(shown.last());
    return inputs.isEmpty() ? QString() : inputs.takeFirst();
}

QStringList FakeDialogs::messages() const
{
    QStringList texts;
    for (const Shown &box : shown) {
        if (box.kind == QLatin1String("message"))
            texts.append(box.text);
    }
    return texts;
}

std::optional<QString> FakeFolderPicker::pickFolder()
{
    ++asked;
    return answers.isEmpty() ? std::nullopt : answers.takeFirst();
}

std::optional<QString> FakeFolderPicker::pickFile(const QString &, const QStringList &patterns)
{
    filePatterns = patterns;
    return fileAnswers.isEmpty() ? std::nullopt : fileAnswers.takeFirst();
}
