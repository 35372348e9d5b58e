#include "themesform.h"

#include "datadirectory.h"
#include "dialogs.h"
#include "listprintout.h"
#include "textformat.h"
#include "themelist.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

ThemesForm::ThemesForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
                       const Clock &clock, QWidget *parent)
    : Form(parent)
    , m_data(data)
    , m_dialogs(dialogs)
    , m_printer(printer)
    , m_pictures(pictures)
    , m_clock(clock)
    , m_table(QString(), QString())
{
    setWindowTitle(QStringLiteral("Kalvex2 Thèmes"));
    setObjectName(QStringLiteral("ThemesForm"));

    m_count = makeValueLabel(QStringLiteral("Nombre de thèmes"), this);
    m_count->setObjectName(QStringLiteral("count"));
    m_themes = new QListWidget(this);
    m_themes->setObjectName(QStringLiteral("themes"));
    m_themes->setAccessibleName(QStringLiteral("Thèmes"));
    m_themes->setUniformItemSizes(true);
    m_selectedTheme = makeValueLabel(QStringLiteral("Thème choisi"), this);
    m_selectedTheme->setObjectName(QStringLiteral("selectedTheme"));

    auto *newCaption = new QLabel(QStringLiteral("Nouveau thème --->"), this);
    m_newTheme = new QLineEdit(this);
    m_newTheme->setObjectName(QStringLiteral("newTheme"));
    m_newTheme->setAccessibleName(QStringLiteral("Nouveau thème"));
    newCaption->setBuddy(m_newTheme);
    auto *newRow = new QHBoxLayout;
    newRow->addWidget(newCaption);
    newRow->addWidget(m_newTheme, 1);

    m_add = new QPushButton(QStringLiteral("Ajouter"), this);
    m_add->setObjectName(QStringLiteral("add"));
    m_add->setAutoDefault(false);
    m_remove = new QPushButton(QStringLiteral("Supprimer"), this);
    m_remove->setObjectName(QStringLiteral("remove"));
    m_remove->setAutoDefault(false);
    m_print = makePictureButton(QString(), this, QStringLiteral("Imprimer la liste"));
    m_print->setObjectName(QStringLiteral("print"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_add);
    buttons->addWidget(m_remove);
    buttons->addStretch(1);
    buttons->addWidget(m_print);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_count);
    layout->addWidget(m_themes, 1);
    layout->addWidget(m_selectedTheme);
    layout->addLayout(newRow);
    layout->addLayout(buttons);

    connect(m_themes, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0)
            m_selectedTheme->setText(m_themes->item(row)->text());
    });
    connect(m_add, &QPushButton::clicked, this, &ThemesForm::add);
    connect(m_newTheme, &QLineEdit::returnPressed, this, &ThemesForm::add);
    connect(m_remove, &QPushButton::clicked, this, &ThemesForm::remove);
    connect(m_print, &QToolButton::clicked, this, &ThemesForm::print);
    resize(420, 400);
}

ThemesForm::~ThemesForm() = default;

void ThemesForm::load()
{
    move(ThemeList::windowPosition(frameGeometry().size()));
    m_data.makeCurrent();
    loadButtonIcon(m_print, m_pictures, m_data, QStringLiteral("inkjet.ico"));
    m_table = LineTable(m_data.file(ThemeList::readName()), m_data.file(ThemeList::writeName()));
    m_table.load();
    showThemes();
    m_selectedTheme->clear();
    m_newTheme->setFocus();
}

void ThemesForm::showThemes()
{
    const QSignalBlocker blocker(m_themes);
    m_themes->clear();
    m_themes->addItems(m_table.lines());
    m_themes->setCurrentRow(-1);
    m_count->setText(formatSigned(m_table.count()) + QStringLiteral(" thèmes"));
}

void ThemesForm::add()
{
    m_newTheme->setText(ThemeList::themeLine(m_newTheme->text()));
    m_table.append(m_newTheme->text());
    showThemes();
    m_newTheme->clear();
    m_newTheme->setFocus(); // ready for the next theme
}

void ThemesForm::remove()
{
    const Answer answer = m_dialogs.question(
        QStringLiteral("Souhaitez-vous SUPPRIMER ce thème ") + m_selectedTheme->text(),
        QStringLiteral("Suppression de fichier "), kDemoHelp);
    if (answer != Answer::Yes)
        return;
    m_table.removeAt(m_themes->currentRow());
    showThemes();
    m_selectedTheme->clear();
}

void ThemesForm::print()
{
    printList(m_printer, m_clock, m_table.lines());
}
