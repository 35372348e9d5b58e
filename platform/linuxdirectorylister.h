#pragma once

#include "directorylister.h"

// Reads directories with the POSIX calls. Entry types come from the directory itself where the
// file system gives them; ISO 9660 and UDF give none, so those entries are looked up without
// following links.
class LinuxDirectoryLister final : public DirectoryLister
{
public:
    bool list(const QByteArray &nativePath, bool isRoot,
              std::vector<DirectoryEntry> &entries) override;
};
