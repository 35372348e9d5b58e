#pragma once

#include "formsupport.h"
#include "foundfileactions.h"
#include "searchresults.h"
#include "searchrules.h"

#include <QPointer>

#include <memory>

class ArchivePicker;
class Clock;
class DataDirectory;
class Dialogs;
class FoundFilePanel;
class PictureLoader;
class Printer;
class QLabel;
class QListView;
class QListWidget;
class QProgressBar;
class QPushButton;
class QToolButton;
class ResultListModel;
class SearchRun;

// "Kalvex2 Recherches": searches the archives of the chosen folder (or of every folder) by file
// name, by string or by extension, and shows the rows found in parallel lists. A left press on a
// row of the file names, the paths or the alphabetical view makes it current; a right press acts
// on the current row (FoundFileActions), AVI and WAV rows playing in the media window.
class SearchForm : public Form
{
    Q_OBJECT

public:
    SearchForm(const DataDirectory &data, const FoundFileActions::Services &services, Printer &printer,
               const Clock &clock, QWidget *parent = nullptr);
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

    // The current row's labels and the actions on it.
    FoundFilePanel &foundFiles() const { return *m_panel; }
    // A class button: its checks, then the request for its viewer.
    void requestViewer(FoundFileActions::FileClass fileClass);
    // "Imprimer": the path list with the list printout.
    void printPaths();
    // The caption of the search by string: asks for a name, and stops there.
    void askFileName();

signals:
    void searchFinished();
    void currentRowChanged(qsizetype row);
    void picturesViewerRequested();
    void textsViewerRequested();
    void iconsViewerRequested();

protected:
    void load() override;
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void reject() override;

private:
    void buildLayout();
    void startSearch(SearchKind kind, const QString &typed);
    void takeRows();
    void showProgress(int archivesDone);
    void finishSearch();
    void clearResults();
    // Named "result" and the model's column number (0 file names, 3 paths, 4 alphabetical).
    QListView *makeResultView(ResultListModel *model, const QString &accessibleName);

    const DataDirectory &m_data;
    Dialogs &m_dialogs;
    PictureLoader &m_pictures;
    Printer &m_printer;
    const Clock &m_clock;

    ArchivePicker *m_archives = nullptr;
    QToolButton *m_byName = nullptr;
    QToolButton *m_byString = nullptr;
    QLabel *m_byStringCaption = nullptr;
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
    QList<QListView *> m_pressableViews; // file names, paths, alphabetical
    FoundFilePanel *m_panel = nullptr;

    SearchResults m_results;
    QList<ResultListModel *> m_models;
    std::unique_ptr<SearchRun> m_run;
    quint64 m_runSerial = 0;
    QString m_kindMarker;
    QByteArray m_searchedTerm;
    qsizetype m_currentRow = -1;
};
