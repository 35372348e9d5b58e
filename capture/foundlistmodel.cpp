#include "foundlistmodel.h"

#include "filefinder.h"
#include "windows1252.h"

FoundListModel::FoundListModel(const FileFinder &finder, QObject *parent)
    : QAbstractListModel(parent)
    , m_finder(finder)
{
}

QModelIndex FoundListModel::index(int row, int column, const QModelIndex &parent) const
{
    return row >= 0 && row < m_rows && column == 0 && !parent.isValid() ? createIndex(row, 0) : QModelIndex();
}

int FoundListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

QVariant FoundListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
        return Windows1252::decode(m_finder.entry(index.row() + 1));
    return {};
}

void FoundListModel::showUpTo(int count)
{
    if (count <= m_rows)
        return;
    beginInsertRows({}, m_rows, count - 1);
    m_rows = count;
    endInsertRows();
}

void FoundListModel::clear()
{
    if (m_rows == 0)
        return;
    beginResetModel();
    m_rows = 0;
    endResetModel();
}

QStringList FoundListModel::texts() const
{
    QStringList out;
    out.reserve(m_rows);
    for (int i = 1; i <= m_rows; ++i)
        out.append(Windows1252::decode(m_finder.entry(i)));
    return out;
}
