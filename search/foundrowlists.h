#pragma once

#include "searchresults.h"
#include "searchrules.h"

#include <QObject>
#include <QStringList>

#include <memory>

class QListView;
class ResultListModel;
class SearchRun;
struct SearchRequest;

// The rows of a search as both search windows show them, and the run that finds them: four
// parallel lists of the order found (file names, archives, extensions, paths) that scroll and
// choose together, and the alphabetical view. The windows lay the lists out and label them.
class FoundRowLists : public QObject
{
    Q_OBJECT

public:
    // `objectNames`: the five lists', in the order above.
    FoundRowLists(SearchKind kind, const QStringList &objectNames, QWidget *parent);
    ~FoundRowLists() override;

    const SearchResults &results() const { return m_results; }
    QListView *names() const { return m_views[0]; }
    QListView *archives() const { return m_views[1]; }
    QListView *extensions() const { return m_views[2]; }
    QListView *paths() const { return m_views[3]; }
    QListView *sorted() const { return m_views[4]; }
    // Those a press acts on: the file names, the paths and the alphabetical view.
    QList<QListView *> pressableViews() const { return {names(), paths(), sorted()}; }

    // A found row's columns as shown; empty for a row that does not exist.
    QString fileName(qsizetype row) const;
    QString path(qsizetype row) const;
    QString extension(qsizetype row) const;
    QString archive(qsizetype row) const;
    QString archiveFile(qsizetype row) const { return m_results.archiveFile(row); }
    QStringList allPaths() const;
    // The row of the order found that line `line` of `view` shows (the alphabetical view lists
    // them in its own order); -1 for none.
    qsizetype rowShownAt(const QListView *view, int line) const;
    // Makes `row` current in the lists of the order found.
    void showCurrentRow(qsizetype row);

    // Starts `request`, dropping a search still running with its rows, as clear() does.
    void start(SearchRequest request);
    // Ends a running search early, keeping the rows found so far.
    void stop();
    // Drops a running search; the rows found so far stay listed, the alphabetical view unbuilt.
    void abandon();
    bool isSearching() const { return m_run != nullptr; }
    void clear();

signals:
    void rowsArrived();
    void progressed(int archivesDone);
    void finished(bool limitReached);
    // A list's current row changed (by the keyboard or a click): the row of the order found.
    void rowChosen(qsizetype row);

private:
    void takeRows();
    void finish();

    SearchResults m_results;
    QList<ResultListModel *> m_models;
    QList<QListView *> m_views;
    std::unique_ptr<SearchRun> m_run;
    quint64 m_runSerial = 0;
};
