#pragma once

#include "disclocator.h"
#include "foundfiles.h"

class Drives;
class ImageFiles;
class SearchResults;

// The viewers' rows: those of a search window's last search, read by index, found on the medium
// that holds the row's archive (DiscLocator).
class SearchFoundFiles final : public FoundFiles
{
public:
    SearchFoundFiles(const SearchResults &results, Drives &drives, ImageFiles *images = nullptr)
        : m_results(results), m_locator(drives, images) {}

    int count() const override;
    QString name(int row) const override;
    QString storedPath(int row) const override;
    QString localPath(int row) const override;

private:
    const SearchResults &m_results;
    mutable DiscLocator m_locator;
};
