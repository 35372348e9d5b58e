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

// The bare walk: FileFinder over the real Linux listing, then the archive FOLDER/BENCH.lst. One
// walker may walk again, reusing its finder as the creation window does.
class TreeWalk
{
public:
    explicit TreeWalk(const QString &tree)
        : m_drives(tree)
        , m_finder(m_drives, m_lister)
    {
        m_finder.setChemin(QStringLiteral("d:"));
        m_finder.setCriteres(QStringLiteral("*.*"));
    }

    int run(const QString &folder)
    {
        m_finder.Rechercher();
        ArchiveWriter writer(folder, QStringLiteral("BENCH"));
        for (int i = 1; i <= m_finder.count(); ++i)
            writer.add(m_finder.entry(i));
        writer.commit();
        return m_finder.count();
    }

private:
    TreeDrives m_drives;
    LinuxDirectoryLister m_lister;
    FileFinder m_finder;
};
