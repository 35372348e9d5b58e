#include "foundlistmodel.h"

#include "windows1252.h"

int FoundListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant FoundListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
        return Windows1252::decode(m_rows.at(index.row()));
    return {};
}

void FoundListModel::append(const QList<QByteArray> &rows)
{
    if (rows.isEmpty())
        return;
    beginInsertRows({}, int(m_rows.size()), int(m_rows.size() + rows.size() - 1));
    m_rows.append(rows);
    endInsertRows();
}

void FoundListModel::clear()
{
    if (m_rows.isEmpty())
        return;
    beginResetModel();
    m_rows.clear();
    endResetModel();
}

QStringList FoundListModel::texts() const
{
    QStringList out;
    out.reserve(m_rows.size());
    for (const QByteArray &row : m_rows)
        out.append(Windows1252::decode(row));
    return out;
}
