#include "resultlistmodel.h"

#include "searchresults.h"
#include "windows1252.h"

#include <limits>

ResultListModel::ResultListModel(const SearchResults &results, Column column, QObject *parent)
    : QAbstractListModel(parent)
    , m_results(results)
    , m_column(column)
{
}

int ResultListModel::available() const
{
    const qsizetype rows = m_column == Column::Sorted ? m_results.sortedSize() : m_results.size();
    return int(std::min<qsizetype>(rows, std::numeric_limits<int>::max()));
}

int ResultListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_shown;
}

QVariant ResultListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_shown || (role != Qt::DisplayRole && role != Qt::AccessibleTextRole))
        return {};
    const int row = index.row();
    switch (m_column) {
    case Column::FileName:
        return Windows1252::decode(m_results.fileName(row));
    case Column::Extension:
        return Windows1252::decode(m_results.extension(row));
    case Column::Archive:
        return m_results.archiveName(row);
    case Column::Path:
        return Windows1252::decode(m_results.path(row));
    case Column::Sorted:
        return m_results.sortedRow(row);
    }
    return {};
}

void ResultListModel::showNewRows()
{
    const int rows = available();
    if (rows <= m_shown)
        return;
    beginInsertRows({}, m_shown, rows - 1);
    m_shown = rows;
    endInsertRows();
}

void ResultListModel::reset()
{
    beginResetModel();
    m_shown = available();
    endResetModel();
}
