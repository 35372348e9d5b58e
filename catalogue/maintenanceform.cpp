#include "maintenanceform.h"

#include "datadirectory.h"
#include "listprintout.h"

#include <QListWidget>
#include <QToolButton>

MaintenanceForm::MaintenanceForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer,
                                 PictureLoader &pictures, const Clock &clock, QWidget *parent)
    : Form(parent)
    , m_data(data)
    , m_dialogs(dialogs)
    , m_printer(printer)
    , m_pictures(pictures)
    , m_clock(clock)
{
}

QListWidget *MaintenanceForm::makeList(const QString &objectName, const QString &accessibleName)
{
    auto *list = new QListWidget(this);
    list->setObjectName(objectName);
    list->setAccessibleName(accessibleName);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setUniformItemSizes(true);
    return list;
}

QToolButton *MaintenanceForm::makePrintButton(QListWidget *printed)
{
    QToolButton *button = makePictureButton(QString(), this, QStringLiteral("Imprimer"));
    button->setObjectName(QStringLiteral("print"));
    loadButtonIcon(button, m_pictures, m_data.file(QStringLiteral("inkjet.ico")));
    connect(button, &QToolButton::clicked, this, [this, printed] {
        QStringList items;
        for (int row = 0; row < printed->count(); ++row)
            items.append(printed->item(row)->text());
        printList(m_printer, m_clock, items);
    });
    return button;
}
