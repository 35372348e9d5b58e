#pragma once

#include "mediaplayer.h"

#include <QWidget>

class QAudioOutput;
class QLabel;
class QMediaPlayer;
class QPushButton;
class QSlider;
class QVBoxLayout;
class QVideoWidget;

// The media window: plays a video or a sound with Qt Multimedia (the GStreamer backend, which
// reads the old codecs of AVI and WAV files through the GStreamer plug-ins), with play/pause, a
// position slider and the file's path. Playing stops when the window closes.
class QtMediaWindow final : public QWidget, public MediaPlayer
{
    Q_OBJECT

public:
    explicit QtMediaWindow(QWidget *parent = nullptr);
    ~QtMediaWindow() override;

    void play(const QString &localPath) override;

    QMediaPlayer *player() const { return m_player; }
    QVideoWidget *videoWidget() const { return m_video; }

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void newPlayer();
    void showVideoArea(bool hasVideo);
    void togglePlaying();
    void showState();
    void showDuration(qint64 duration);
    void showPosition(qint64 position);

    QMediaPlayer *m_player = nullptr;
    QVideoWidget *m_video = nullptr;
    QVBoxLayout *m_layout = nullptr;
    int m_played = 0;
    QPushButton *m_playPause = nullptr;
    QSlider *m_position = nullptr;
    QLabel *m_path = nullptr;
};
