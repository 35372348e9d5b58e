#pragma once

#include "drives.h"

class FakeDrives final : public Drives
{
public:
    FakeDrives(QList<Drive> drives = {}) // NOLINT: converts, so a test writes `FakeDrives d = list;`
        : list(std::move(drives))
    {
    }

    QList<Drive> drives() override { return list; }

    // Drives come or go: the list changes and the watchers are told, as a mount table change tells them.
    void replace(QList<Drive> drives)
    {
        list = std::move(drives);
        emit changed();
    }

    QList<Drive> list;
};
