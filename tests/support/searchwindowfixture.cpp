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

void SearchWindowData::selectArchives(const QWidget *form, const QStringList &names)
{
    auto *archives = TestSupport::child<QListWidget>(form, u"archives"_qs);
    for (int i = 0; i < archives->count(); ++i)
        archives->item(i)->setSelected(names.contains(archives->item(i)->text()));
}

void SearchWindowData::press(const QWidget *form, const QString &view, int row, Qt::MouseButton button)
{
    auto *list = TestSupport::child<QListView>(form, view);
    const QModelIndex index = list->model()->index(row, 0);
    QTRY_VERIFY(list->visualRect(index).isValid()); // rows are laid out in batches
    QTest::mouseClick(list->viewport(), button, {}, list->visualRect(index).center());
}
