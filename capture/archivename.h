#pragma once

#include <QString>

// A name typed for a new archive, as "Créer" takes it.
struct ArchiveNameCheck
{
    QString name;    // upper-cased as the code page does; empty when refused for its length
    QString refusal; // the message refusing it, empty when accepted
};

// Refuses, in this order: more than eight characters, an empty name or one that is no plain file
// name ("../../AB", "/TMPX"), and drive "c:", whose message ends with `driveHint`.
ArchiveNameCheck checkArchiveName(const QString &typed, const QString &drive, const QString &driveHint);
