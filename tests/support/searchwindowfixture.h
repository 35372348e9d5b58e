#pragma once

#include "archivefile.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "testsupport.h"

#include <QListView>
#include <QListWidget>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

// A search window over a data directory of its own and the fakes, with a disc in drive d:.
struct SearchWindowData
{
    struct Archive
    {
        QString folder;
        QString name;
        QList<QByteArray> entries;
    };
    SearchWindowData(const QList<Archive> &archives, const QStringList &extensions, const QStringList &themes);

    // The rows of the list `view`, as shown.
    static QStringList column(const QWidget *form, const QString &view);

    QTemporaryDir dir;
    QTemporaryDir disc;
    DataDirectory data{dir.path()};
    FakeServices fakes;
};

template<typename Form>
struct SearchWindowFixture : SearchWindowData
{
    SearchWindowFixture(const QList<Archive> &archives, const QStringList &extensions, const QStringList &themes = {})
        : SearchWindowData(archives, extensions, themes)
    {
        form.show();
    }

    // Runs `start` and waits for the search it starts to finish.
    template<typename Start> bool search(Start start)
    {
        QSignalSpy finished(&form, &Form::searchFinished);
        start();
        return finished.count() > 0 || finished.wait(5000);
    }
    template<typename T> T *child(const QString &name) { return TestSupport::child<T>(&form, name); }
    QStringList column(const QString &view) const { return SearchWindowData::column(&form, view); }
    // Selects, in the current folder, exactly the archives `names`.
    void selectArchives(const QStringList &names)
    {
        auto *archives = child<QListWidget>(u"archives"_qs);
        for (int i = 0; i < archives->count(); ++i)
            archives->item(i)->setSelected(names.contains(archives->item(i)->text()));
    }
    // A press of `button` on row `row` of the result list `view`.
    void press(const QString &view, int row, Qt::MouseButton button)
    {
        auto *list = child<QListView>(view);
        const QModelIndex index = list->model()->index(row, 0);
        QTRY_VERIFY(list->visualRect(index).isValid()); // rows are laid out in batches
        QTest::mouseClick(list->viewport(), button, {}, list->visualRect(index).center());
    }

    Form form{data, {fakes.launcher, fakes.drives, fakes.dialogs, fakes.folderPicker, fakes.pictures, fakes.media},
              fakes.printer, fakes.clock};
};
