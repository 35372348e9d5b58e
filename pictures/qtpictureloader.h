#pragma once

#include "pictureloader.h"
#include "systemclock.h"

// Pictures by their content, whatever their name: BMP, GIF, JPEG (and PNG) through Qt's image
// readers, ICO and CUR entry by entry (the AND mask of icons of 24 bits or fewer honoured), the
// first frame of an animated cursor (.ANI), WMF and EMF drawn at their natural size (see
// metafiles.h).
//
// Files come from media of every origin, so every reading is bounded: only regular files are
// opened and read up to a size; a picture or an icon file of too many pixels, a JPEG of too many
// scans, a WMF of too many records is unreadable; the reading runs on a worker thread while the
// window's event loop goes on, and is given up after a deadline on `clock` (see backgroundwork.h).
// A file that breaks a bound gives a null image or icon, as an unreadable one does.
class QtPictureLoader final : public PictureLoader
{
public:
    // `clock` (the system's when null) must outlive the loader.
    explicit QtPictureLoader(const Clock *clock = nullptr);

    QImage loadPicture(const QString &path) override;
    QIcon loadIcon(const QString &path) override;

    // The same readers over a file's bytes, on the calling thread.
    static QImage readPicture(const QByteArray &data);
    static QList<QImage> readIconImages(const QByteArray &data);

    // A file's bytes when it is a regular file within the size bound; empty otherwise.
    static QByteArray readPictureFile(const QString &path);

    static constexpr qint64 kLargestFile = 32 * 1024 * 1024;
    static constexpr qint64 kLargestIconFilePixels = 256 * 256 * 256;
    static constexpr int kMostJpegScans = 100;
    static constexpr int kDeadlineMilliseconds = 10000;

private:
    const Clock &clock() const { return m_clock ? *m_clock : m_systemClock; }

    SystemClock m_systemClock;
    const Clock *m_clock;
};
