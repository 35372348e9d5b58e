#include "archivename.h"

#include "archivefile.h"
#include "windows1252.h"

namespace {
constexpr int kMaxNameLength = 8;
}

ArchiveNameCheck checkArchiveName(const QString &typed, const QString &drive, const QString &driveHint)
{
    if (typed.size() > kMaxNameLength)
        return {QString(), QStringLiteral("Nom trop long (8 caractères maxi)")};
    ArchiveNameCheck checked{Windows1252::toUpper(typed), QString()};
    if (checked.name.isEmpty() || !ArchiveFile::isPlainName(checked.name))
        checked.refusal = QStringLiteral("Vous devez indiquer un nom de fichier (PCFun75,PCMag13...)");
    // The name is refused, not the type: any other drive, hard disk or not, is scanned.
    else if (drive == QLatin1String("c:"))
        checked.refusal = QStringLiteral("Ce logiciel est destiné uniquement à archiver des CD-Rom ou des "
                                         "disquettes, vous ne pouvez pas archiver un disque dur. ")
                          + driveHint;
    return checked;
}
