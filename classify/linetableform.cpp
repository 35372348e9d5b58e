#include "linetableform.h"

#include "datadirectory.h"
#include "listprintout.h"
#include "textformat.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QToolButton>

LineTableForm::LineTableForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
                             const Clock &clock, Texts texts, QWidget *parent)
    : Form(parent)
    , m_data(data)
    , m_dialogs(dialogs)
    , m_printer(printer)
    , m_pictures(pictures)
    , m_clock(clock)
    , m_texts(std::move(texts))
    , m_table(QString(), QString())
{
    m_count = makeTextLabel(QStringLiteral("count"), this);
    m_lines = new QListWidget(this);
    m_lines->setObjectName(QStringLiteral("lines"));
    m_lines->setAccessibleName(m_texts.listName);
    m_lines->setUniformItemSizes(true);
    m_selected = makeTextLabel(QStringLiteral("selected"), this);

    m_add = new QPushButton(QStringLiteral("Ajouter"), this);
    m_add->setObjectName(QStringLiteral("add"));
    m_remove = new QPushButton(QStringLiteral("Supprimer"), this);
    m_remove->setObjectName(QStringLiteral("remove"));
    for (QPushButton *button : {m_add, m_remove})
        button->setAutoDefault(false);
    m_print = makePictureButton(QString(), this, QStringLiteral("Imprimer la liste"));
    m_print->setObjectName(QStringLiteral("print"));

    connect(m_lines, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0)
            m_selected->setText(m_lines->item(row)->text());
    });
    connect(m_add, &QPushButton::clicked, this, &LineTableForm::add);
    connect(m_remove, &QPushButton::clicked, this, &LineTableForm::remove);
    connect(m_print, &QToolButton::clicked, this, &LineTableForm::print);
}

QHBoxLayout *LineTableForm::makeButtonRow()
{
    auto *row = new QHBoxLayout;
    row->addWidget(m_add);
    row->addWidget(m_remove);
    row->addStretch(1);
    row->addWidget(m_print);
    return row;
}

void LineTableForm::openTable(const QString &readName, const QString &writeName)
{
    m_data.makeCurrent();
    loadButtonIcon(m_print, m_pictures, m_data.file(QStringLiteral("inkjet.ico")));
    m_table = LineTable(m_data.file(readName), m_data.file(writeName));
    m_table.load();
    showTable();
    m_selected->clear();
}

void LineTableForm::appendLine(const QString &line)
{
    m_table.append(line);
    showTable();
}

void LineTableForm::showTable()
{
    const QSignalBlocker blocker(m_lines);
    m_lines->clear();
    m_lines->addItems(m_table.lines());
    m_lines->setCurrentRow(-1); // nothing selected after a change
    m_count->setText(formatSigned(m_table.count()) + m_texts.countSuffix);
}

void LineTableForm::remove()
{
    const QString question = m_texts.removalQuestion + m_selected->text();
    if (!removeAfterQuestion(m_table, m_lines->currentRow(), m_dialogs, question))
        return;
    showTable();
    m_selected->clear();
}

void LineTableForm::print()
{
    printList(m_printer, m_clock, m_table.lines());
}
