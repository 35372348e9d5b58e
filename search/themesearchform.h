#pragma once

#include "formsupport.h"
#include "foundfileactions.h"
#include "foundrowlists.h"

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
class QToolButton;

// "Kalvex : Recherche à partir d'un thème sélectionné.": finds every catalogued entry whose path
// holds the chosen theme, in the chosen archives or in every folder, and lists the rows found in
// parallel lists, as the search window does.
//
// The chosen-theme label has three writers, on purpose: a choice in the theme list, a choice in
// the extension list (its three first characters), and a left press on a found row (the row's
// extension). A search looks for whatever it holds.
class ThemeSearchForm : public Form
{
    Q_OBJECT

public:
    ThemeSearchForm(const DataDirectory &data, const FoundFileActions::Services &services, Printer &printer,
                    const Clock &clock, QWidget *parent = nullptr);
    ~ThemeSearchForm() override;

    void search();
    void print();
    bool isSearching() const { return m_lists->isSearching(); }
    QString chosenTheme() const;

    // The rows of the last search, by index in the order found.
    const SearchResults &results() const { return m_lists->results(); }
    qsizetype foundCount() const { return results().size(); }
    QString foundPath(qsizetype row) const { return m_lists->path(row); }
    QString foundExtension(qsizetype row) const { return m_lists->extension(row); }
    QString foundArchive(qsizetype row) const { return m_lists->archive(row); }

    // The current row (-1 before any) and the press on a found row: the left button makes the row
    // current and writes its extension into the chosen-theme label (a path without a dot leaves
    // it); the right one acts on the current row by the label's text, as the search window does.
    qsizetype currentRow() const { return m_currentRow; }
    void setCurrentRow(qsizetype row);
    void pressRow(qsizetype row, Qt::MouseButton button);
    // The current row's labels and the actions on it.
    FoundFilePanel &foundFiles() const { return *m_panel; }

signals:
    void searchFinished();

protected:
    void load() override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void reject() override;

private:
    void buildLayout();
    void clearResults();
    // Makes `row` current in every list and fills the row labels.
    void chooseRow(qsizetype row);
    void finishSearch();

    const DataDirectory &m_data;
    Dialogs &m_dialogs;
    PictureLoader &m_pictures;
    Printer &m_printer;
    const Clock &m_clock;

    ArchivePicker *m_archives = nullptr;
    QListWidget *m_themes = nullptr;
    QListWidget *m_extensions = nullptr;
    QLabel *m_chosenTheme = nullptr;
    QToolButton *m_search = nullptr;
    FoundFilePanel *m_panel = nullptr;
    QLabel *m_loading = nullptr;
    QProgressBar *m_progress = nullptr;
    QLabel *m_foundCount = nullptr;
    QLabel *m_medium = nullptr;
    QLabel *m_extension = nullptr;
    FoundRowLists *m_lists = nullptr;

    qsizetype m_currentRow = -1;
};
