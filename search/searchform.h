#pragma once

#include "formsupport.h"
#include "foundfileactions.h"
#include "foundrowlists.h"
#include "searchrules.h"



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
    bool isSearching() const { return m_lists->isSearching(); }

    // The rows of the last search, by index in the order found.
    const SearchResults &results() const { return m_lists->results(); }
    qsizetype foundCount() const { return results().size(); }
    QString foundFileName(qsizetype row) const { return m_lists->fileName(row); }
    QString foundPath(qsizetype row) const { return m_lists->path(row); }
    QString foundExtension(qsizetype row) const { return m_lists->extension(row); }
    QString foundArchive(qsizetype row) const { return m_lists->archive(row); }
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
    void showFoundCount();
    void finishSearch(bool limitReached);
    void clearResults();

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
    FoundRowLists *m_lists = nullptr;
    FoundFilePanel *m_panel = nullptr;

    QString m_kindMarker;
    QByteArray m_searchedTerm;
    qsizetype m_currentRow = -1;
};
