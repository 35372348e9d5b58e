#pragma once

#include <QString>

// The media window that plays a video (AVI) or a sound (WAV) found on a medium. It plays on its
// own: nothing waits for it, and a file that cannot be played shows nothing more than its path.
class MediaPlayer
{
public:
    virtual ~MediaPlayer() = default;

    // Shows the media window and plays the file at `localPath` from its start.
    virtual void play(const QString &localPath) = 0;
};
