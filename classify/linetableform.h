#pragma once

#include "formsupport.h"
#include "linetable.h"

class Clock;
class DataDirectory;
class Dialogs;
class PictureLoader;
class Printer;
class QHBoxLayout;
class QLabel;
class QListWidget;
class QPushButton;
class QToolButton;

// What the table windows share: the list of the table's lines, the count, the selected line,
// and the buttons "Ajouter", "Supprimer" and the printer. Subclasses place these controls and
// say what adding does.
class LineTableForm : public Form
{
    Q_OBJECT

protected:
    struct Texts
    {
        QString countSuffix;       // " extensions"
        QString removalQuestion;   // followed by the selected line
        QString listName;          // the list's accessible name
    };

    LineTableForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
                  const Clock &clock, Texts texts, QWidget *parent);

    // Makes the data directory current, loads the printer icon and reads the table afresh.
    void openTable(const QString &readName, const QString &writeName);
    // Appends a line, rewrites the file and shows the table.
    void appendLine(const QString &line);
    // "Ajouter", "Supprimer", then the print button at the right.
    QHBoxLayout *makeButtonRow();

    virtual void add() = 0;

    const DataDirectory &m_data;
    Dialogs &m_dialogs;
    QListWidget *m_lines = nullptr;
    QLabel *m_count = nullptr;
    QLabel *m_selected = nullptr;

private:
    void showTable();
    void remove();
    void print();

    Printer &m_printer;
    PictureLoader &m_pictures;
    const Clock &m_clock;
    Texts m_texts;
    LineTable m_table;
    QPushButton *m_add = nullptr;
    QPushButton *m_remove = nullptr;
    QToolButton *m_print = nullptr;
};
