#include "tablefile.h"

#include "archivefile.h"
#include "regularfile.h"
#include "windows1252.h"

#include <QSaveFile>

namespace TableFile {

QStringList fields(QByteArrayView data)
{
    QStringList items;
    ArchiveReader reader(data);
    QByteArrayView line;
    while (reader.next(line)) {
        for (QByteArrayView field : QByteArray(line.toByteArray()).split(',')) {
            while (!field.isEmpty() && (field.front() == ' ' || field.front() == '\t'))
                field = field.sliced(1);
            items.append(Windows1252::decode(field));
        }
    }
    return items;
}

QStringList read(const QString &path)
{
    bool whole = false;
    QByteArray data = readRegularFile(path, kMaxBytes, &whole);
    // A table cut by the bound keeps its whole lines only.
    if (!whole)
        data.truncate(data.lastIndexOf('\n') + 1);
    return fields(data);
}

QByteArray encode(const QStringList &lines)
{
    QByteArray out;
    for (const QString &line : lines) {
        out.append(Windows1252::encode(line));
        out.append("\r\n");
    }
    return out;
}

bool write(const QString &path, const QStringList &lines)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(encode(lines));
    return file.commit();
}

} // namespace TableFile
