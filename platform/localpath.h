#pragma once

#include <QString>

class Drives;

// The local path of a path stored in an archive ("D:\JEUX\CASSE.EXE"): the drive's current
// mount point, then each component matched ignoring case against what is on the disc. Empty
// when the drive has no medium or a component is missing.
QString localPathOf(const QString &storedPath, Drives &drives);

// The same on the medium mounted at `mountPoint`, whatever the drive letter of `storedPath`.
QString localPathOn(const QString &mountPoint, const QString &storedPath);
