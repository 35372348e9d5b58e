#include "resultlistmodel.h"

#include "searchresults.h"
#include "windows1252.h"

#include "searchrules.h"

#include <limits>

namespace {

// The most of a name or path a row shows: wider than any screen, so that a huge stored path (a
// forged catalogue) is never upper-cased, decoded and laid out whole at every paint.
constexpr qsizetype kShownBytes = 1024;

QString shownText(QByteArrayView stored)
{
    if (stored.size() <= kShownBytes)
        return Windows1252::decode(Windows1252::toUpper(stored));
    return Windows1252::decode(Windows1252::toUpper(stored.first(kShownBytes))) + QChar(0x2026);
}

} // namespace

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
        return shownText(m_results.storedFileName(row));
    case Column::Extension:
        return Windows1252::decode(m_results.extension(row));
    case Column::Archive:
        return m_results.archiveName(row);
    case Column::Path:
        return shownText(m_results.storedPath(row));
    case Column::Sorted: {
        const qsizetype found = m_results.sortedIndex(row);
        return sortedRowText(shownText(m_results.storedFileName(found)), found);
    }
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
