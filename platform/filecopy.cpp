#include "filecopy.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

bool copyFileReplacing(const QString &source, const QString &target)
{
    const QFileInfo sourceInfo(source);
    const QFileInfo targetInfo(target);
    if (!sourceInfo.isFile())
        return false;
    if (targetInfo.exists()) {
        // A read-only file is refused even where the user (root) could write through it.
        const bool readOnly = !(targetInfo.permissions() & QFileDevice::WriteOwner);
        if (!targetInfo.isFile() || readOnly || !targetInfo.isWritable())
            return false;
        // The same file under two names: copying would read what it is writing.
        if (sourceInfo.canonicalFilePath() == targetInfo.canonicalFilePath())
            return true;
    }

    QFile input(source);
    if (!input.open(QIODevice::ReadOnly))
        return false;
    QSaveFile output(target);
    if (!output.open(QIODevice::WriteOnly))
        return false;
    constexpr qint64 chunkSize = 1 << 20;
    QByteArray buffer(chunkSize, Qt::Uninitialized);
    for (;;) {
        const qint64 got = input.read(buffer.data(), chunkSize);
        if (got < 0) {
            output.cancelWriting();
            return false;
        }
        if (got == 0)
            break;
        if (output.write(buffer.constData(), got) != got) {
            output.cancelWriting();
            return false;
        }
    }
    return output.commit();
}

QString pathInDirectory(const QString &directory, const QString &fileName)
{
    if (directory.endsWith(QLatin1Char('/')))
        return directory + fileName;
    return directory + QLatin1Char('/') + fileName;
}
