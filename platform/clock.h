#pragma once

#include <QDateTime>

class Clock
{
public:
    virtual ~Clock() = default;
    virtual QDateTime now() const = 0;
};
