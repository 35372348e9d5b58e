#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QList>
#include <QStringList>

// The entries found on a medium, as catalogue lines (Windows-1252), shown as text. Rows are only
// ever appended in batches or cleared, so a view of 32,767 rows stays quick.
class FoundListModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    void append(const QList<QByteArray> &rows);
    void clear();

    const QList<QByteArray> &entries() const { return m_rows; }
    QStringList texts() const;

private:
    QList<QByteArray> m_rows;
};
