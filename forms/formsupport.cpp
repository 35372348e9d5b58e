#include "formsupport.h"

#include "pictureloader.h"

#include <QLabel>
#include <QShowEvent>
#include <QToolButton>

Form::Form(QWidget *parent)
    : QDialog(parent, Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                          | Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint)
{
}

void Form::setVisible(bool visible)
{
    // A window's position includes its frame when it is set before the window shows; set during the
    // showing (from load()), it placed the client area there and the title bar off screen.
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
