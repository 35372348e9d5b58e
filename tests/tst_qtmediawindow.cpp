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

// One second of the old codecs CD-ROMs hold, made by ffmpeg, played through GStreamer.
class tst_QtMediaWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { KALVEX_REQUIRE_PROGRAM(u"ffmpeg"_qs); }

    // Played to the end, the video shown when there is one; play/pause drives the player; closing
    // the window stops the playing.
    void playsToTheEnd_data()
    {
        QTest::addColumn<QString>("sources");
        QTest::addColumn<QString>("codecs");
        QTest::addColumn<bool>("video");
        QTest::newRow("MS Video 1, IMA ADPCM") << u"testsrc=size=64x48:rate=10 sine=sample_rate=22050"_qs
                                               << u"-c:v msvideo1 -c:a adpcm_ima_wav FILM.AVI"_qs << true;
        QTest::newRow("MS ADPCM") << u"sine=sample_rate=22050"_qs << u"-c:a adpcm_ms SON.WAV"_qs << false;
    }
    void playsToTheEnd()
    {
        QFETCH(QString, sources);
        QFETCH(QString, codecs);
        QFETCH(bool, video);
        QTemporaryDir dir;
        QStringList arguments{u"-v"_qs, u"error"_qs};
        for (const QString &source : sources.split(u' '))
            arguments << u"-f"_qs << u"lavfi"_qs << u"-i"_qs << source + u":duration=1"_qs;
        QProcess ffmpeg;
        ffmpeg.setWorkingDirectory(dir.path());
        ffmpeg.start(u"ffmpeg"_qs, arguments + codecs.split(u' '));
        QVERIFY(ffmpeg.waitForFinished(60000) && ffmpeg.exitCode() == 0);
        const QString path = dir.filePath(codecs.section(u' ', -1));

        QtMediaWindow window;
        int frames = 0;
        connect(window.videoWidget()->videoSink(), &QVideoSink::videoFrameChanged, this,
                [&](const QVideoFrame &frame) { frames += frame.isValid(); });
        QMediaPlayer *player = window.player();
        QSignalSpy status(player, &QMediaPlayer::mediaStatusChanged);
        window.play(path);
        while (player->mediaStatus() != QMediaPlayer::EndOfMedia && player->error() == QMediaPlayer::NoError && status.wait(20000)) {
        }
        QCOMPARE(player->mediaStatus(), QMediaPlayer::EndOfMedia);
        QVERIFY2(video ? frames >= 5 : frames == 0, qPrintable(QString::number(frames)));
        QVERIFY(window.isVisible());
        QCOMPARE(window.videoWidget()->isHidden(), !video);
        QCOMPARE(child<QLabel>(&window, u"path"_qs)->text(), path);
        auto *playPause = child<QPushButton>(&window, u"playPause"_qs);
        QCOMPARE(playPause->text(), u"Lecture"_qs);
        playPause->click();
        QVERIFY(player->playbackState() == QMediaPlayer::PlayingState && playPause->text() == u"Pause"_qs);
        window.close();
        QCOMPARE(player->playbackState(), QMediaPlayer::StoppedState);
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
