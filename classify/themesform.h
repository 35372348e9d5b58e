#pragma once

#include "linetableform.h"

class QLineEdit;

// "Kalvex2 Thèmes": edits themes.txt, the words the search by theme offers. Themes are added
// as typed (lower-cased, nothing refused) and removed after a question.
class ThemesForm : public LineTableForm
{
    Q_OBJECT

public:
    ThemesForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
               const Clock &clock, QWidget *parent = nullptr);
    ~ThemesForm() override;

protected:
    void load() override;
    void add() override;

private:
    QLineEdit *m_newTheme = nullptr;
};
