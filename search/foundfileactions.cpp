#include "foundfileactions.h"

#include "dialogs.h"
#include "drives.h"
#include "extensionentry.h"
#include "filecopy.h"
#include "folderpicker.h"
#include "foundrow.h"
#include "launcher.h"
#include "mediaplayer.h"
#include "pictureloader.h"
#include "programkind.h"
#include "regularfile.h"


namespace {

const QString kOneArchiveOnly = u"Pour utiliser une transaction automatisée, vous ne devez sélectionner qu'un seul "
                                "fichier d'archive et mettre le support correspondant (CD-Rom ou disquette) dans le "
                                "lecteur !"_qs;

struct ClassRule
{
    QStringList extensions; // those the first result row may have
    QString noExtensionSearch;
    QString notOfClass;
};

ClassRule classRule(FoundFileActions::FileClass fileClass)
{
    switch (fileClass) {
    case FoundFileActions::FileClass::Pictures:
        return {{u"BMP"_qs, u"GIF"_qs, u"JPG"_qs, u"WMF"_qs},
                u"Vous devez au préalable rechercher les fichiers BMP,GIF,JPG ou WMF  dans  le CD-Rom ou la "
                "Disquette de votre choix !"_qs,
                u"Vous devez au préalable rechercher les fichiers BMP,GIF,JPG ou WMF dans  le dans  le CD-Rom ou "
                "la Disquette de votre choix !"_qs};
    case FoundFileActions::FileClass::Texts:
        // The first message names DOC too; the check accepts only the two of the second.
        return {{u"DIZ"_qs, u"TXT"_qs},
                u"Vous devez au préalable rechercher les fichiers DIZ,DOC ou TXT  dans  le CD-Rom ou la Disquette "
                "de votre choix !"_qs,
                u"Vous devez au préalable rechercher les fichiers DIZ ou TXT  dans  le CD-Rom ou la Disquette de "
                "votre choix !"_qs};
    case FoundFileActions::FileClass::Icons:
        break;
    }
    const QString icons = u"Vous devez au préalable rechercher les fichiers ICO,CUR ou EMF  dans  le dans  le CD-Rom "
                          "ou la Disquette de votre choix !"_qs;
    return {{u"ICO"_qs, u"CUR"_qs, u"EMF"_qs}, icons, icons};
}

// The first bytes of a program: enough for the MZ header and the offset it points to. Nothing for
// what is no regular file: a FIFO named .EXE would block the window in its opening.
std::optional<QByteArray> headOf(const QString &path)
{
    RegularFile file(path);
    if (!file.isOpen())
        return std::nullopt;
    QByteArray head(4096, Qt::Uninitialized);
    const qint64 got = file.read(head.data(), head.size());
    if (got < 0)
        return std::nullopt;
    head.truncate(got);
    return head;
}

} // namespace

FoundFileActions::FoundFileActions(const Services &services)
    : m_services(services)
    , m_locator(services.drives, services.images)
{
}

QString FoundFileActions::localPathOf(const QString &storedPath, const FoundRow &row)
{
    return storedPath.isEmpty() ? QString() : m_locator.localPath(storedPath, row.archiveFile());
}

QString FoundFileActions::runnablePathOf(const QString &storedPath, const FoundRow &row)
{
    const QString local = localPathOf(storedPath, row);
    return m_locator.isImageCopy(local) ? QString() : local;
}

std::optional<FoundFileActions::Preview> FoundFileActions::act(FoundRow &row, const QStringList &extensionList)
{
    const QString extension = row.extension().toUpper();
    row.setExtension(extension);
    if (extension == u"ICO" || extension == u"CUR" || extension == u"EMF") {
        const QString local = localPathOf(row.helpPath(), row);
        if (local.isEmpty())
            return std::nullopt;
        return Preview{local, m_services.pictures.loadPicture(local)};
    }
    if (extension == u"AVI") {
        playMedia(Media::Video, row);
        return std::nullopt;
    }
    if (extension == u"WAV") {
        playMedia(Media::Sound, row);
        return std::nullopt;
    }
    if (extension == u"HLP") {
        const QString local = runnablePathOf(row.helpPath(), row);
        if (!local.isEmpty())
            m_services.launcher.startWindowsFile(local);
        return std::nullopt;
    }
    if (extension == u"COM" || extension == u"EXE" || extension == u"BAT") {
        const QString local = runnablePathOf(row.path(), row);
        if (!local.isEmpty())
            startProgramFile(extension, local);
        return std::nullopt;
    }
    for (const QString &entry : extensionList) {
        if (ExtensionEntry::extension(entry) != extension)
            continue;
        const QString program = ExtensionEntry::program(entry);
        const QString local = localPathOf(row.path(), row);
        if (!program.isEmpty() && !local.isEmpty())
            m_services.launcher.startProgram(program, {local});
        break; // the first match decides, started or not
    }
    return std::nullopt;
}

void FoundFileActions::startProgramFile(const QString &extension, const QString &localPath)
{
    if (extension == u"BAT") {
        m_services.launcher.startWindowsFile(localPath);
        return;
    }
    const std::optional<QByteArray> head = headOf(localPath);
    if (!head)
        return;
    if (programKindOf(*head) == ProgramKind::Windows)
        m_services.launcher.startWindowsFile(localPath);
    else
        m_services.launcher.startDosProgram(localPath);
}

QString FoundFileActions::classRefusal(FileClass fileClass, int selectedArchives, const QString &kindMarker,
                                       const QString &firstRowExtension)
{
    if (selectedArchives > 1)
        return kOneArchiveOnly;
    const ClassRule rule = classRule(fileClass);
    if (kindMarker != u"1")
        return rule.noExtensionSearch;
    if (!rule.extensions.contains(firstRowExtension))
        return rule.notOfClass;
    return {};
}

bool FoundFileActions::checkClass(FileClass fileClass, int selectedArchives, const QString &kindMarker,
                                  const QString &firstRowExtension)
{
    const QString refusal = classRefusal(fileClass, selectedArchives, kindMarker, firstRowExtension);
    if (!refusal.isEmpty())
        m_services.dialogs.message(refusal);
    return refusal.isEmpty();
}

QString FoundFileActions::mediaRefusal(Media media, const QString &extension)
{
    const QString wanted = media == Media::Video ? u"AVI"_qs : u"WAV"_qs;
    if (extension == wanted)
        return {};
    return u"Vous devez au préalable rechercher les fichiers "_qs + wanted + u" dans  le CD de votre choix !"_qs;
}

bool FoundFileActions::playMedia(Media media, const FoundRow &row)
{
    const QString refusal = mediaRefusal(media, row.extension());
    if (!refusal.isEmpty()) {
        m_services.dialogs.message(refusal);
        return false;
    }
    const QString local = localPathOf(row.path(), row);
    if (!local.isEmpty() && isRegularFile(local)) // a FIFO would hold the player's opening for ever
        m_services.media.play(local);
    return true;
}

std::optional<QString> FoundFileActions::askCopyDirectory()
{
    const std::optional<QString> directory = m_services.folderPicker.pickFolder();
    if (!directory)
        m_services.dialogs.message(folderPickerCancelledText());
    return directory;
}

QString FoundFileActions::copyQuestion(const QString &source, const QString &directory)
{
    return u"Etes-vous sûr de vouloir copier  "_qs + source + u" dans le répertoire "_qs + directory + u" ?"_qs;
}

QString FoundFileActions::copyInto(const FoundRow &row, const QString &directory)
{
    const QString source = row.copySource();
    if (m_services.dialogs.question(copyQuestion(source, directory), copyTitle(), kDemoHelp) != Answer::Yes)
        return {};
    const QString target = pathInDirectory(directory, source.mid(source.lastIndexOf(u'\\') + 1));
    const QString local = localPathOf(source, row);
    if (!local.isEmpty())
        copyFileInto(local, directory, copiedFileName(source));
    return target;
}
