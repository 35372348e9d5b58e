#pragma once

#include "archivefile.h"
#include "datadirectory.h"
#include "fakeservices.h"
#include "testsupport.h"

#include <QListView>
#include <QListWidget>
#include <QSignalSpy>
#include <QTemporaryDir>

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

    // The rows of the result list `view`, as shown.
    static QStringList column(const QWidget *form, const QString &view);
    // Selects, in the current folder, exactly the archives `names`.
    static void selectArchives(const QWidget *form, const QStringList &names);
    // A press of `button` on row `row` of the result list `view`.
    static void press(const QWidget *form, const QString &view, int row, Qt::MouseButton button);

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
    void selectArchives(const QStringList &names) { SearchWindowData::selectArchives(&form, names); }
    void press(const QString &view, int row, Qt::MouseButton button) { SearchWindowData::press(&form, view, row, button); }

    Form form{data, {fakes.launcher, fakes.drives, fakes.dialogs, fakes.folderPicker, fakes.pictures, fakes.media},
              fakes.printer, fakes.clock};
};
