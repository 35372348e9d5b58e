#include "corpus.h"

#include "archivefile.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>

#include <iterator>

namespace BenchCorpus {

namespace {

// Words of a cover disc's folders and files, as ISO 9660 (upper case, 8.3) and Joliet (long
// names, mixed case, blanks, accents in Windows-1252) give them. None holds a searched term.
const char *const kTopFolders[] = {
    "DEMOS", "SHAREWAR", "JEUX", "Programmes", "UTILS", "MULTIMED", "INTERNET", "WIN95", "DRIVERS",
    "PATCHS", "Graphisme", "MUSIQUE", "TEXTES", "INSTALL", "BONUS", "VIDEOS", "Program Files",
    "Education", "Magazine", "Polices"};
const char *const kFolders[] = {
    "QUAKE", "DUKE3D", "WINZIP95", "PaintShop Pro", "NETSCAPE", "ACROBAT", "RealPlayer", "DATA",
    "SYSTEM", "AIDE", "DOC", "SONS", "SAVES", "MAPS", "TEXTURES", "NIVEAUX", "HELP", "FONTS", "PLUGINS",
    "Exemples", "Tutoriels", "Mes documents", "CARTES", "SCENES", "MODELES", "Outils de d\xe9veloppement",
    "BIBLIO", "Traductions", "Captures d'\xe9\x63ran", "Fonds d'\xe9\x63ran", "Version 2.1", "Sauvegardes",
    "COMMUN", "Encyclop\xe9\x64ie", "RESSOURC", "Partitions", "Niveaux bonus", "DIRECTX5"};
const char *const kStems[] = {
    "CASSE", "README", "INSTALL", "DEMO", "TEXTURE", "NIVEAU", "MUSIQUE", "PALETTE", "FOND", "CARTE",
    "Guide de l'utilisateur", "Pr\xe9sentation du produit", "Bande annonce", "Niveau", "Sommaire",
    "Notes de version", "Licence", "Chapitre", "Partition", "Bruitage", "Sprite", "Police", "Catalogue",
    "Fiche technique", "Mise \xe0 jour", "DRIVER", "UNINST", "CONFIG", "PATCH", "INTRO"};
const char *const kExtensions[] = {"TXT", "EXE", "DLL", "BMP", "JPG", "WAV", "MID", "HLP", "INI", "DAT",
                                   "DOC", "ZIP", "AVI", "ICO", "COM", "BAT", "PCX", "TGA", "HTM", "CFG"};

template<size_t N> QByteArray pick(QRandomGenerator &random, const char *const (&words)[N])
{
    return QByteArray(words[random.bounded(int(N))]);
}

// One catalogued path as the creation window records it (lower-case drive, no quotes).
QByteArray makePath(QRandomGenerator &random)
{
    QByteArray path = "d:\\" + pick(random, kTopFolders);
    const int depth = random.bounded(2, 6);
    for (int d = 0; d < depth; ++d)
        path += '\\' + pick(random, kFolders);
    path += '\\';
    const int name = random.bounded(1000);
    if (name < 2) {
        path += "LISEZMOI";
    } else if (name < 72) {
        path += "SETUP";
    } else {
        const int string = random.bounded(1000);
        QByteArray stem = string < 2    ? "KALV" + pick(random, kStems)
                          : string < 72 ? (random.bounded(2) ? "IMG" : "Img ") + pick(random, kStems)
                                        : pick(random, kStems);
        path += stem + QByteArray::number(random.bounded(100));
    }
    const int extension = random.bounded(1000);
    QByteArray ext = extension < 2 ? "WMF" : extension < 72 ? "GIF" : pick(random, kExtensions);
    if (path.at(path.lastIndexOf('\\') + 2) >= 'a') // long names keep their extension's case
        ext = ext.toLower();
    return path + '.' + ext;
}

} // namespace

void generate(const QString &folder, int archives)
{
    QDir().mkpath(folder);
    QRandomGenerator random(1975);
    for (int a = 0; a < archives; ++a) {
        QList<QByteArray> entries;
        entries.reserve(kLinesPerArchive);
        for (int i = 0; i < kLinesPerArchive; ++i)
            entries.append(makePath(random));
        ArchiveFile::write(folder, QStringLiteral("CD%1").arg(a, 4, 10, QLatin1Char('0')), entries);
    }
}

void generateRandomLetters(const QString &folder, int archives)
{
    static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    QDir().mkpath(folder);
    QRandomGenerator random(1976);
    const auto word = [&random](int shortest, int longest) {
        QByteArray letters;
        for (int i = random.bounded(shortest, longest + 1); i > 0; --i)
            letters += kAlphabet[random.bounded(int(sizeof kAlphabet) - 1)];
        return letters;
    };
    for (int a = 0; a < archives; ++a) {
        QList<QByteArray> entries;
        entries.reserve(kLinesPerArchive);
        for (int i = 0; i < kLinesPerArchive; ++i) {
            QByteArray path = "d:";
            for (int d = random.bounded(2, 7); d > 0; --d)
                path += '\\' + word(1, 12);
            path += '\\' + (random.bounded(1000) < 2 ? word(0, 3) + "KALV" + word(0, 3) : word(1, 12));
            entries.append(path + '.' + word(3, 3));
        }
        ArchiveFile::write(folder, QStringLiteral("R%1").arg(a, 4, 10, QLatin1Char('0')), entries);
    }
}

qint64 bytesIn(const QString &folder)
{
    qint64 bytes = 0;
    for (const QFileInfo &info : QDir(folder).entryInfoList({QStringLiteral("*.lst")}, QDir::Files))
        bytes += info.size();
    return bytes;
}

} // namespace BenchCorpus
