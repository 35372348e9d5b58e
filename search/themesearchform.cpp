#include "themesearchform.h"

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
#include <QScrollBar>
#include <QThread>
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
    m_results.setKind(SearchKind::Theme);
    for (auto column : {ResultListModel::Column::FileName, ResultListModel::Column::Archive,
                        ResultListModel::Column::Extension, ResultListModel::Column::Path,
                        ResultListModel::Column::Sorted})
        m_models.append(new ResultListModel(m_results, column, this));
    buildLayout();
}

ThemeSearchForm::~ThemeSearchForm() = default;

QListView *ThemeSearchForm::makeResultView(ResultListModel *model, const QString &objectName, const QString &accessibleName)
{
    auto *view = new QListView(this);
    view->setObjectName(objectName);
    view->setModel(model);
    view->setUniformItemSizes(true);
    view->setLayoutMode(QListView::Batched);
    view->setBatchSize(500);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setAccessibleName(accessibleName);
    return view;
}

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
    QListView *names = makeResultView(m_models[0], u"foundNames"_qs, u"Classement ordre du support"_qs);
    QListView *archives = makeResultView(m_models[1], u"foundArchives"_qs, u"Archives des fichiers trouvés"_qs);
    QListView *extensions = makeResultView(m_models[2], u"foundExtensions"_qs, u"Extensions des fichiers trouvés"_qs);
    QListView *paths = makeResultView(m_models[3], u"foundPaths"_qs, u"Chemins des fichiers trouvés"_qs);
    paths->setToolTip(u"Bouton gauche pour sélectioner<-->bouton droit pour exécuter le fichier"_qs);
    m_sortedView = makeResultView(m_models[4], u"sortedNames"_qs, u"Classement alphabétique"_qs);
    m_orderFoundViews = {names, archives, extensions, paths};
    addColumn(names, u"Classement ordre du support"_qs, 3);
    addColumn(archives, {}, 1);
    addColumn(extensions, {}, 1);
    addColumn(paths, {}, 5);
    addColumn(m_sortedView, u"Classement alphabétique"_qs, 3);

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
    layout->addLayout(resultsRow, 4);
    layout->addLayout(rowLabels);
    layout->addWidget(m_panel->rowLabels());
    layout->addLayout(status);
    resize(1180, 780);

    // The parallel lists scroll together; the keyboard moves the current row in any of them.
    for (QListView *view : std::as_const(m_orderFoundViews)) {
        for (QListView *other : std::as_const(m_orderFoundViews)) {
            if (other != view)
                connect(view->verticalScrollBar(), &QScrollBar::valueChanged, other->verticalScrollBar(), &QScrollBar::setValue);
        }
        connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex &current) {
            if (current.isValid())
                setCurrentRow(current.row());
        });
    }
    connect(m_sortedView->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex &current) {
        if (current.isValid() && current.row() < m_results.sortedSize())
            setCurrentRow(m_results.sortedIndex(current.row()));
    });
    // Mouse presses on the names, the paths and the alphabetical view act as the buttons say.
    for (QListView *view : {names, paths, m_sortedView})
        view->viewport()->installEventFilter(this);

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
    // The frame, title bar included, at the screen's top-left corner (see event()).
    if (const QScreen *screen = this->screen()) {
        m_frameTarget = screen->availableGeometry().topLeft();
        move(*m_frameTarget);
    }
    m_data.makeCurrent();
    loadButtonIcon(m_search, m_pictures, m_data, u"card002.ico"_qs);
    loadButtonIcon(m_panel->printButton(), m_pictures, m_data, u"inkjet.ico"_qs);
    loadButtonIcon(m_panel->copyButton(), m_pictures, m_data, u"file005.ico"_qs);
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
    m_run.reset(); // a search still running is dropped with its rows
    m_results.clear();
    for (ResultListModel *model : std::as_const(m_models))
        model->reset();
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
    if (m_chosenTheme->text().isEmpty()) {
        m_dialogs.message(u"Vous devez choisir un thème !"_qs);
        return;
    }
    // The label shows the theme as it is searched for.
    const QByteArray theme = searchTerm(m_chosenTheme->text());
    m_chosenTheme->setText(Windows1252::decode(theme));

    SearchRequest request = ThemeSearch::request(m_chosenTheme->text(), m_archives->archivesToSearch(&ThemeSearch::archivesToScan),
                                                 std::clamp(QThread::idealThreadCount(), 1, 4));
    QStringList names;
    for (const ArchiveToScan &archive : std::as_const(request.archives))
        names.append(archive.name);
    m_results.setArchiveNames(names);

    m_run = std::make_unique<SearchRun>(std::move(request));
    SearchRun *run = m_run.get();
    // Signals come from the worker threads; those of a replaced run may still be queued.
    const quint64 serial = ++m_runSerial;
    const auto current = [this, serial] { return m_run && m_runSerial == serial; };
    connect(run, &SearchRun::chunksReady, this, [this, current] { if (current()) takeRows(); }, Qt::QueuedConnection);
    connect(run, &SearchRun::progressed, this,
            [this, current](int done) { if (current()) m_archives->showProgress(done, m_progress); }, Qt::QueuedConnection);
    connect(run, &SearchRun::finished, this, [this, current] { if (current()) finishSearch(); }, Qt::QueuedConnection);
    m_archives->showProgress(0, m_progress);
    run->start();
}

void ThemeSearchForm::takeRows()
{
    for (auto &chunk : m_run->takeChunks())
        m_results.append(std::move(chunk));
    for (int i = 0; i < 4; ++i)
        m_models[i]->showNewRows();
}

void ThemeSearchForm::finishSearch()
{
    takeRows();
    m_results.setSortedOrder(m_run->takeSortedOrder());
    m_models[4]->reset();
    m_run.reset();
    m_foundCount->setText(u"Nombre de fichiers trouvés: "_qs + formatSigned(m_results.size()));
    m_loading->setVisible(false);
    m_progress->setVisible(false);
    if (!m_results.isEmpty())
        setCurrentRow(0);
    emit searchFinished();
}

void ThemeSearchForm::print()
{
    QStringList paths;
    paths.reserve(m_results.size());
    for (qsizetype row = 0; row < m_results.size(); ++row)
        paths.append(foundPath(row));
    printList(m_printer, m_clock, paths);
}

QString ThemeSearchForm::foundPath(qsizetype row) const
{
    return row >= 0 && row < m_results.size() ? Windows1252::decode(m_results.path(row)) : QString();
}

QString ThemeSearchForm::foundExtension(qsizetype row) const
{
    return row >= 0 && row < m_results.size() ? Windows1252::decode(m_results.extension(row)) : QString();
}

QString ThemeSearchForm::foundArchive(qsizetype row) const
{
    return row >= 0 && row < m_results.size() ? m_results.archiveName(row) : QString();
}

void ThemeSearchForm::setCurrentRow(qsizetype row)
{
    if (row < 0 || row >= m_results.size() || row == m_currentRow)
        return;
    chooseRow(row);
    // Only a press writes the row's extension into the chosen theme, which is the row's extension.
    m_panel->setCurrentExtension(m_chosenTheme->text());
}

void ThemeSearchForm::chooseRow(qsizetype row)
{
    m_currentRow = row;
    for (QListView *view : std::as_const(m_orderFoundViews)) {
        const QModelIndex index = view->model()->index(int(row), 0);
        if (view->currentIndex() != index)
            view->setCurrentIndex(index);
    }
    m_panel->choose(foundPath(row), foundArchive(row));
    m_medium->setText(m_panel->row().archiveLabel());
    m_extension->setText(foundExtension(row));
}

void ThemeSearchForm::pressRow(qsizetype row, Qt::MouseButton button)
{
    // The chosen-theme label is the current row's extension: the row takes it before each use and
    // gives it back after.
    m_panel->setCurrentExtension(m_chosenTheme->text());
    if (button == Qt::LeftButton) {
        if (row < 0 || row >= m_results.size())
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

bool ThemeSearchForm::event(QEvent *event)
{
    // The window system may place a new window by its own rule, and its frame is only known once
    // the window is up: then the frame goes where it was asked, once per opening.
    const bool result = Form::event(event);
    if (m_frameTarget && (event->type() == QEvent::Move || event->type() == QEvent::WindowActivate)
        && frameGeometry() != geometry()) {
        const QPoint target = *std::exchange(m_frameTarget, std::nullopt);
        if (frameGeometry().topLeft() != target)
            move(target);
    }
    return result;
}

bool ThemeSearchForm::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        for (QListView *view : {m_orderFoundViews[0], m_orderFoundViews[3], m_sortedView}) {
            if (watched != view->viewport())
                continue;
            const auto *press = static_cast<QMouseEvent *>(event);
            const QModelIndex index = view->indexAt(press->position().toPoint());
            qsizetype row = index.isValid() ? index.row() : -1;
            if (view == m_sortedView && row >= 0)
                row = row < m_results.sortedSize() ? m_results.sortedIndex(row) : -1;
            pressRow(row, press->button());
            // A right press acts on the current row: it must not move it.
            return press->button() != Qt::LeftButton;
        }
    }
    return Form::eventFilter(watched, event);
}

void ThemeSearchForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && m_run) {
        m_run->stop(); // the rows found so far are kept
        return;
    }
    Form::keyPressEvent(event);
}

void ThemeSearchForm::reject()
{
    m_run.reset();
    m_loading->setVisible(false);
    m_progress->setVisible(false);
    Form::reject();
}
