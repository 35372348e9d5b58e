#include "icongalleryform.h"

#include "dialogs.h"
#include "filecopy.h"
#include "folderpicker.h"
#include "foundfiles.h"
#include "pictureloader.h"
#include "viewerrules.h"

#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int kColumns = 10;
constexpr int kPictureSide = 48;

} // namespace

IconGalleryForm::IconGalleryForm(FoundFiles &found, const Services &services, QWidget *parent)
    : ViewerForm(found, services, 20, parent)
{
    setWindowTitle(QStringLiteral("Visualisation des Icônes "));
    auto *grid = new QWidget(this);
    grid->setObjectName(QStringLiteral("cells"));
    auto *cells = new QGridLayout(grid);
    cells->setSpacing(4);
    for (int n = 1; n <= kCells; ++n) {
        auto *cell = new QWidget(grid);
        auto *column = new QVBoxLayout(cell);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(1);
        auto *picture = new QLabel(cell);
        picture->setObjectName(QStringLiteral("cell%1").arg(n));
        picture->setAccessibleName(QStringLiteral("Icône %1").arg(n));
        picture->setFixedSize(kPictureSide, kPictureSide);
        picture->setAlignment(Qt::AlignCenter);
        auto *caption = new QLabel(cell);
        caption->setObjectName(QStringLiteral("caption%1").arg(n));
        caption->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        caption->setFixedWidth(76);
        column->addWidget(picture, 0, Qt::AlignHCenter);
        column->addWidget(caption);
        cells->addWidget(cell, (n - 1) / kColumns, (n - 1) % kColumns);
        m_cellPictures[size_t(n - 1)] = picture;
        m_captions[size_t(n - 1)] = caption;
    }
    setViewArea(grid);

    QToolButton *copyButton = makeCopyButton(QStringLiteral("Tout copier"));
    copyButton->setObjectName(QStringLiteral("copyAll"));
    addButton(copyButton);
    connect(copyButton, &QToolButton::clicked, this, &IconGalleryForm::copyAll);
}

void IconGalleryForm::start()
{
    m_show.runPages(m_found.count(), kCells, [this](int row, int cell) { fillCell(row, cell); });
}

void IconGalleryForm::fillCell(int row, int cell)
{
    if (!showCurrentFile(row))
        return;
    QLabel *picture = cellPicture(cell);
    if (!m_currentLocalPath.isEmpty()) {
        const QIcon icon = m_pictures.loadIcon(m_currentLocalPath);
        if (!icon.isNull()) // a file that does not load leaves the cell as it was
            picture->setPixmap(icon.pixmap(QSize(kPictureSide, kPictureSide)));
    }
    QLabel *caption = cellCaption(cell);
    caption->setText(ViewerRules::iconCaption(m_found.name(row), caption->text()));
}

void IconGalleryForm::copyAll()
{
    const std::optional<QString> folder = m_folderPicker.pickFolder();
    if (!folder) {
        m_dialogs.message(folderPickerCancelledText());
        return;
    }
    m_targetFolder->setText(ViewerRules::targetFolder(*folder));
    if (m_dialogs.question(ViewerRules::copyAllQuestion(m_targetFolder->text()), ViewerRules::copyTitle(), kDemoHelp)
        != Answer::Yes)
        return;
    const int count = m_found.count();
    for (int row = 0; row < count; ++row) {
        const QString source = m_found.localPath(row);
        if (!source.isEmpty())
            copyFileInto(source, m_targetFolder->text(), copiedFileName(m_found.name(row)));
    }
}
