#pragma once

#include "mediaplayer.h"

#include <QStringList>

class FakeMediaPlayer final : public MediaPlayer
{
public:
    void play(const QString &localPath) override { played.append(localPath); }

    QStringList played;
};
