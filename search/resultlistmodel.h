#pragma once

#include <QAbstractListModel>

class SearchResults;

// One of the parallel result lists, as a view over the search's rows: nothing is copied, each row's
// text is made when a view asks for it, so a million rows show at once.
class ResultListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum class Column { FileName, Extension, Archive, Path, Sorted };

    ResultListModel(const SearchResults &results, Column column, QObject *parent = nullptr);

    Column column() const { return m_column; }
    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    // Shows the rows the results now hold beyond those already shown.
    void showNewRows();
    // Shows the results afresh (after they were emptied or sorted).
    void reset();

private:
    int available() const;

    const SearchResults &m_results;
    Column m_column;
    int m_shown = 0;
};
