#include "themesearchform.h"

#include "archivepicker.h"
#include "datadirectory.h"
#include "dialogs.h"
#include "extensionentry.h"
#include "foundfilepanel.h"
#include "foundrowlists.h"
#include "foundrowlabels.h"
#include "listprintout.h"
#include "searchrequests.h"
#include "tablefile.h"
#include "textformat.h"
#include "themelist.h"
#include "themesearch.h"
#include "windows1252.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QMouseEvent>
#include <QProgressBar>
#include <QScreen>
#include <QToolButton>
#include <QVBoxLayout>

ThemeSearchForm::ThemeSearchForm(const DataDirectory &data, const FoundFileActions::Services &services, Printer &printer,
                                 const Clock &clock, QWidget *parent)
    : Form(parent)
    , m_data(data)
    , m_dialogs(services.dialogs)
    , m_pictures(services.pictures)
    , m_printer(printer)
    , m_clock(clock)
{
    m_panel = new FoundFilePanel(services, this);
    m_panel->hideClassButtons(); // this window has none
    setWindowTitle(u"Kalvex : Recherche à partir d'un thème sélectionné."_qs);
    setObjectName(u"ThemeSearchForm"_qs);
    // The frame, title bar included, at the top-left corner of the screen's free area.
    placeFrameOnOpening([this] { return screen() ? screen()->availableGeometry().topLeft() : QPoint(); });
    m_lists = new FoundRowLists(SearchKind::Theme,
                                {u"foundNames"_qs, u"foundArchives"_qs, u"foundExtensions"_qs, u"foundPaths"_qs, u"sortedNames"_qs},
                                this);
    buildLayout();
}

ThemeSearchForm::~ThemeSearchForm() = default;

void ThemeSearchForm::buildLayout()
{
    const auto valueLabel = [this](const QString &objectName) {
        auto *label = new QLabel(this);
        label->setObjectName(objectName);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        return label;
    };

    auto *top = new QHBoxLayout;
    m_archives = new ArchivePicker(m_data, u"Rechercher dans tous les dossiers"_qs,
                                   u"Désélection de tous les fichiers d'archives"_qs, this);
    top->addWidget(m_archives);

    // The theme and the extension lists, both writers of the chosen theme, and the search button.
    auto *choice = new QVBoxLayout;
    auto *lists = new QHBoxLayout;
    m_themes = new QListWidget(this);
    m_themes->setObjectName(u"themes"_qs);
    m_themes->setAccessibleName(u"Thèmes"_qs);
    lists->addWidget(m_themes, 1);
    m_extensions = new QListWidget(this);
    m_extensions->setObjectName(u"extensions"_qs);
    m_extensions->setAccessibleName(u"Extensions"_qs);
    m_extensions->setFont(QFont(u"Monospace"_qs));
    lists->addWidget(m_extensions, 2);
    choice->addLayout(lists, 1);
    auto *searchRow = new QHBoxLayout;
    m_search = makePictureButton({}, this, u"Rechercher"_qs);
    m_search->setObjectName(u"search"_qs);
    searchRow->addWidget(m_search);
    m_chosenTheme = valueLabel(u"chosenTheme"_qs);
    m_chosenTheme->setFrameShape(QFrame::Panel);
    m_chosenTheme->setFrameShadow(QFrame::Sunken);
    searchRow->addWidget(m_chosenTheme, 1);
    choice->addLayout(searchRow);
    top->addLayout(choice, 1);

    top->addWidget(m_panel); // "Imprimer", "Copier" and the icon preview

    // The result lists: names in the order found, archives, extensions, paths, alphabetical view.
    auto *resultsCaption = new QLabel(u"Liste des fichiers correspondant au thème sélectionné."_qs, this);
    auto *resultsRow = new QHBoxLayout;
    const auto addColumn = [&](QListView *view, const QString &caption, int stretch) {
        auto *column = new QVBoxLayout;
        column->addWidget(new QLabel(caption, this));
        column->addWidget(view);
        resultsRow->addLayout(column, stretch);
    };
    addColumn(m_lists->names(), u"Classement ordre du support"_qs, 3);
    addColumn(m_lists->archives(), u"Support"_qs, 1);
    addColumn(m_lists->extensions(), u"Ext."_qs, 1);
    addColumn(m_lists->paths(), u"Chemin"_qs, 5);
    addColumn(m_lists->sorted(), u"Classement alphabétique"_qs, 3);

    auto *rowLabels = new QHBoxLayout;
    rowLabels->addWidget(new QLabel(u"Support--->"_qs, this));
    m_medium = valueLabel(u"medium"_qs);
    rowLabels->addWidget(m_medium, 1);
    rowLabels->addWidget(new QLabel(u"Extension--->"_qs, this));
    m_extension = valueLabel(u"extension"_qs);
    m_extension->setMinimumWidth(40);
    rowLabels->addWidget(m_extension, 1);

    auto *status = new QHBoxLayout;
    m_loading = new QLabel(u"Chargement"_qs, this);
    m_loading->setObjectName(u"loading"_qs);
    status->addWidget(m_loading);
    m_progress = new QProgressBar(this);
    m_progress->setObjectName(u"progress"_qs);
    m_progress->setAccessibleName(u"Progression de la recherche"_qs);
    status->addWidget(m_progress, 1);
    m_foundCount = valueLabel(u"foundCount"_qs);
    status->addWidget(m_foundCount, 1);
    m_loading->setVisible(false);
    m_progress->setVisible(false);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top, 3);
    layout->addWidget(resultsCaption);
    layout->addLayout(resultsRow, 2);
    layout->addLayout(rowLabels);
    layout->addWidget(m_panel->rowLabels());
    layout->addLayout(status);
    openAtSize(QSize(1180, 780));

    // The keyboard moves the current row in any list; mouse presses on the names, the paths and
    // the alphabetical view act as the buttons say.
    connect(m_lists, &FoundRowLists::rowChosen, this, &ThemeSearchForm::setCurrentRow);
    for (QListView *view : m_lists->pressableViews())
        view->viewport()->installEventFilter(this);
    connect(m_lists, &FoundRowLists::progressed, this, [this](int done) { m_archives->showProgress(done, m_progress); });
    connect(m_lists, &FoundRowLists::finished, this, &ThemeSearchForm::finishSearch);

    // A choice, by the keyboard or by a click (on the item already current too), writes the label.
    const auto chooseTheme = [this](const QString &theme) { m_chosenTheme->setText(theme); };
    const auto chooseExtension = [this](const QString &entry) { m_chosenTheme->setText(ExtensionEntry::extension(entry)); };
    connect(m_themes, &QListWidget::currentTextChanged, this, chooseTheme);
    connect(m_themes, &QListWidget::itemClicked, this, [chooseTheme](const QListWidgetItem *item) { chooseTheme(item->text()); });
    connect(m_extensions, &QListWidget::currentTextChanged, this, chooseExtension);
    connect(m_extensions, &QListWidget::itemClicked, this,
            [chooseExtension](const QListWidgetItem *item) { chooseExtension(item->text()); });
    connect(m_search, &QToolButton::clicked, this, &ThemeSearchForm::search);
    connect(m_panel, &FoundFilePanel::printRequested, this, &ThemeSearchForm::print);
}

void ThemeSearchForm::load()
{
    m_data.makeCurrent();
    loadButtonIcon(m_search, m_pictures, m_data.file(u"card002.ico"_qs));
    loadButtonIcon(m_panel->printButton(), m_pictures, m_data.file(u"inkjet.ico"_qs));
    loadButtonIcon(m_panel->copyButton(), m_pictures, m_data.file(u"file005.ico"_qs));
    m_archives->load();
    m_themes->clear();
    m_themes->addItems(TableFile::read(m_data.file(ThemeList::readName())));
    m_extensions->clear();
    m_extensions->addItems(TableFile::read(m_data.file(u"extens.txt"_qs)));
}

QString ThemeSearchForm::chosenTheme() const
{
    return m_chosenTheme->text();
}

void ThemeSearchForm::clearResults()
{
    m_lists->clear(); // a search still running is dropped with its rows
    m_currentRow = -1;
    m_medium->clear();
    m_extension->clear();
    m_foundCount->clear();
}

void ThemeSearchForm::search()
{
    clearResults();
    m_loading->setVisible(true);
    m_progress->setVisible(true);
    if (const QString refusal = SearchRequests::termRefusal(SearchKind::Theme, m_chosenTheme->text()); !refusal.isEmpty()) {
        m_dialogs.message(refusal);
        return;
    }
    // The label shows the theme as it is searched for.
    const QByteArray theme = searchTerm(m_chosenTheme->text());
    m_chosenTheme->setText(Windows1252::decode(theme));

    m_lists->start(SearchRequests::request(SearchKind::Theme, m_chosenTheme->text(),
                                           m_archives->archivesToSearch(&ThemeSearch::archivesToScan),
                                           SearchRequests::threadCount()));
}

void ThemeSearchForm::finishSearch()
{
    m_foundCount->setText(u"Nombre de fichiers trouvés: "_qs + formatSigned(foundCount()));
    m_loading->setVisible(false);
    m_progress->setVisible(false);
    if (foundCount() > 0)
        setCurrentRow(0);
    emit searchFinished();
}

void ThemeSearchForm::print()
{
    printList(m_printer, m_clock, m_lists->allPaths());
}

void ThemeSearchForm::setCurrentRow(qsizetype row)
{
    if (row < 0 || row >= foundCount() || row == m_currentRow)
        return;
    chooseRow(row);
    // Only a press writes the row's extension into the chosen theme, which is the row's extension.
    m_panel->setCurrentExtension(m_chosenTheme->text());
}

void ThemeSearchForm::chooseRow(qsizetype row)
{
    m_currentRow = row;
    m_lists->showCurrentRow(row);
    m_panel->choose(foundPath(row), foundArchive(row), m_lists->archiveFile(row));
    m_medium->setText(m_panel->row().archiveLabel());
    m_extension->setText(foundExtension(row));
}

void ThemeSearchForm::pressRow(qsizetype row, Qt::MouseButton button)
{
    // The chosen-theme label is the current row's extension: the row takes it before each use and
    // gives it back after.
    m_panel->setCurrentExtension(m_chosenTheme->text());
    if (button == Qt::LeftButton) {
        if (row < 0 || row >= foundCount())
            return;
        chooseRow(row);
    } else if (button == Qt::RightButton) {
        QStringList extensionList;
        for (int i = 0; i < m_extensions->count(); ++i)
            extensionList.append(m_extensions->item(i)->text());
        m_panel->actOnCurrentRow(extensionList);
    } else {
        return;
    }
    m_chosenTheme->setText(m_panel->row().extension());
}

bool ThemeSearchForm::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        for (QListView *view : m_lists->pressableViews()) {
            if (watched != view->viewport())
                continue;
            const auto *press = static_cast<QMouseEvent *>(event);
            const QModelIndex index = view->indexAt(press->position().toPoint());
            pressRow(index.isValid() ? m_lists->rowShownAt(view, index.row()) : -1, press->button());
            // A right press acts on the current row: it must not move it.
            return press->button() != Qt::LeftButton;
        }
    }
    return Form::eventFilter(watched, event);
}

void ThemeSearchForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && isSearching()) {
        m_lists->stop(); // the rows found so far are kept
        return;
    }
    Form::keyPressEvent(event);
}

void ThemeSearchForm::reject()
{
    m_lists->abandon();
    m_loading->setVisible(false);
    m_progress->setVisible(false);
    Form::reject();
}
