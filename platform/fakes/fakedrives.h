#pragma once

#include "drives.h"

class FakeDrives final : public Drives
{
public:
    QList<Drive> drives() override { return list; }

    QList<Drive> list;
};
