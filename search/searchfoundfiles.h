#pragma once

#include "foundfiles.h"

class Drives;
class SearchResults;

// The viewers' rows: those of a search window's last search, read by index, found on the medium
// now in the drive through `localPathOf`.
class SearchFoundFiles final : public FoundFiles
{
public:
    SearchFoundFiles(const SearchResults &results, Drives &drives)
        : m_results(results), m_drives(drives) {}

    int count() const override;
    QString name(int row) const override;
    QString storedPath(int row) const override;
    QString localPath(int row) const override;

private:
    const SearchResults &m_results;
    Drives &m_drives;
};
