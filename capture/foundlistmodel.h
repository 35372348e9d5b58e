#pragma once

#include <QAbstractListModel>
#include <QStringList>

class FileFinder;

// The entries a walk has found, shown as text: the first rows of the finder's results, read where
// the finder keeps them. Rows are only ever appended in batches, as the walk's count grows, or
// cleared, so a view of 32,767 rows stays quick. The finder must not start a new walk while rows
// are shown: clear() first.
class FoundListModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    explicit FoundListModel(const FileFinder &finder, QObject *parent = nullptr);

    // The list view asks for an index per row at every layout: made here without the checks
    // through virtual calls of the base class.
    QModelIndex index(int row, int column = 0, const QModelIndex &parent = {}) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    // Shows the finder's entries up to `count`, a count the finder has published.
    void showUpTo(int count);
    void clear();

    QStringList texts() const;

private:
    const FileFinder &m_finder;
    int m_rows = 0;
};
