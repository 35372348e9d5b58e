#include "searchform.h"

#include "archivepicker.h"
#include "datadirectory.h"
#include "dialogs.h"
#include "extensionentry.h"
#include "foundfilepanel.h"
#include "foundrowlabels.h"
#include "listprintout.h"
#include "resultlistmodel.h"
#include "searchengine.h"
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
#include <QScrollBar>
#include <QThread>
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
    for (auto column : {ResultListModel::Column::FileName, ResultListModel::Column::Archive,
                        ResultListModel::Column::Extension, ResultListModel::Column::Path,
                        ResultListModel::Column::Sorted})
        m_models.append(new ResultListModel(m_results, column, this));
    buildLayout();
}

SearchForm::~SearchForm() = default;

QListView *SearchForm::makeResultView(ResultListModel *model, const QString &accessibleName)
{
    auto *view = new QListView(this);
    view->setObjectName(u"result"_qs + QString::number(m_models.indexOf(model)));
    view->setModel(model);
    view->setUniformItemSizes(true);
    view->setLayoutMode(QListView::Batched);
    view->setBatchSize(500);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setAccessibleName(accessibleName);
    return view;
}

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
        button->setIconSize(QSize(24, 24));
        connect(button, &QToolButton::clicked, this, [this, code] { filterClass(code); });
        m_classButtons.append(button);
        classRow->addWidget(button);
    }
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
    QListView *names = makeResultView(m_models[0], u"Classement ordre du support"_qs);
    QListView *archives = makeResultView(m_models[1], u"Archives des fichiers trouvés"_qs);
    QListView *extensions = makeResultView(m_models[2], u"Extensions des fichiers trouvés"_qs);
    QListView *paths = makeResultView(m_models[3], u"Chemins des fichiers trouvés"_qs);
    paths->setToolTip(u"Bouton gauche pour sélectioner<-->bouton droit pour exécuter le fichier"_qs);
    m_sortedView = makeResultView(m_models[4], u"Classement alphabétique"_qs);
    m_orderFoundViews = {names, archives, extensions, paths};
    m_pressableViews = {names, paths, m_sortedView};
    for (QListView *view : std::as_const(m_pressableViews))
        view->viewport()->installEventFilter(this);
    addColumn(names, u"Classement ordre du support"_qs, 3);
    addColumn(archives, u"Support"_qs, 1);
    addColumn(extensions, u"Ext."_qs, 1);
    addColumn(paths, u"Chemin"_qs, 5);
    addColumn(m_sortedView, u"Classement alphabétique"_qs, 3);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top, 3);
    layout->addLayout(status);
    layout->addWidget(m_panel->rowLabels());
    layout->addLayout(resultsRow, 4);
    resize(1180, 820);

    // The parallel lists scroll and choose together.
    for (QListView *view : std::as_const(m_orderFoundViews)) {
        for (QListView *other : std::as_const(m_orderFoundViews)) {
            if (other != view)
                connect(view->verticalScrollBar(), &QScrollBar::valueChanged, other->verticalScrollBar(), &QScrollBar::setValue);
        }
        connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
                [this](const QModelIndex &current) {
                    if (current.isValid())
                        setCurrentRow(current.row());
                });
    }
    connect(m_sortedView->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current) {
                if (current.isValid() && current.row() < m_results.sortedSize())
                    setCurrentRow(m_results.sortedIndex(current.row()));
            });

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
        loadButtonIcon(button, m_pictures, m_data, file);
    for (int i = 0; i < m_classButtons.size(); ++i)
        loadButtonIcon(m_classButtons[i], m_pictures, m_data, QString::fromLatin1(kClassButtons[i].icon));
    loadButtonIcon(m_panel->printButton(), m_pictures, m_data, u"inkjet.ico"_qs);
    loadButtonIcon(m_panel->copyButton(), m_pictures, m_data, u"file005.ico"_qs);

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
    const QString name = m_dialogs.input(u"Nom du fichier, sans extension ? "_qs);
    if (name.isEmpty()) {
        m_dialogs.message(u"Vous devez saisir un nom !"_qs);
        return;
    }
    startSearch(SearchKind::Name, name);
}

void SearchForm::searchByString()
{
    const QString text = m_dialogs.input(u"Chaîne de 3 caractères au minimum... ? "_qs);
    if (text.isEmpty()) {
        m_dialogs.message(u"Vous devez saisir une chaîne de caractères !"_qs);
        return;
    }
    if (text.size() < 3) {
        m_dialogs.message(u"Chaîne de caractères trop courtes ! "_qs);
        return;
    }
    startSearch(SearchKind::String, text);
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
    m_results.clear();
    for (ResultListModel *model : std::as_const(m_models))
        model->reset();
    m_currentRow = -1;
    m_foundCount->clear();
    m_term->clear();
    m_medium->clear();
}

void SearchForm::startSearch(SearchKind kind, const QString &typed)
{
    if (m_run) {
        m_run->stop();
        m_run.reset(); // its rows are dropped with it
    }
    clearResults();
    m_searchedTerm = searchTerm(typed);
    m_term->setText(Windows1252::decode(m_searchedTerm));
    m_kindMarker = kind == SearchKind::Extension ? u"1"_qs : u"0"_qs;
    m_kind->setText(m_kindMarker);

    SearchRequest request;
    request.kind = kind;
    request.term = m_searchedTerm;
    request.rowLimit = kind == SearchKind::Extension ? kExtensionRowLimit : 0;
    request.threads = std::clamp(QThread::idealThreadCount(), 1, 4);
    request.archives = m_archives->archivesToSearch(&archivesToScan);
    QStringList names;
    for (const ArchiveToScan &archive : std::as_const(request.archives))
        names.append(archive.name);
    m_results.setArchiveNames(names);

    m_loading->setVisible(true);
    m_progress->setVisible(true);
    m_stop->setVisible(true);

    m_run = std::make_unique<SearchRun>(std::move(request));
    SearchRun *run = m_run.get();
    // Signals come from the worker threads. Those of a run already replaced may still be queued (and
    // the new run may have its address), so each run is known by its serial number.
    const quint64 serial = ++m_runSerial;
    const auto current = [this, serial] { return m_run && m_runSerial == serial; };
    connect(run, &SearchRun::chunksReady, this, [this, current] { if (current()) takeRows(); }, Qt::QueuedConnection);
    connect(run, &SearchRun::progressed, this, [this, current](int done) { if (current()) showProgress(done); },
            Qt::QueuedConnection);
    connect(run, &SearchRun::finished, this, [this, current] { if (current()) finishSearch(); }, Qt::QueuedConnection);
    showProgress(0);
    run->start();
}

void SearchForm::takeRows()
{
    for (auto &chunk : m_run->takeChunks())
        m_results.append(std::move(chunk));
    for (int i = 0; i < 4; ++i)
        m_models[i]->showNewRows();
    m_foundCount->setText(u"Nombre de fichiers trouvés: "_qs + formatSigned(m_results.size()));
}

void SearchForm::showProgress(int archivesDone)
{
    m_archives->showProgress(archivesDone, m_progress);
}

void SearchForm::finishSearch()
{
    takeRows();
    m_results.setSortedOrder(m_run->takeSortedOrder());
    m_models[4]->reset();
    const bool limitReached = m_run->limitReached();
    m_run.reset();
    m_extension->clear();
    m_foundCount->setText(u"Nombre de fichiers trouvés: "_qs + formatSigned(m_results.size()));
    m_loading->setVisible(false);
    m_progress->setVisible(false);
    m_stop->setVisible(false);
    if (limitReached)
        m_dialogs.message(u"Le nombre de fichiers recherchés comportant l'extension "_qs
                          + Windows1252::decode(m_searchedTerm) + u" est trop élevé : la recherche est stoppée ! "_qs);
    emit searchFinished();
}

void SearchForm::stopSearch()
{
    if (m_run)
        m_run->stop();
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
    m_run.reset();
    m_loading->setVisible(false);
    m_progress->setVisible(false);
    m_stop->setVisible(false);
    Form::reject();
}

QString SearchForm::foundFileName(qsizetype row) const
{
    return row >= 0 && row < m_results.size() ? Windows1252::decode(m_results.fileName(row)) : QString();
}

QString SearchForm::foundPath(qsizetype row) const
{
    return row >= 0 && row < m_results.size() ? Windows1252::decode(m_results.path(row)) : QString();
}

QString SearchForm::foundExtension(qsizetype row) const
{
    return row >= 0 && row < m_results.size() ? Windows1252::decode(m_results.extension(row)) : QString();
}

QString SearchForm::foundArchive(qsizetype row) const
{
    return row >= 0 && row < m_results.size() ? m_results.archiveName(row) : QString();
}

void SearchForm::setCurrentRow(qsizetype row)
{
    if (row < 0 || row >= m_results.size() || row == m_currentRow)
        return;
    m_currentRow = row;
    for (QListView *view : std::as_const(m_orderFoundViews)) {
        const QModelIndex index = view->model()->index(int(row), 0);
        if (view->currentIndex() != index)
            view->setCurrentIndex(index);
    }
    m_panel->choose(currentPath(), currentArchive());
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
    for (QListView *view : std::as_const(m_pressableViews)) {
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
    QStringList paths;
    paths.reserve(m_results.size());
    for (qsizetype row = 0; row < m_results.size(); ++row)
        paths.append(foundPath(row));
    printList(m_printer, m_clock, paths);
}

void SearchForm::askFileName()
{
    if (m_dialogs.input(u"Nom du fichier recherché...sans extension.. ?"_qs).isEmpty())
        m_dialogs.message(u"Vous devez saisir un nom !"_qs);
}
