#include "qtmediawindow.h"
#include "testsupport.h"

#include <QLabel>
#include <QMediaPlayer>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QVideoFrame>
#include <QVideoSink>
#include <QVideoWidget>
#include <QtEndian>

namespace {

void putU32(QByteArray &bytes, quint32 value)
{
    char le[4];
    qToLittleEndian(value, le);
    bytes.append(le, 4);
}

void putU16(QByteArray &bytes, quint16 value)
{
    char le[2];
    qToLittleEndian(value, le);
    bytes.append(le, 2);
}

QByteArray chunk(const char *id, const QByteArray &data)
{
    QByteArray bytes(id, 4);
    putU32(bytes, quint32(data.size()));
    bytes.append(data);
    if (data.size() % 2)
        bytes.append('\0');
    return bytes;
}

QByteArray list(const char *type, const QByteArray &data)
{
    return chunk("LIST", QByteArray(type, 4) + data);
}

// An AVI of `frames` MS-RLE (8-bit run-length) frames, width x height at `fps`: each frame
// bands of palette colours shifted by the frame's number. Written here because ffmpeg has no
// MS-RLE encoder.
QByteArray msRleAvi(int width, int height, int frames, int fps)
{
    QList<QByteArray> encoded;
    for (int frame = 0; frame < frames; ++frame) {
        QByteArray rle;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; x += 16) {
                rle.append(char(16));                           // a run of 16 pixels
                rle.append(char(1 + (x / 16 + frame) % 8));     // of one palette colour
            }
            rle.append('\0');
            rle.append(y + 1 == height ? '\1' : '\0'); // end of line, end of picture
        }
        encoded.append(rle);
    }

    QByteArray avih;
    putU32(avih, 1000000 / fps);
    putU32(avih, 0);
    putU32(avih, 0);
    putU32(avih, 0x10); // has an index
    putU32(avih, quint32(frames));
    putU32(avih, 0);
    putU32(avih, 1);
    putU32(avih, quint32(width * height));
    putU32(avih, quint32(width));
    putU32(avih, quint32(height));
    for (int i = 0; i < 4; ++i)
        putU32(avih, 0);

    QByteArray strh("vidsmrle", 8);
    putU32(strh, 0);
    putU32(strh, 0); // priority, language
    putU32(strh, 0);
    putU32(strh, 1);   // scale
    putU32(strh, quint32(fps));
    putU32(strh, 0);
    putU32(strh, quint32(frames));
    putU32(strh, quint32(width * height));
    putU32(strh, 0xFFFFFFFF);
    putU32(strh, 0);
    putU16(strh, 0);
    putU16(strh, 0);
    putU16(strh, quint16(width));
    putU16(strh, quint16(height));

    QByteArray strf;
    putU32(strf, 40);
    putU32(strf, quint32(width));
    putU32(strf, quint32(height));
    putU16(strf, 1);
    putU16(strf, 8);
    putU32(strf, 1); // BI_RLE8
    putU32(strf, 0);
    putU32(strf, 2835);
    putU32(strf, 2835);
    putU32(strf, 256);
    putU32(strf, 0);
    for (int i = 0; i < 256; ++i) // blue, green, red, 0
        putU32(strf, quint32((i * 37 % 256) | ((i * 91 % 256) << 8) | ((i * 53 % 256) << 16)));

    QByteArray movi("movi", 4);
    QByteArray index;
    for (const QByteArray &frame : std::as_const(encoded)) {
        index.append("00dc", 4);
        putU32(index, 0x10); // key frame
        putU32(index, quint32(movi.size()));
        putU32(index, quint32(frame.size()));
        movi.append(chunk("00dc", frame));
    }
    const QByteArray hdrl = list("hdrl", chunk("avih", avih) + list("strl", chunk("strh", strh) + chunk("strf", strf)));
    return chunk("RIFF", QByteArray("AVI ", 4) + hdrl + chunk("LIST", movi) + chunk("idx1", index));
}

bool ffmpeg(const QStringList &arguments)
{
    QProcess process;
    process.start(u"ffmpeg"_qs, QStringList{u"-v"_qs, u"error"_qs, u"-y"_qs} + arguments);
    return process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

struct Played
{
    int frames = 0;
    bool ended = false;
    QMediaPlayer::Error error = QMediaPlayer::NoError;
};

// Plays `path` in the window to its end, counting the video frames shown.
Played playToEnd(QtMediaWindow &window, const QString &path)
{
    Played played;
    QMediaPlayer *player = window.player();
    QObject counter;
    QObject::connect(window.videoWidget()->videoSink(), &QVideoSink::videoFrameChanged, &counter,
                     [&](const QVideoFrame &frame) { if (frame.isValid()) ++played.frames; });
    QSignalSpy status(player, &QMediaPlayer::mediaStatusChanged);
    window.play(path);
    while (player->mediaStatus() != QMediaPlayer::EndOfMedia && player->error() == QMediaPlayer::NoError) {
        if (!status.wait(20000))
            break;
    }
    played.ended = player->mediaStatus() == QMediaPlayer::EndOfMedia;
    played.error = player->error();
    return played;
}

} // namespace

class tst_QtMediaWindow : public QObject
{
    Q_OBJECT

private slots:
    void playsOldVideoCodecsToTheEnd_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("MS Video 1 with IMA ADPCM sound") << u"msvideo1"_qs;
        QTest::newRow("MS-RLE") << u"msrle"_qs;
    }
    void playsOldVideoCodecsToTheEnd()
    {
        QFETCH(QString, kind);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"FILM.AVI"_qs);
        if (kind == u"msrle") {
            QVERIFY(TestSupport::writeFile(path, msRleAvi(64, 48, 10, 10)));
        } else {
            KALVEX_REQUIRE_PROGRAM(u"ffmpeg"_qs);
            QVERIFY(ffmpeg({u"-f"_qs, u"lavfi"_qs, u"-i"_qs, u"testsrc=size=64x48:rate=10:duration=1"_qs,
                            u"-f"_qs, u"lavfi"_qs, u"-i"_qs, u"sine=frequency=440:sample_rate=22050:duration=1"_qs,
                            u"-c:v"_qs, u"msvideo1"_qs, u"-c:a"_qs, u"adpcm_ima_wav"_qs, path}));
        }
        QtMediaWindow window;
        const Played played = playToEnd(window, path);
        QCOMPARE(played.error, QMediaPlayer::NoError);
        QVERIFY(played.ended);
        QVERIFY2(played.frames >= 5, qPrintable(QString::number(played.frames)));
        QCOMPARE(window.findChild<QLabel *>(u"path"_qs)->text(), path);
        QVERIFY(!window.videoWidget()->isHidden());
        QVERIFY(window.isVisible());

        // Closing the window stops the playing.
        window.close();
        QCOMPARE(window.player()->playbackState(), QMediaPlayer::StoppedState);
    }

    void playsMsAdpcmSoundToTheEnd()
    {
        KALVEX_REQUIRE_PROGRAM(u"ffmpeg"_qs);
        QTemporaryDir dir;
        const QString path = dir.filePath(u"SON.WAV"_qs);
        QVERIFY(ffmpeg({u"-f"_qs, u"lavfi"_qs, u"-i"_qs, u"sine=frequency=440:sample_rate=22050:duration=1"_qs,
                        u"-c:a"_qs, u"adpcm_ms"_qs, path}));
        QtMediaWindow window;
        QPushButton *playPause = window.findChild<QPushButton *>(u"playPause"_qs);
        const Played played = playToEnd(window, path);
        QCOMPARE(played.error, QMediaPlayer::NoError);
        QVERIFY(played.ended);
        QCOMPARE(played.frames, 0);
        QVERIFY(window.videoWidget()->isHidden());
        QCOMPARE(playPause->text(), u"Lecture"_qs);

        // Play/pause drives the player.
        playPause->click();
        QCOMPARE(window.player()->playbackState(), QMediaPlayer::PlayingState);
        QCOMPARE(playPause->text(), u"Pause"_qs);
        playPause->click();
        QCOMPARE(window.player()->playbackState(), QMediaPlayer::PausedState);
    }
};

int main(int argc, char *argv[])
{
    // As the program does at start-up: Qt 6.4's FFmpeg backend crashes without a sound device.
    qputenv("QT_MEDIA_BACKEND", "gstreamer");
    QApplication app(argc, argv);
    tst_QtMediaWindow test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_qtmediawindow.moc"
