#pragma once

#include "formsupport.h"

class Clock;
class DataDirectory;
class Dialogs;
class Printer;
class PictureLoader;
class QListWidget;
class QToolButton;

// The base of the archive list and archive folders windows: the services they share, their lists
// and their print button, which prints one list's items with the shared list printout.
class MaintenanceForm : public Form
{
    Q_OBJECT

public:
    MaintenanceForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
                    const Clock &clock, QWidget *parent);

protected:
    // A single-selection list named `objectName`, read by screen readers as `accessibleName`.
    QListWidget *makeList(const QString &objectName, const QString &accessibleName);
    // The picture button showing inkjet.ico that prints the items of `printed`.
    QToolButton *makePrintButton(QListWidget *printed);

    const DataDirectory &m_data;
    Dialogs &m_dialogs;

private:
    Printer &m_printer;
    PictureLoader &m_pictures;
    const Clock &m_clock;
};
