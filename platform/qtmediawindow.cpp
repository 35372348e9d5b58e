#include "qtmediawindow.h"

#include "regularfile.h"

#include <QAudioOutput>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMediaPlayer>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>
#include <QVideoWidget>

QtMediaWindow::QtMediaWindow(QWidget *parent)
    : QWidget(parent, Qt::Window)
{
    setWindowTitle(QStringLiteral("Kalvex2 Vidéos et sons"));
    setObjectName(QStringLiteral("QtMediaWindow"));
    // Above the search window, which is modal itself.
    setWindowModality(Qt::ApplicationModal);

    m_playPause = new QPushButton(this);
    m_playPause->setObjectName(QStringLiteral("playPause"));
    m_position = new QSlider(Qt::Horizontal, this);
    m_position->setObjectName(QStringLiteral("position"));
    m_position->setAccessibleName(QStringLiteral("Position"));
    m_path = new QLabel(this);
    m_path->setObjectName(QStringLiteral("path"));
    m_path->setTextFormat(Qt::PlainText);
    m_path->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto *controls = new QHBoxLayout;
    controls->addWidget(m_playPause);
    controls->addWidget(m_position, 1);
    m_layout = new QVBoxLayout(this);
    newPlayer();
    m_layout->addLayout(controls);
    m_layout->addWidget(m_path);
    resize(480, 420);

    connect(m_playPause, &QPushButton::clicked, this, &QtMediaWindow::togglePlaying);
    // A move of the slider by the user seeks; the player's own moves are not sought back.
    connect(m_position, &QSlider::sliderMoved, this, [this](int position) { m_player->setPosition(position); });
    connect(m_position, &QSlider::actionTriggered, this, [this] {
        if (!m_position->isSliderDown())
            m_player->setPosition(m_position->sliderPosition());
    });
    showState();
}

QtMediaWindow::~QtMediaWindow()
{
    m_player->stop();
}

void QtMediaWindow::play(const QString &localPath)
{
    if (!isRegularFile(localPath))
        return; // a FIFO or a device would block the player in its opening
    m_player->stop();
    if (m_played++ > 0)
        newPlayer();
    m_path->setText(localPath);
    m_position->setValue(0);
    m_player->setSource(QUrl::fromLocalFile(localPath));
    showVideoArea(m_player->hasVideo());
    show();
    raise();
    activateWindow();
    m_player->play();
}

// Each playing but the first gets a new player and a new video area. The video area is a native
// window the player draws into: kept from one opening to the next while a modal window was open,
// it was no longer drawn into and showed copies of the window's controls. A player whose source
// was cleared at a closing sometimes stayed loading for ever on its next source.
void QtMediaWindow::newPlayer()
{
    if (m_player) {
        m_player->stop();
        m_player->deleteLater();
    }
    m_player = new QMediaPlayer(this);
    m_player->setAudioOutput(new QAudioOutput(m_player));
    connect(m_player, &QMediaPlayer::playbackStateChanged, this, &QtMediaWindow::showState);
    connect(m_player, &QMediaPlayer::durationChanged, this, &QtMediaWindow::showDuration);
    connect(m_player, &QMediaPlayer::positionChanged, this, &QtMediaWindow::showPosition);
    // A sound has no picture: the video area (a native window that nobody paints then) goes.
    connect(m_player, &QMediaPlayer::hasVideoChanged, this, &QtMediaWindow::showVideoArea);

    auto *video = new QVideoWidget(this);
    video->setObjectName(QStringLiteral("video"));
    video->setAccessibleName(QStringLiteral("Vidéo"));
    video->setMinimumSize(320, 240);
    m_player->setVideoOutput(video);
    if (m_video) {
        m_layout->replaceWidget(m_video, video);
        delete m_video;
    } else {
        m_layout->insertWidget(0, video, 1);
    }
    m_video = video;
}

void QtMediaWindow::showVideoArea(bool hasVideo)
{
    m_video->setVisible(hasVideo);
    if (hasVideo)
        resize(width(), std::max(height(), 420));
    else
        resize(width(), minimumSizeHint().height()); // the controls and the path only
}

void QtMediaWindow::togglePlaying()
{
    if (m_player->playbackState() == QMediaPlayer::PlayingState)
        m_player->pause();
    else
        m_player->play();
}

void QtMediaWindow::showState()
{
    const bool playing = m_player->playbackState() == QMediaPlayer::PlayingState;
    m_playPause->setText(playing ? QStringLiteral("Pause") : QStringLiteral("Lecture"));
}

void QtMediaWindow::showDuration(qint64 duration)
{
    m_position->setRange(0, int(std::min<qint64>(duration, std::numeric_limits<int>::max())));
}

void QtMediaWindow::showPosition(qint64 position)
{
    if (!m_position->isSliderDown())
        m_position->setValue(int(std::min<qint64>(position, std::numeric_limits<int>::max())));
}

void QtMediaWindow::closeEvent(QCloseEvent *event)
{
    m_player->stop();
    m_player->setSource({});
    event->accept();
}
