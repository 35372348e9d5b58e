#include "searchrequests.h"

#include "windows1252.h"

#include <QThread>

#include <algorithm>

namespace SearchRequests {

QString termRefusal(SearchKind kind, const QString &typed)
{
    switch (kind) {
    case SearchKind::Name:
        return typed.isEmpty() ? u"Vous devez saisir un nom !"_qs : QString();
    case SearchKind::String:
        if (typed.isEmpty())
            return u"Vous devez saisir une chaîne de caractères !"_qs;
        return typed.size() < 3 ? u"Chaîne de caractères trop courtes ! "_qs : QString();
    case SearchKind::Theme:
        return typed.isEmpty() ? u"Vous devez choisir un thème !"_qs : QString();
    case SearchKind::Extension:
        break; // chosen from the table, never typed
    }
    return {};
}

SearchRequest request(SearchKind kind, const QString &typed, QList<ArchiveToScan> archives, int threads)
{
    SearchRequest request;
    request.kind = kind;
    request.term = searchTerm(typed);
    request.archives = std::move(archives);
    request.rowLimit = kind == SearchKind::Extension ? kExtensionRowLimit : kind == SearchKind::Theme ? kThemeRowLimit : 0;
    request.threads = threads;
    return request;
}

int threadCount()
{
    return std::clamp(QThread::idealThreadCount(), 1, 4);
}

QString rowLimitMessage(const QByteArray &term)
{
    return u"Le nombre de fichiers recherchés comportant l'extension "_qs + Windows1252::decode(term)
           + u" est trop élevé : la recherche est stoppée ! "_qs;
}

} // namespace SearchRequests
