#include "foundrowlists.h"

#include "resultlistmodel.h"
#include "searchrun.h"
#include "windows1252.h"

#include <QApplication>
#include <QListView>
#include <QScrollBar>
#include <QStyledItemDelegate>

namespace {

// The alphabetical view's rows end in 60 blanks and the row's number: measured whole, every row is
// far wider than its name and the view scrolls sideways for the shortest names. Its width is the
// name's, so the view scrolls only for names it cannot show.
class SortedRowDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QStyleOptionViewItem named = option;
        initStyleOption(&named, index);
        const qsizetype blanks = named.text.indexOf(QString(60, QLatin1Char(' ')));
        if (blanks >= 0)
            named.text.truncate(blanks);
        const QStyle *style = named.widget ? named.widget->style() : QApplication::style();
        return style->sizeFromContents(QStyle::CT_ItemViewItem, &named, QSize(), named.widget);
    }
};

} // namespace

FoundRowLists::FoundRowLists(SearchKind kind, const QStringList &objectNames, QWidget *parent)
    : QObject(parent)
{
    m_results.setKind(kind);
    const QList<QPair<ResultListModel::Column, QString>> lists = {
        {ResultListModel::Column::FileName, u"Classement ordre du support"_qs},
        {ResultListModel::Column::Archive, u"Archives des fichiers trouvés"_qs},
        {ResultListModel::Column::Extension, u"Extensions des fichiers trouvés"_qs},
        {ResultListModel::Column::Path, u"Chemins des fichiers trouvés"_qs},
        {ResultListModel::Column::Sorted, u"Classement alphabétique"_qs}};
    for (qsizetype i = 0; i < lists.size(); ++i) {
        auto *model = new ResultListModel(m_results, lists[i].first, this);
        auto *view = new QListView(parent);
        view->setObjectName(objectNames.value(i));
        view->setModel(model);
        view->setUniformItemSizes(true);
        view->setLayoutMode(QListView::Batched);
        view->setBatchSize(500);
        view->setEditTriggers(QAbstractItemView::NoEditTriggers);
        view->setAccessibleName(lists[i].second);
        // Ten rows at least: on a small screen the lists above give way to the results.
        view->setMinimumHeight(view->fontMetrics().height() * 10);
        m_models.append(model);
        m_views.append(view);
    }
    sorted()->setItemDelegate(new SortedRowDelegate(sorted()));
    paths()->setToolTip(u"Bouton gauche pour sélectioner<-->bouton droit pour exécuter le fichier"_qs);

    // The lists of the order found scroll together; any list's current row is the chosen one.
    const QList<QListView *> orderFound = m_views.first(4);
    for (QListView *view : orderFound) {
        for (QListView *other : orderFound) {
            if (other != view)
                connect(view->verticalScrollBar(), &QScrollBar::valueChanged, other->verticalScrollBar(), &QScrollBar::setValue);
        }
    }
    for (QListView *view : std::as_const(m_views)) {
        connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this, [this, view](const QModelIndex &current) {
            const qsizetype row = current.isValid() ? rowShownAt(view, current.row()) : -1;
            if (row >= 0)
                emit rowChosen(row);
        });
    }
}

FoundRowLists::~FoundRowLists() = default;

QString FoundRowLists::fileName(qsizetype row) const
{
    return row >= 0 && row < m_results.size() ? Windows1252::decode(m_results.fileName(row)) : QString();
}

QString FoundRowLists::path(qsizetype row) const
{
    return row >= 0 && row < m_results.size() ? Windows1252::decode(m_results.path(row)) : QString();
}

QString FoundRowLists::extension(qsizetype row) const
{
    return row >= 0 && row < m_results.size() ? Windows1252::decode(m_results.extension(row)) : QString();
}

QString FoundRowLists::archive(qsizetype row) const
{
    return row >= 0 && row < m_results.size() ? m_results.archiveName(row) : QString();
}

QStringList FoundRowLists::allPaths() const
{
    QStringList paths;
    paths.reserve(m_results.size());
    for (qsizetype row = 0; row < m_results.size(); ++row)
        paths.append(path(row));
    return paths;
}

qsizetype FoundRowLists::rowShownAt(const QListView *view, int line) const
{
    if (view == sorted())
        return line >= 0 && line < m_results.sortedSize() ? m_results.sortedIndex(line) : -1;
    return line >= 0 && line < m_results.size() ? line : -1;
}

void FoundRowLists::showCurrentRow(qsizetype row)
{
    for (QListView *view : m_views.first(4)) {
        const QModelIndex index = view->model()->index(int(row), 0);
        if (view->currentIndex() != index)
            view->setCurrentIndex(index);
    }
}

void FoundRowLists::clear()
{
    m_run.reset(); // a search still running is dropped with its rows
    m_results.clear();
    for (ResultListModel *model : std::as_const(m_models))
        model->reset();
}

void FoundRowLists::start(SearchRequest request)
{
    clear();
    QStringList names;
    QStringList files;
    for (const ArchiveToScan &archive : std::as_const(request.archives)) {
        names.append(archive.name);
        files.append(archive.filePath);
    }
    m_results.setArchiveNames(names);
    m_results.setArchiveFiles(files);

    m_run = std::make_unique<SearchRun>(std::move(request));
    SearchRun *run = m_run.get();
    // Signals come from the worker threads. Those of a run already replaced may still be queued (and
    // the new run may have its address), so each run is known by its serial number.
    const quint64 serial = ++m_runSerial;
    const auto current = [this, serial] { return m_run && m_runSerial == serial; };
    connect(run, &SearchRun::chunksReady, this, [this, current] { if (current()) takeRows(); }, Qt::QueuedConnection);
    connect(run, &SearchRun::progressed, this, [this, current](int done) { if (current()) emit progressed(done); },
            Qt::QueuedConnection);
    connect(run, &SearchRun::finished, this, [this, current] { if (current()) finish(); }, Qt::QueuedConnection);
    emit progressed(0);
    run->start();
}

void FoundRowLists::stop()
{
    if (m_run)
        m_run->stop();
}

void FoundRowLists::abandon()
{
    m_run.reset();
}

void FoundRowLists::takeRows()
{
    for (auto &chunk : m_run->takeChunks())
        m_results.append(std::move(chunk));
    for (ResultListModel *model : m_models.first(4))
        model->showNewRows();
    emit rowsArrived();
}

void FoundRowLists::finish()
{
    takeRows();
    m_results.setSortedOrder(m_run->takeSortedOrder());
    m_models[4]->reset();
    const bool limitReached = m_run->limitReached();
    m_run.reset();
    emit finished(limitReached);
}
