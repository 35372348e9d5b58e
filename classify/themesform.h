#pragma once

#include "formsupport.h"
#include "linetable.h"

class Clock;
class DataDirectory;
class Dialogs;
class PictureLoader;
class Printer;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QToolButton;

// "Kalvex2 Thèmes": edits themes.txt, the words the search by theme offers. Themes are added
// as typed (lower-cased, nothing refused) and removed after a question.
class ThemesForm : public Form
{
    Q_OBJECT

public:
    ThemesForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
               const Clock &clock, QWidget *parent = nullptr);
    ~ThemesForm() override;

protected:
    void load() override;

private:
    void showThemes();
    void add();
    void remove();
    void print();

    const DataDirectory &m_data;
    Dialogs &m_dialogs;
    Printer &m_printer;
    PictureLoader &m_pictures;
    const Clock &m_clock;

    LineTable m_table;

    QListWidget *m_themes = nullptr;
    QLabel *m_count = nullptr;
    QLineEdit *m_newTheme = nullptr;
    QLabel *m_selectedTheme = nullptr;
    QPushButton *m_add = nullptr;
    QPushButton *m_remove = nullptr;
    QToolButton *m_print = nullptr;
};
