#include "drivechooser.h"

#include <QComboBox>
#include <QLabel>
#include <QAbstractItemView>
#include <QSignalBlocker>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace {

constexpr int kListLineRole = Qt::UserRole + 1;

// The open list shows what is in each drive; the item's own text, what the window reads as the
// chosen drive and shows closed, stays the bare name ("d:").
class ListLineDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const QString line = index.data(kListLineRole).toString();
        if (!line.isEmpty())
            option->text = line;
    }
};

} // namespace

DriveChooser::DriveChooser(Drives &drives, const QString &objectName, QWidget *parent)
    : QWidget(parent)
    , m_drives(drives)
{
    m_list = new QComboBox(this);
    m_list->setObjectName(objectName);
    m_list->setAccessibleName(QStringLiteral("Lecteur"));
    m_list->setItemDelegate(new ListLineDelegate(m_list));
    m_details = new QLabel(this);
    m_details->setObjectName(objectName + QStringLiteral("Details"));
    m_details->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(m_list);
    layout->addWidget(m_details);
    setFocusProxy(m_list);

    connect(m_list, &QComboBox::currentIndexChanged, this, [this](int index) {
        showDetails();
        emit currentDriveChanged(index);
    });
    connect(&m_drives, &Drives::changed, this, &DriveChooser::reload);
}

void DriveChooser::reload()
{
    const QString chosen = currentName();
    m_shown = m_drives.drives();
    int index = -1;
    {
        const QSignalBlocker blocker(m_list);
        m_list->clear();
        for (const Drive &drive : std::as_const(m_shown)) {
            m_list->addItem(drive.name);
            m_list->setItemData(m_list->count() - 1, driveDescription(drive), Qt::ToolTipRole);
            m_list->setItemData(m_list->count() - 1, driveListLine(drive), kListLineRole);
            if (drive.name == chosen)
                index = m_list->count() - 1;
        }
        m_list->setCurrentIndex(index >= 0 ? index : (m_list->count() > 0 ? 0 : -1));
    }
    m_list->view()->setMinimumWidth(m_list->view()->sizeHintForColumn(0) + 8); // the lines whole
    showDetails();
    if (index < 0 && !chosen.isEmpty())
        emit currentDriveChanged(m_list->currentIndex());
}

QString DriveChooser::currentName() const
{
    return m_list->currentText();
}

int DriveChooser::currentIndex() const
{
    return m_list->currentIndex();
}

void DriveChooser::setCurrentIndex(int index)
{
    m_list->setCurrentIndex(index);
    showDetails();
}

void DriveChooser::setCurrentName(const QString &name)
{
    const int index = m_list->findText(name);
    if (index >= 0)
        setCurrentIndex(index);
}

void DriveChooser::showDetails()
{
    const int index = m_list->currentIndex();
    m_details->setText(index >= 0 && index < m_shown.size() ? driveDescription(m_shown[index]) : QString());
}
