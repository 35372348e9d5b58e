#pragma once

#include <QString>
#include <QStringList>
#include <optional>

// Asks the user for an existing directory (directories only, never files), or for a file.
class FolderPicker
{
public:
    virtual ~FolderPicker() = default;

    // The chosen directory's native path, or nothing when the user cancelled.
    virtual std::optional<QString> pickFolder() = 0;

    // The chosen file's native path, among the files whose names match one of `patterns`
    // ("*.iso") ignoring case; nothing when the user cancelled.
    virtual std::optional<QString> pickFile(const QString &title, const QStringList &patterns) = 0;
};

// The program's own words for a cancelled folder choice.
inline QString folderPickerCancelledText()
{
    return QStringLiteral("<Annuler> a été activé");
}
