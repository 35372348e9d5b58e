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

using TestSupport::child;

namespace {

// One second of the old codecs CD-ROMs hold, made by ffmpeg.
bool ffmpeg(const QString &inputs, const QString &codecs, const QString &path)
{
    QStringList arguments{u"-v"_qs, u"error"_qs, u"-y"_qs};
    for (const QString &input : inputs.split(QLatin1Char(' ')))
        arguments << u"-f"_qs << u"lavfi"_qs << u"-i"_qs << input + u":duration=1"_qs;
    QProcess process;
    process.start(u"ffmpeg"_qs, arguments + codecs.split(QLatin1Char(' ')) + QStringList{path});
    return process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

// Plays `path` in the window to its end; the video frames shown.
int playToEnd(QtMediaWindow &window, const QString &path)
{
    int frames = 0;
    QObject counter;
    QObject::connect(window.videoWidget()->videoSink(), &QVideoSink::videoFrameChanged, &counter,
                     [&](const QVideoFrame &frame) { frames += frame.isValid(); });
    QMediaPlayer *player = window.player();
    QSignalSpy status(player, &QMediaPlayer::mediaStatusChanged);
    window.play(path);
    while (player->mediaStatus() != QMediaPlayer::EndOfMedia && player->error() == QMediaPlayer::NoError) {
        if (!status.wait(20000))
            break;
    }
    return frames;
}

} // namespace

class tst_QtMediaWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { KALVEX_REQUIRE_PROGRAM(u"ffmpeg"_qs); }

    // MS Video 1 with IMA ADPCM sound: shown to the end; closing the window stops the playing.
    void playsAVideoToTheEnd()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"FILM.AVI"_qs);
        QVERIFY(ffmpeg(u"testsrc=size=64x48:rate=10 sine=frequency=440:sample_rate=22050"_qs,
                       u"-c:v msvideo1 -c:a adpcm_ima_wav"_qs, path));
        QtMediaWindow window;
        const int frames = playToEnd(window, path);
        QCOMPARE(window.player()->error(), QMediaPlayer::NoError);
        QCOMPARE(window.player()->mediaStatus(), QMediaPlayer::EndOfMedia);
        QVERIFY2(frames >= 5, qPrintable(QString::number(frames)));
        QCOMPARE(child<QLabel>(&window, u"path"_qs)->text(), path);
        QVERIFY(!window.videoWidget()->isHidden());
        QVERIFY(window.isVisible());
        window.close();
        QCOMPARE(window.player()->playbackState(), QMediaPlayer::StoppedState);
    }

    // MS ADPCM sound: no video area; play/pause drives the player.
    void playsASoundToTheEnd()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(u"SON.WAV"_qs);
        QVERIFY(ffmpeg(u"sine=frequency=440:sample_rate=22050"_qs, u"-c:a adpcm_ms"_qs, path));
        QtMediaWindow window;
        QCOMPARE(playToEnd(window, path), 0);
        QCOMPARE(window.player()->mediaStatus(), QMediaPlayer::EndOfMedia);
        QVERIFY(window.videoWidget()->isHidden());
        auto *playPause = child<QPushButton>(&window, u"playPause"_qs);
        QCOMPARE(playPause->text(), u"Lecture"_qs);
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
