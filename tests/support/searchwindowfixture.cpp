#include "searchwindowfixture.h"

#include "tablefile.h"

SearchWindowData::SearchWindowData(const QList<Archive> &archives, const QStringList &extensions, const QStringList &themes)
{
    TestSupport::copyProgramFiles(dir.path());
    data.startUp();
    for (const Archive &archive : archives)
        ArchiveFile::write(data.folderPath(archive.folder), archive.name, archive.entries);
    TableFile::write(data.file(u"extens.txt"_qs), extensions);
    if (!themes.isEmpty())
        TableFile::write(data.file(u"themes.txt"_qs), themes);
    fakes.drives.list = {{u"d:"_qs, DriveType::CdRom, disc.path()}};
}

QStringList SearchWindowData::column(const QWidget *form, const QString &view)
{
    QStringList rows;
    const QAbstractItemModel *model = TestSupport::child<QAbstractItemView>(form, view)->model();
    for (int i = 0; i < model->rowCount(); ++i)
        rows.append(model->index(i, 0).data().toString());
    return rows;
}
