#pragma once

#include <QString>
#include <optional>

// Asks the user for an existing directory (directories only, never files).
class FolderPicker
{
public:
    virtual ~FolderPicker() = default;

    // The chosen directory's native path, or nothing when the user cancelled.
    virtual std::optional<QString> pickFolder() = 0;
};

// The program's own words for a cancelled folder choice.
inline QString folderPickerCancelledText()
{
    return QStringLiteral("<Annuler> a été activé");
}
