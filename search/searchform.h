#pragma once

#include "formsupport.h"
#include "searchresults.h"
#include "searchrules.h"

#include <QPointer>

#include <memory>

class ArchivePicker;
class DataDirectory;
class Dialogs;
class PictureLoader;
class QLabel;
class QListView;
class QListWidget;
class QProgressBar;
class QPushButton;
class QToolButton;
class ResultListModel;
class SearchRun;

// "Kalvex2 Recherches": searches the archives of the chosen folder (or of every folder) by file
// name, by string or by extension, and shows the rows found in parallel lists. Acting on found
// files plugs in through the current row and the rows by index.
class SearchForm : public Form
{
    Q_OBJECT

public:
    SearchForm(const DataDirectory &data, Dialogs &dialogs, PictureLoader &pictures, QWidget *parent = nullptr);
    ~SearchForm() override;

    void searchByName();
    void searchByString();
    void searchByExtension();
    // Keeps the extension table entries of class `code` (1 to 9).
    void filterClass(int code);
    // Ends a running search early, keeping the rows found so far.
    void stopSearch();
    bool isSearching() const { return m_run != nullptr; }

    // The rows of the last search, by index in the order found.
    const SearchResults &results() const { return m_results; }
    qsizetype foundCount() const { return m_results.size(); }
    QString foundFileName(qsizetype row) const;
    QString foundPath(qsizetype row) const;
    QString foundExtension(qsizetype row) const;
    QString foundArchive(qsizetype row) const;
    // "0" after a search by name or string, "1" after a search by extension.
    QString searchKindMarker() const { return m_kindMarker; }

    // The current row (-1 before any choice) and its columns.
    qsizetype currentRow() const { return m_currentRow; }
    void setCurrentRow(qsizetype row);
    QString currentPath() const;
    QString currentExtension() const;
    QString currentArchive() const;

    int selectedArchiveCount() const;

signals:
    void searchFinished();
    void currentRowChanged(qsizetype row);

protected:
    void load() override;
    void keyPressEvent(QKeyEvent *event) override;
    void reject() override;

private:
    void buildLayout();
    void startSearch(SearchKind kind, const QString &typed);
    void takeRows();
    void showProgress(int archivesDone);
    void finishSearch();
    void clearResults();
    QListView *makeResultView(ResultListModel *model, const QString &accessibleName);

    const DataDirectory &m_data;
    Dialogs &m_dialogs;
    PictureLoader &m_pictures;

    ArchivePicker *m_archives = nullptr;
    QToolButton *m_byName = nullptr;
    QToolButton *m_byString = nullptr;
    QToolButton *m_byExtension = nullptr;
    QListWidget *m_extensions = nullptr;
    QLabel *m_extension = nullptr;
    QLabel *m_description = nullptr;
    QLabel *m_medium = nullptr;
    QList<QToolButton *> m_classButtons;
    QLabel *m_loading = nullptr;
    QProgressBar *m_progress = nullptr;
    QPushButton *m_stop = nullptr;
    QLabel *m_foundCount = nullptr;
    QLabel *m_term = nullptr;
    QLabel *m_kind = nullptr;
    QList<QListView *> m_orderFoundViews; // file names, archives, extensions, paths
    QListView *m_sortedView = nullptr;

    SearchResults m_results;
    QList<ResultListModel *> m_models;
    std::unique_ptr<SearchRun> m_run;
    quint64 m_runSerial = 0;
    QString m_kindMarker;
    QByteArray m_searchedTerm;
    qsizetype m_currentRow = -1;
};
