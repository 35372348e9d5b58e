#include "foundrowlabels.h"

#include "foundrow.h"

#include <QFormLayout>
#include <QLabel>

FoundRowLabels::FoundRowLabels(QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QFormLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setVerticalSpacing(1);
    m_mediumPrompt = addLabel(u"mediumPrompt"_qs, u"Disque"_qs);
    m_path = addLabel(u"currentPath"_qs, u"Fichier"_qs);
    m_extension = addLabel(u"currentExtension"_qs, u"Extension"_qs);
    m_archive = addLabel(u"archiveLabel"_qs, u"Archive"_qs);
    m_copyDirectory = addLabel(u"copyDirectory"_qs, u"Répertoire"_qs);
    m_copyTarget = addLabel(u"copyTarget"_qs, u"Copie"_qs);
    // Kept for the actions, as the window always kept them, but not worth a line on screen.
    m_helpPath = addLabel(u"helpPath"_qs, {});
    m_quotedPath = addLabel(u"quotedPath"_qs, {});
    m_pathLessExtension = addLabel(u"pathLessExtension"_qs, {});
    for (QLabel *hidden : {m_helpPath, m_quotedPath, m_pathLessExtension})
        hidden->setVisible(false);
}

QLabel *FoundRowLabels::addLabel(const QString &objectName, const QString &caption)
{
    auto *label = new QLabel(this);
    label->setObjectName(objectName);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setTextFormat(Qt::PlainText);
    if (caption.isEmpty())
        return label;
    // No buddy: a screen reader names the value label by the caption instead of its value.
    static_cast<QFormLayout *>(layout())->addRow(new QLabel(caption + u" :"_qs, this), label);
    return label;
}

void FoundRowLabels::show(const FoundRow &row)
{
    m_path->setText(row.path());
    m_helpPath->setText(row.helpPath());
    m_quotedPath->setText(row.quotedPath());
    m_archive->setText(row.archiveLabel());
    m_pathLessExtension->setText(row.pathLessExtension());
    m_extension->setText(row.extension());
    m_mediumPrompt->setText(row.mediumPrompt());
}

void FoundRowLabels::showCopyDirectory(const QString &directory)
{
    m_copyDirectory->setText(directory);
}

void FoundRowLabels::showCopyTarget(const QString &target)
{
    m_copyTarget->setText(target);
}

QString FoundRowLabels::mediumPrompt() const
{
    return m_mediumPrompt->text();
}
