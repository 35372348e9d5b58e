#pragma once

#include "foundfileactions.h"
#include "foundrow.h"

#include <QGroupBox>

class FoundRowLabels;
class QLabel;
class QPushButton;
class QToolButton;

// "Séquences automatisées": the class buttons, "Imprimer", "Copier" and the icon preview
// "Espace ICO", over the current row and its labels. A search window places the group and the
// row labels (rowLabels()), makes rows current with choose(), acts with actOnCurrentRow(), and
// answers classRequested() and printRequested().
class FoundFilePanel : public QGroupBox
{
    Q_OBJECT

public:
    FoundFilePanel(const FoundFileActions::Services &services, QWidget *parent = nullptr);

    FoundFileActions &actions() { return m_actions; }
    const FoundRow &row() const { return m_row; }
    FoundRowLabels *rowLabels() const { return m_labels; }
    // The file shown in "Espace ICO"; empty before any.
    QString previewPath() const { return m_previewPath; }

    // A left press on a row.
    void choose(const QString &path, const QString &archive, const QString &archiveFile = {});
    // Replaces the current row's extension (the theme search window shares it with its chosen theme).
    void setCurrentExtension(const QString &extension);
    // Without the class buttons and the group's title: "Imprimer", "Copier" and "Espace ICO" only.
    void hideClassButtons();
    // A right press: acts on the current row (see FoundFileActions::act).
    void actOnCurrentRow(const QStringList &extensionList);
    // "Copier": the folder, the question, the copy.
    void copyCurrentRow();

    // The buttons, for the window to give them their icons.
    QToolButton *printButton() const { return m_print; }
    QToolButton *copyButton() const { return m_copy; }

signals:
    void classRequested(FoundFileActions::FileClass fileClass);
    void printRequested();

private:
    FoundFileActions m_actions;
    FoundRow m_row;
    FoundRowLabels *m_labels = nullptr;
    QToolButton *m_print = nullptr;
    QToolButton *m_copy = nullptr;
    QList<QPushButton *> m_classButtons;
    QLabel *m_iconArea = nullptr;
    QString m_previewPath;
};
