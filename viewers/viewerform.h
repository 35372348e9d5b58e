#pragma once

#include "formsupport.h"
#include "slideshow.h"

class Clock;
class DataDirectory;
class Dialogs;
class FolderPicker;
class FoundFiles;
class PictureLoader;
class QBoxLayout;
class QCheckBox;
class QLabel;
class QPushButton;
class QToolButton;
class DelaySlider;

// What the three viewers share: the current-file label, the delay label and slider, the start
// button, the pause and stop boxes, the target labels, the dismissal and the copy of the file on
// show. A viewer puts its own area above them and runs its own show.
class ViewerForm : public Form
{
    Q_OBJECT

public:
    struct Services
    {
        const DataDirectory &data;
        Clock &clock;
        Dialogs &dialogs;
        FolderPicker &folderPicker;
        PictureLoader &pictures;
    };

    SlideShow &slideShow() { return m_show; }

    // The start button's action.
    virtual void start() = 0;
    // The stop box's and the close button's action.
    void dismiss();
    void reject() override;

protected:
    ViewerForm(FoundFiles &found, const Services &services, int longestDelay, QWidget *parent);

    void load() override;
    // Puts the viewer's own area above the controls.
    void setViewArea(QWidget *area);
    // Adds a button to the row of the start button.
    void addButton(QWidget *button);
    QToolButton *makeCopyButton(const QString &caption);
    // Adds "Copier" (the file on show) and a print button with the printer's icon; returns the
    // print button for the viewer to connect.
    QToolButton *addCopyAndPrintButtons(const QString &printHint);
    // Shows row `row` as the file on show (its stored path), remembering where it is here. False
    // when the rows changed under a running show and there is no such row any more.
    bool showCurrentFile(int row);
    // Copies the file on show into a chosen folder, after the question.
    void copyCurrentFile();

    FoundFiles &m_found;
    const DataDirectory &m_data;
    Dialogs &m_dialogs;
    FolderPicker &m_folderPicker;
    PictureLoader &m_pictures;
    SlideShow m_show;

    QLabel *m_currentFile = nullptr;
    QLabel *m_targetFolder = nullptr;
    QLabel *m_targetPath = nullptr;
    QString m_currentLocalPath;

private:
    QBoxLayout *m_layout = nullptr;
    QBoxLayout *m_buttons = nullptr;
    QLabel *m_delay = nullptr;
    DelaySlider *m_slider = nullptr;
    QPushButton *m_start = nullptr;
    QCheckBox *m_pause = nullptr;
    QCheckBox *m_stop = nullptr;
    QList<QToolButton *> m_copyButtons;
    QToolButton *m_print = nullptr;
};
