#include "foundrow.h"

void FoundRow::choose(const QString &path, const QString &archive, const QString &archiveFile)
{
    m_archiveFile = archiveFile;
    m_path = path;
    m_helpPath = path;
    m_quotedPath = u'"' + path + u'"';
    m_archiveLabel = archive + u" .lst"_qs;
    m_pathLessExtension = path.left(std::max<qsizetype>(0, path.size() - 4));
    const qsizetype dot = path.lastIndexOf(u'.');
    if (dot >= 0)
        m_extension = path.mid(dot + 1, 3);
    m_mediumPrompt = u"Mettez dans le lecteur \""_qs + archive + u"\" : "_qs + path;
}

QString FoundRow::copySource() const
{
    return m_quotedPath.size() >= 2 ? m_quotedPath.mid(1, m_quotedPath.size() - 2) : QString();
}
