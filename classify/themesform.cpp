#include "themesform.h"

#include "themelist.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>

ThemesForm::ThemesForm(const DataDirectory &data, Dialogs &dialogs, Printer &printer, PictureLoader &pictures,
                       const Clock &clock, QWidget *parent)
    : LineTableForm(data, dialogs, printer, pictures, clock,
                    {QStringLiteral(" thèmes"), QStringLiteral("Souhaitez-vous SUPPRIMER ce thème "),
                     QStringLiteral("Thèmes")},
                    parent)
{
    setWindowTitle(QStringLiteral("Kalvex2 Thèmes"));
    setObjectName(QStringLiteral("ThemesForm"));

    auto *newCaption = new QLabel(QStringLiteral("Nouveau thème --->"), this);
    newCaption->setObjectName(QStringLiteral("newThemeCaption"));
    m_newTheme = new QLineEdit(this);
    m_newTheme->setObjectName(QStringLiteral("newTheme"));
    m_newTheme->setAccessibleName(QStringLiteral("Nouveau thème"));
    newCaption->setBuddy(m_newTheme);
    auto *newRow = new QHBoxLayout;
    newRow->addWidget(newCaption);
    newRow->addWidget(m_newTheme, 1);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_count);
    layout->addWidget(m_lines, 1);
    layout->addWidget(m_selected);
    layout->addLayout(newRow);
    layout->addLayout(makeButtonRow());

    connect(m_newTheme, &QLineEdit::returnPressed, this, &ThemesForm::add);
    resize(420, 400);
}

ThemesForm::~ThemesForm() = default;

void ThemesForm::load()
{
    move(ThemeList::windowPosition(frameGeometry().size()));
    openTable(ThemeList::readName(), ThemeList::writeName());
    m_newTheme->setFocus();
}

void ThemesForm::add()
{
    m_newTheme->setText(ThemeList::themeLine(m_newTheme->text()));
    appendLine(m_newTheme->text());
    m_newTheme->clear();
    m_newTheme->setFocus(); // ready for the next theme
}
