#include "formsupport.h"

#include "pictureloader.h"

#include <QLabel>
#include <QScreen>
#include <QShowEvent>
#include <QToolButton>

#include <algorithm>

Form::Form(QWidget *parent)
    : QDialog(parent, Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                          | Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint)
{
}

void Form::setVisible(bool visible)
{
    // A window's position includes its frame when it is set before the window shows; set during the
    // showing (from load()), it placed the client area there and the title bar off screen.
    if (visible && !isVisible() && m_preferredSize.isValid() && screen()) {
        // Before the first showing the frame is unknown: room for a title bar and borders.
        const QSize frame = isWindow() && frameGeometry() != geometry() ? frameGeometry().size() - size() : QSize(12, 40);
        const QRect free = screen()->availableGeometry();
        resize(m_preferredSize.boundedTo(free.size() - frame).expandedTo(minimumSizeHint()));
        m_preferredSize = {}; // later openings keep the size the user gave it
        if (!m_frameTopLeft) { // centred on the screen's free area, the title bar on it
            const QSize whole = size() + frame;
            move(free.x() + std::max(0, (free.width() - whole.width()) / 2),
                 free.y() + std::max(0, (free.height() - whole.height()) / 2));
        }
    }
    if (visible && !isVisible() && m_frameTopLeft)
        move(m_frameTopLeft());
    QDialog::setVisible(visible);
}

void Form::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous())
        load();
}

QToolButton *makePictureButton(const QString &hint, QWidget *parent, const QString &accessibleName)
{
    auto *button = new QToolButton(parent);
    button->setIconSize(QSize(32, 32));
    button->setAutoRaise(false);
    button->setToolTip(hint);
    button->setAccessibleName(hint.isEmpty() ? accessibleName : hint);
    return button;
}

void loadButtonIcon(QAbstractButton *button, PictureLoader &pictures, const QString &path)
{
    button->setIcon(pictures.loadIcon(path));
}

QLabel *makeTextLabel(const QString &objectName, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setObjectName(objectName);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}
