#pragma once

#include "archivefile.h"
#include "drives.h"
#include "filefinder.h"
#include "linuxdirectorylister.h"

// The tree as drive d:, beside the system disk.
class TreeDrives final : public Drives
{
public:
    explicit TreeDrives(QString root)
        : m_root(std::move(root))
    {
    }
    QList<Drive> drives() override
    {
        return {{QStringLiteral("c:"), DriveType::Fixed, QStringLiteral("/")},
                {QStringLiteral("d:"), DriveType::CdRom, m_root}};
    }

private:
    QString m_root;
};

// The bare walk: FileFinder over the real Linux listing, then the archive FOLDER/BENCH.lst.
inline int walkTree(const QString &tree, const QString &folder)
{
    TreeDrives drives(tree);
    LinuxDirectoryLister lister;
    FileFinder finder(drives, lister);
    finder.setChemin(QStringLiteral("d:"));
    finder.setCriteres(QStringLiteral("*.*"));
    finder.Rechercher();
    ArchiveWriter writer(folder, QStringLiteral("BENCH"));
    for (int i = 1; i <= finder.count(); ++i)
        writer.add(finder.entry(i));
    writer.commit();
    return finder.count();
}
