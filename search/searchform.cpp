#include "searchform.h"

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
#include "windows1252.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

struct ClassButton
{
    const char *icon;
    const char16_t *hint;
};

const ClassButton kClassButtons[] = {
    {"land002.ico", u"Images"},
    {"chart009.ico", u"Icônes"},
    {"misc24.ico", u"Sons et Musique"},
    {"drag1pg.ico", u"Textes"},
    {"camer002.ico", u"Vidéos"},
    {"note02.ico", u"Fichiers DIZ"},
    {"beide.ico", u"Fichiers exécutables"},
    {"truck.ico", u"Fichiers compressés"},
    {"keys03.ico", u"Divers"},
};

const QString kByNameHint = u"Recherche d'un fichier par son nom, sans extension."_qs;
const QString kByStringHint = u"Recherche d'un fichier à partir d'une chaîne d'au moins 3 caractères."_qs;
const QString kByExtensionHint = u"Liste des fichiers ayant la même extension."_qs;

QLabel *makeCaption(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(text);
    return label;
}

} // namespace

SearchForm::SearchForm(const DataDirectory &data, const FoundFileActions::Services &services, Printer &printer,
                       const Clock &clock, QWidget *parent)
    : Form(parent)
    , m_data(data)
    , m_dialogs(services.dialogs)
    , m_pictures(services.pictures)
    , m_printer(printer)
    , m_clock(clock)
{
    setWindowTitle(u"Kalvex2 Recherches"_qs);
    setObjectName(u"SearchForm"_qs);
    m_panel = new FoundFilePanel(services, this);
    // Named "result" and the model's column number (0 file names, 3 paths, 4 alphabetical).
    m_lists = new FoundRowLists(SearchKind::Name, {u"result0"_qs, u"result1"_qs, u"result2"_qs, u"result3"_qs, u"result4"_qs},
                                this);
    buildLayout();
}

SearchForm::~SearchForm() = default;

void SearchForm::buildLayout()
{
    auto *top = new QHBoxLayout;

    // Folders and archives.
    m_archives = new ArchivePicker(m_data, u"Rechercher dan tous les dossiers"_qs,
                                   u"La Sélection de tous les fichiers d'archives est desactivèe"_qs, this);
    top->addWidget(m_archives);

    // Search commands, the extension table and the class filters.
    auto *searchColumn = new QVBoxLayout;
    const auto addSearchButton = [&](QToolButton *&button, const QString &hint) {
        auto *row = new QHBoxLayout;
        button = makePictureButton(hint, this);
        button->setObjectName(hint);
        row->addWidget(button);
        auto *caption = makeCaption(hint, this);
        caption->setToolTip(hint);
        caption->setWordWrap(true);
        row->addWidget(caption, 1);
        searchColumn->addLayout(row);
        return caption;
    };
    addSearchButton(m_byName, kByNameHint);
    m_byStringCaption = addSearchButton(m_byString, kByStringHint);
    m_byStringCaption->setObjectName(u"byStringCaption"_qs);
    m_byStringCaption->installEventFilter(this);
    addSearchButton(m_byExtension, kByExtensionHint);
    m_extensions = new QListWidget(this);
    m_extensions->setAccessibleName(u"Extensions"_qs);
    m_extensions->setObjectName(u"extensions"_qs);
    m_extensions->setFont(QFont(u"Monospace"_qs));
    searchColumn->addWidget(m_extensions);
    auto *extensionRow = new QHBoxLayout;
    extensionRow->addWidget(makeCaption(u"Extension--->"_qs, this));
    m_extension = makeTextLabel(u"Extension"_qs, this);
    m_extension->setMinimumWidth(40);
    extensionRow->addWidget(m_extension);
    m_description = makeTextLabel(u"Programme associé"_qs, this);
    extensionRow->addWidget(m_description, 1);
    searchColumn->addLayout(extensionRow);
    auto *mediumRow = new QHBoxLayout;
    mediumRow->addWidget(makeCaption(u"Support--->"_qs, this));
    m_medium = makeTextLabel(u"Support"_qs, this);
    mediumRow->addWidget(m_medium, 1);
    searchColumn->addLayout(mediumRow);
    auto *classRow = new QHBoxLayout;
    for (int code = 1; code <= 9; ++code) {
        QToolButton *button = makePictureButton(QString::fromUtf16(kClassButtons[code - 1].hint), this);
        button->setObjectName(button->toolTip());
        button->setIconSize(QSize(24, 24));
        connect(button, &QToolButton::clicked, this, [this, code] { filterClass(code); });
        m_classButtons.append(button);
        classRow->addWidget(button);
    }
    classRow->setSpacing(2); // nine buttons in a row: the window fits a screen 1024 pixels wide
    classRow->addStretch();
    searchColumn->addLayout(classRow);
    top->addLayout(searchColumn, 3);

    top->addWidget(m_panel, 1);

    // Progress and counts.
    auto *status = new QHBoxLayout;
    m_loading = makeCaption(u"Chargement"_qs, this);
    status->addWidget(m_loading);
    m_progress = new QProgressBar(this);
    m_progress->setAccessibleName(u"Progression de la recherche"_qs);
    status->addWidget(m_progress, 1);
    m_stop = new QPushButton(u"Arrêter"_qs, this);
    m_stop->setAccessibleName(u"Arrêter la recherche"_qs);
    m_stop->setToolTip(u"Arrêter la recherche (Echap)"_qs);
    m_stop->setAutoDefault(false);
    status->addWidget(m_stop);
    m_foundCount = makeTextLabel(u"Nombre de fichiers trouvés"_qs, this);
    status->addWidget(m_foundCount, 1);
    m_term = makeTextLabel(u"Terme recherché"_qs, this);
    status->addWidget(m_term, 1);
    m_kind = makeTextLabel(u"Type de recherche"_qs, this);
    m_kind->setVisible(false);
    status->addWidget(m_kind);
    m_loading->setVisible(false);
    m_progress->setVisible(false);
    m_stop->setVisible(false);

    // The result lists: the order found (name, archive, extension, path) and the alphabetical view.
    auto *resultsRow = new QHBoxLayout;
    const auto addColumn = [&](QListView *view, const QString &caption, int stretch) {
        auto *column = new QVBoxLayout;
        column->addWidget(makeCaption(caption, this));
        column->addWidget(view);
        resultsRow->addLayout(column, stretch);
    };
    for (QListView *view : m_lists->pressableViews())
        view->viewport()->installEventFilter(this);
    addColumn(m_lists->names(), u"Classement ordre du support"_qs, 3);
    addColumn(m_lists->archives(), u"Support"_qs, 1);
    addColumn(m_lists->extensions(), u"Ext."_qs, 1);
    addColumn(m_lists->paths(), u"Chemin"_qs, 5);
    addColumn(m_lists->sorted(), u"Classement alphabétique"_qs, 3);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top, 2);
    layout->addLayout(status);
    layout->addWidget(m_panel->rowLabels());
    layout->addLayout(resultsRow, 3);
    openAtSize(QSize(1180, 820));

    connect(m_lists, &FoundRowLists::rowChosen, this, &SearchForm::setCurrentRow);
    connect(m_lists, &FoundRowLists::rowsArrived, this, &SearchForm::showFoundCount);
    connect(m_lists, &FoundRowLists::progressed, this, [this](int done) { m_archives->showProgress(done, m_progress); });
    connect(m_lists, &FoundRowLists::finished, this, &SearchForm::finishSearch);

    connect(m_byName, &QToolButton::clicked, this, &SearchForm::searchByName);
    connect(m_byString, &QToolButton::clicked, this, &SearchForm::searchByString);
    connect(m_byExtension, &QToolButton::clicked, this, &SearchForm::searchByExtension);
    connect(m_stop, &QPushButton::clicked, this, &SearchForm::stopSearch);
    connect(m_extensions, &QListWidget::currentTextChanged, this,
            [this](const QString &entry) { m_extension->setText(ExtensionEntry::extension(entry)); });
    connect(m_panel, &FoundFilePanel::classRequested, this, &SearchForm::requestViewer);
    connect(m_panel, &FoundFilePanel::printRequested, this, &SearchForm::printPaths);
}

void SearchForm::load()
{
    m_data.makeCurrent();
    const QList<QPair<QAbstractButton *, QString>> icons = {
        {m_byName, u"MAGNI001.ico"_qs}, {m_byExtension, u"words003.ico"_qs}, {m_byString, u"compu008.ico"_qs}};
    for (const auto &[button, file] : icons)
        loadButtonIcon(button, m_pictures, m_data.file(file));
    for (int i = 0; i < m_classButtons.size(); ++i)
        loadButtonIcon(m_classButtons[i], m_pictures, m_data.file(QString::fromLatin1(kClassButtons[i].icon)));
    loadButtonIcon(m_panel->printButton(), m_pictures, m_data.file(u"inkjet.ico"_qs));
    loadButtonIcon(m_panel->copyButton(), m_pictures, m_data.file(u"file005.ico"_qs));

    m_extensions->clear();
    m_extensions->addItems(TableFile::read(m_data.file(u"extens.txt"_qs)));

    m_archives->load();
}

int SearchForm::selectedArchiveCount() const
{
    return m_archives->selectedArchiveCount();
}

void SearchForm::searchByName()
{
    startSearch(SearchKind::Name, m_dialogs.input(u"Nom du fichier, sans extension ? "_qs));
}

void SearchForm::searchByString()
{
    startSearch(SearchKind::String, m_dialogs.input(u"Chaîne de 3 caractères au minimum... ? "_qs));
}

void SearchForm::searchByExtension()
{
    const QListWidgetItem *entry = m_extensions->currentItem();
    if (!entry) {
        m_dialogs.message(u"Vous devez sélectionner une extension pour commencer la recherche !"_qs);
        return;
    }
    m_extension->setText(ExtensionEntry::extension(entry->text()));
    m_description->setText(ExtensionEntry::program(entry->text()));
    startSearch(SearchKind::Extension, ExtensionEntry::extension(entry->text()));
}

void SearchForm::filterClass(int code)
{
    m_extensions->clear();
    m_extensions->addItems(ExtensionEntry::ofClass(TableFile::read(m_data.file(u"extens.txt"_qs)), code));
    if (m_extensions->count() > 0)
        m_extensions->setCurrentRow(0); // shows its extension, ready for a search
}

void SearchForm::clearResults()
{
    m_lists->clear(); // a search still running is dropped with its rows
    m_currentRow = -1;
    m_foundCount->clear();
    m_term->clear();
    m_medium->clear();
}

void SearchForm::startSearch(SearchKind kind, const QString &typed)
{
    if (const QString refusal = SearchRequests::termRefusal(kind, typed); !refusal.isEmpty()) {
        m_dialogs.message(refusal);
        return;
    }
    clearResults();
    SearchRequest request = SearchRequests::request(kind, typed, m_archives->archivesToSearch(&archivesToScan),
                                                    SearchRequests::threadCount());
    m_searchedTerm = request.term;
    m_term->setText(Windows1252::decode(m_searchedTerm));
    m_kindMarker = kind == SearchKind::Extension ? u"1"_qs : u"0"_qs;
    m_kind->setText(m_kindMarker);
    m_loading->setVisible(true);
    m_progress->setVisible(true);
    m_stop->setVisible(true);
    m_lists->start(std::move(request));
}

void SearchForm::showFoundCount()
{
    m_foundCount->setText(u"Nombre de fichiers trouvés: "_qs + formatSigned(m_lists->results().size()));
}

void SearchForm::finishSearch(bool limitReached)
{
    m_extension->clear();
    m_loading->setVisible(false);
    m_progress->setVisible(false);
    m_stop->setVisible(false);
    if (limitReached)
        m_dialogs.message(SearchRequests::rowLimitMessage(m_searchedTerm));
    emit searchFinished();
}

void SearchForm::stopSearch()
{
    m_lists->stop();
}

void SearchForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && isSearching()) {
        stopSearch();
        return;
    }
    Form::keyPressEvent(event);
}

void SearchForm::reject()
{
    m_lists->abandon();
    m_loading->setVisible(false);
    m_progress->setVisible(false);
    m_stop->setVisible(false);
    Form::reject();
}

void SearchForm::setCurrentRow(qsizetype row)
{
    if (row < 0 || row >= foundCount() || row == m_currentRow)
        return;
    m_currentRow = row;
    m_lists->showCurrentRow(row);
    m_panel->choose(currentPath(), currentArchive(), m_lists->archiveFile(row));
    m_medium->setText(m_panel->row().archiveLabel());
    emit currentRowChanged(row);
}

QString SearchForm::currentPath() const
{
    return foundPath(m_currentRow);
}

QString SearchForm::currentExtension() const
{
    return foundExtension(m_currentRow);
}

QString SearchForm::currentArchive() const
{
    return foundArchive(m_currentRow);
}

bool SearchForm::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_byStringCaption && event->type() == QEvent::MouseButtonRelease) {
        askFileName();
        return true;
    }
    if (event->type() != QEvent::MouseButtonPress && event->type() != QEvent::MouseButtonDblClick)
        return Form::eventFilter(watched, event);
    for (QListView *view : m_lists->pressableViews()) {
        if (watched != view->viewport())
            continue;
        const auto *press = static_cast<QMouseEvent *>(event);
        if (press->button() == Qt::LeftButton)
            return false; // the view makes the row current, which fills the labels (setCurrentRow)
        if (press->button() == Qt::RightButton && event->type() == QEvent::MouseButtonPress) {
            QStringList extensionList;
            for (int i = 0; i < m_extensions->count(); ++i)
                extensionList.append(m_extensions->item(i)->text());
            m_panel->actOnCurrentRow(extensionList);
        }
        return true; // other buttons do nothing, and no button but the left one chooses
    }
    return Form::eventFilter(watched, event);
}

void SearchForm::requestViewer(FoundFileActions::FileClass fileClass)
{
    if (!m_panel->actions().checkClass(fileClass, selectedArchiveCount(), m_kindMarker, foundExtension(0)))
        return;
    switch (fileClass) {
    case FoundFileActions::FileClass::Pictures:
        emit picturesViewerRequested();
        break;
    case FoundFileActions::FileClass::Texts:
        emit textsViewerRequested();
        break;
    case FoundFileActions::FileClass::Icons:
        emit iconsViewerRequested();
        break;
    }
}

void SearchForm::printPaths()
{
    printList(m_printer, m_clock, m_lists->allPaths());
}

void SearchForm::askFileName()
{
    if (m_dialogs.input(u"Nom du fichier recherché...sans extension.. ?"_qs).isEmpty())
        m_dialogs.message(u"Vous devez saisir un nom !"_qs);
}
