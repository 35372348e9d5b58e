// image_walk FOLDER IMAGE...: catalogues each image, as the creation window's folder command does,
// into FOLDER/NAME.lst (the image's name upper-cased, cut to 8); the process the benchmark times
// against isoinfo.
#include "archivefile.h"
#include "filefinder.h"
#include "imagedirectorylister.h"
#include "imagefolder.h"

#include <QFileInfo>

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: image_walk FOLDER IMAGE...\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    ImageDrive drive;
    ImageDirectoryLister lister;
    FileFinder finder(drive, lister);
    finder.setChemin(QStringLiteral("d:"));
    finder.setCriteres(QStringLiteral("*.*"));
    int written = 0;
    for (int i = 2; i < argc; ++i) {
        const QString image = QString::fromLocal8Bit(argv[i]);
        drive.set(QStringLiteral("d:"), image);
        finder.Rechercher();
        ArchiveWriter writer(folder, ImageFolder::archiveNameFor(QFileInfo(image).fileName()));
        for (int k = 1; k <= finder.count(); ++k)
            writer.add(finder.entry(k));
        written += !finder.failed() && writer.commit() ? 1 : 0; // a failed walk writes nothing
    }
    return written == argc - 2 ? 0 : 1;
}
