#include "imagefolder.h"

#include "imagedirectorylister.h"
#include "windows1252.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSet>

QString ImageFolder::archiveNameFor(const QString &imageFileName)
{
    const qsizetype dot = imageFileName.lastIndexOf(QLatin1Char('.'));
    return Windows1252::toUpper(QStringView(imageFileName).left(dot < 0 ? imageFileName.size() : dot)).left(8);
}

ImageFolder::Plan ImageFolder::plan(const QString &imageFolder, const QString &archiveFolder)
{
    Plan plan;
    const QDir images(imageFolder);
    const QStringList files =
        images.entryList(DiscImage::nameFilters(), QDir::Files | QDir::Readable, QDir::Name | QDir::IgnoreCase);
    // Existing archives, by their names upper-cased (the search and the lists ignore case).
    QSet<QString> archives;
    for (const QString &file : QDir(archiveFolder).entryList({QStringLiteral("*.lst")}, QDir::Files))
        archives.insert(Windows1252::toUpper(QStringView(file).chopped(4)));
    QSet<QString> cues;
    for (const QString &file : files) {
        if (file.endsWith(QLatin1String(".cue"), Qt::CaseInsensitive))
            cues.insert(QFileInfo(file).completeBaseName().toLower());
    }
    QHash<QString, QString> taken; // archive name -> the image that gives it
    for (const QString &file : files) {
        if (file.endsWith(QLatin1String(".bin"), Qt::CaseInsensitive)
            && cues.contains(QFileInfo(file).completeBaseName().toLower()))
            continue; // read through its CUE
        const QString name = archiveNameFor(file);
        if (name.trimmed().isEmpty()) {
            plan.skipped.append(file + QStringLiteral(" : nom d'archive vide"));
            continue;
        }
        if (const auto first = taken.constFind(name); first != taken.cend()) {
            plan.clashes.append(QStringLiteral("%1 : %2 ne sera pas archivée (même nom que %3)").arg(name, file, *first));
            plan.skipped.append(QStringLiteral("%1 : même nom d'archive que %2").arg(file, *first));
            continue;
        }
        taken.insert(name, file);
        if (archives.contains(name))
            plan.clashes.append(QStringLiteral("%1.lst existe déjà : remplacée par %2").arg(name, file));
        plan.images.append({images.filePath(file), name});
    }
    return plan;
}

QString ImageFolder::clashQuestion(const QStringList &clashes)
{
    return QStringLiteral("Avant l'archivage des images :\n\n") + clashes.join(QLatin1Char('\n'))
           + QStringLiteral("\n\nVoulez-vous continuer ?");
}

QString ImageFolder::summary(const QList<Result> &results, const QStringList &skipped)
{
    QStringList written, left = skipped;
    for (const Result &result : results) {
        const QString file = QFileInfo(result.image.path).fileName();
        switch (result.outcome) {
        case Outcome::Written:
            written.append(QStringLiteral("%1.lst : %2 (%3 fichiers)").arg(result.image.archiveName, file).arg(result.entries));
            break;
        case Outcome::Empty:
            left.append(file + QStringLiteral(" : aucun fichier trouvé"));
            break;
        case Outcome::Unreadable:
            left.append(file + QStringLiteral(" : image illisible ou disparue pendant la lecture"));
            break;
        case Outcome::Cancelled:
            left.append(file + QStringLiteral(" : annulé"));
            break;
        }
    }
    QString text = QStringLiteral("%1 archive(s) écrite(s)").arg(written.size());
    if (!written.isEmpty())
        text += QStringLiteral(" :\n") + written.join(QLatin1Char('\n'));
    if (!left.isEmpty())
        text += QStringLiteral("\n\n%1 image(s) non archivée(s) :\n").arg(left.size()) + left.join(QLatin1Char('\n'));
    return text;
}
