#pragma once

#include "disclocator.h"

#include <QImage>
#include <QString>
#include <QStringList>

#include <optional>

class Dialogs;
class Drives;
class FolderPicker;
class FoundRow;
class ImageFiles;
class Launcher;
class MediaPlayer;
class PictureLoader;

// What a search window does with its current row while the row's medium is in its drive: start it
// or open it by its extension, show it in the icon preview, play it, copy it; and the checks of the
// class buttons and of the media operations. Files are found on the medium that holds the row's
// archive (DiscLocator), whatever its letter: a missing disc, file or program gives nothing, and no
// message, and no file of another disc is ever used.
class FoundFileActions
{
public:
    struct Services
    {
        Launcher &launcher;
        Drives &drives;
        Dialogs &dialogs;
        FolderPicker &folderPicker;
        PictureLoader &pictures;
        MediaPlayer &media;
        // Where files of archives made from disc images are read when no medium holds them.
        ImageFiles *images = nullptr;
    };

    // The three class buttons of "Séquences automatisées".
    enum class FileClass { Pictures, Texts, Icons };
    enum class Media { Video, Sound };

    struct Preview
    {
        QString localPath;
        QImage picture; // null when the file could not be read as a picture
    };

    explicit FoundFileActions(const Services &services);

    // A right press: acts on `row` by its extension, upper-cased and written back to the row.
    // HLP, BAT and Windows programs go to wine, DOS and COM programs to dosbox; AVI and WAV play in
    // the media window; ICO, CUR and EMF give a preview for "Espace ICO"; any other extension
    // starts the program of the first entry of `extensionList` whose first three characters are
    // the extension, with the file's local path as its one argument.
    std::optional<Preview> act(FoundRow &row, const QStringList &extensionList);

    // A class button's checks, in order: one archive selected, a search by extension (marker "1"),
    // the first result row of the class. Shows the first failing check's message; true when the
    // viewer may open.
    bool checkClass(FileClass fileClass, int selectedArchives, const QString &kindMarker,
                    const QString &firstRowExtension);
    // The message of the first failing check; empty when all pass.
    static QString classRefusal(FileClass fileClass, int selectedArchives, const QString &kindMarker,
                                const QString &firstRowExtension);

    // The media operations: the extension must be AVI (video) or WAV (sound), else their message;
    // then the media window plays the row's file (when it is on the medium).
    bool playMedia(Media media, const FoundRow &row);
    static QString mediaRefusal(Media media, const QString &extension);

    // The copy's first step: the target folder, or nothing when the user cancelled the picker
    // (after "<Annuler> a été activé").
    std::optional<QString> askCopyDirectory();
    // The copy's question, then, on Yes, the copy of the row's file into `directory`, replacing a
    // file of its name. Returns the target path on Yes (even when the copy failed), else empty.
    QString copyInto(const FoundRow &row, const QString &directory);
    static QString copyQuestion(const QString &source, const QString &directory);
    static QString copyTitle() { return QStringLiteral("Copie d'un fichier"); }

private:
    QString localPathOf(const QString &storedPath, const FoundRow &row);
    // The same for a program or a help file to start: never a copy out of a disc image.
    QString runnablePathOf(const QString &storedPath, const FoundRow &row);
    void startProgramFile(const QString &extension, const QString &localPath);

    Services m_services;
    DiscLocator m_locator;
};
