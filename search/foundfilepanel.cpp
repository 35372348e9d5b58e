#include "foundfilepanel.h"

#include "formsupport.h"
#include "foundrowlabels.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

FoundFilePanel::FoundFilePanel(const FoundFileActions::Services &services, QWidget *parent)
    : QGroupBox(u"Séquences automatisées"_qs, parent)
    , m_actions(services)
{
    setObjectName(u"Séquences automatisées"_qs);
    m_labels = new FoundRowLabels(this); // placed by the window
    auto *layout = new QVBoxLayout(this);
    using C = FoundFileActions::FileClass;
    for (const auto &[caption, fileClass] : {std::pair{u"Fichiers Images BMP, GIF, JPG ou WMF"_qs, C::Pictures},
                                             std::pair{u"Fichiers DIZ et TXT"_qs, C::Texts},
                                             std::pair{u"Fichiers ICO, CUR ou EMF"_qs, C::Icons}}) {
        auto *button = new QPushButton(caption, this);
        button->setObjectName(caption);
        // Room around the caption, which the style's own margin leaves touching the edges.
        button->setMinimumWidth(button->fontMetrics().horizontalAdvance(caption) + 2 * button->fontMetrics().height());
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, fileClass] { emit classRequested(fileClass); });
        m_classButtons.append(button);
        layout->addWidget(button);
    }
    auto *printCopyRow = new QHBoxLayout;
    for (auto [button, caption] : {std::pair{&m_print, u"Imprimer"_qs}, std::pair{&m_copy, u"Copier"_qs}}) {
        *button = makePictureButton(caption, this);
        (*button)->setText(caption);
        (*button)->setObjectName(caption);
        (*button)->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        printCopyRow->addWidget(*button);
    }
    layout->addLayout(printCopyRow);
    m_iconArea = new QLabel(u"Espace ICO"_qs, this);
    m_iconArea->setObjectName(u"Espace ICO"_qs);
    m_iconArea->setAccessibleName(u"Espace ICO"_qs);
    m_iconArea->setFrameShape(QFrame::Panel);
    m_iconArea->setFrameShadow(QFrame::Sunken);
    m_iconArea->setAlignment(Qt::AlignCenter);
    m_iconArea->setMinimumSize(64, 64);
    layout->addWidget(m_iconArea, 1); // the space left under the buttons is the preview's

    connect(m_print, &QToolButton::clicked, this, &FoundFilePanel::printRequested);
    connect(m_copy, &QToolButton::clicked, this, &FoundFilePanel::copyCurrentRow);
}

void FoundFilePanel::choose(const QString &path, const QString &archive, const QString &archiveFile)
{
    m_row.choose(path, archive, archiveFile);
    m_labels->show(m_row);
}

void FoundFilePanel::setCurrentExtension(const QString &extension)
{
    m_row.setExtension(extension);
    m_labels->show(m_row);
}

void FoundFilePanel::hideClassButtons()
{
    setTitle({});
    for (QPushButton *button : std::as_const(m_classButtons))
        button->hide();
}

void FoundFilePanel::actOnCurrentRow(const QStringList &extensionList)
{
    const std::optional<FoundFileActions::Preview> preview = m_actions.act(m_row, extensionList);
    m_labels->show(m_row); // the extension is written back upper-cased
    if (!preview)
        return;
    m_previewPath = preview->localPath;
    if (preview->picture.isNull())
        return;
    // An icon at its own size; a larger picture shrunk to the area.
    QImage picture = preview->picture;
    if (picture.width() > m_iconArea->width() || picture.height() > m_iconArea->height())
        picture = picture.scaled(m_iconArea->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    m_iconArea->setPixmap(QPixmap::fromImage(picture));
}

void FoundFilePanel::copyCurrentRow()
{
    const std::optional<QString> directory = m_actions.askCopyDirectory();
    if (!directory)
        return;
    m_labels->showCopyDirectory(*directory);
    const QString target = m_actions.copyInto(m_row, *directory);
    if (!target.isEmpty())
        m_labels->showCopyTarget(target);
}
