#pragma once

#include "drives.h"

#include <QWidget>

class QComboBox;
class QLabel;

// A drive chooser: the letters ("d:") in a list whose lines tell what is in each drive, and under
// it the chosen drive's volume label and mount point. It follows the drives while it lives: a medium mounted or removed shows at once,
// and the drives that stay keep their letters and the choice.
class DriveChooser final : public QWidget
{
    Q_OBJECT

public:
    // `objectName` names the list, where tests and the window's label find it.
    DriveChooser(Drives &drives, const QString &objectName, QWidget *parent = nullptr);

    // Reads the drives afresh; the choice stays on the same drive when it is still there.
    void reload();

    QComboBox *list() const { return m_list; }
    const QList<Drive> &drives() const { return m_shown; }
    // The chosen drive's name ("d:"), or an empty name.
    QString currentName() const;
    int currentIndex() const;
    void setCurrentIndex(int index);
    void setCurrentName(const QString &name);

signals:
    // The chosen drive is another one (by the user, or because the one chosen went away).
    void currentDriveChanged(int index);

private:
    void showDetails();

    Drives &m_drives;
    QList<Drive> m_shown;
    QComboBox *m_list;
    QLabel *m_details;
};
