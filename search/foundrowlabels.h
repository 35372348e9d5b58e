#pragma once

#include <QWidget>

class FoundRow;
class QLabel;

// The labels of a search window's current row (path, extension, the disc to put in the drive,
// and the copy's folder and target), for the search and theme search windows alike. The labels
// show values, so screen readers read their text; captions beside them say what they are.
class FoundRowLabels : public QWidget
{
    Q_OBJECT

public:
    explicit FoundRowLabels(QWidget *parent = nullptr);

    void show(const FoundRow &row);
    void showCopyDirectory(const QString &directory);
    void showCopyTarget(const QString &target);

    QString mediumPrompt() const;

private:
    QLabel *addLabel(const QString &objectName, const QString &caption);

    QLabel *m_path = nullptr;
    QLabel *m_helpPath = nullptr;
    QLabel *m_quotedPath = nullptr;
    QLabel *m_archive = nullptr;
    QLabel *m_pathLessExtension = nullptr;
    QLabel *m_extension = nullptr;
    QLabel *m_mediumPrompt = nullptr;
    QLabel *m_copyDirectory = nullptr;
    QLabel *m_copyTarget = nullptr;
};
