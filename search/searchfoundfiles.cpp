#include "searchfoundfiles.h"

#include "searchresults.h"
#include "windows1252.h"

#include <limits>

int SearchFoundFiles::count() const
{
    return int(std::min<qsizetype>(m_results.size(), std::numeric_limits<int>::max()));
}

QString SearchFoundFiles::name(int row) const
{
    return row >= 0 && row < m_results.size() ? Windows1252::decode(m_results.fileName(row)) : QString();
}

QString SearchFoundFiles::storedPath(int row) const
{
    return row >= 0 && row < m_results.size() ? Windows1252::decode(m_results.path(row)) : QString();
}

QString SearchFoundFiles::localPath(int row) const
{
    const QString stored = storedPath(row);
    return stored.isEmpty() ? QString() : m_locator.localPath(stored, m_results.archiveFile(row));
}
