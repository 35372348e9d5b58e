#pragma once

#include <QString>

// The name a found file takes in the folder it is copied into: the last component of its stored
// path (after the last backslash). Empty when that is no plain file name (empty, "." or "..", or
// holding '/' or NUL), since such a name would lead out of the folder: nothing is then copied.
QString copiedFileName(const QString &storedPath);

// Copies the regular file `source` into `directory` as `fileName`, replacing the entry of that
// name. The copy is written to a new file beside it and renamed over it at the end, so the entry
// is replaced whole or not at all, and a link there is itself replaced, never followed. The copy
// gets the source's permission bits (no set-uid, set-gid or sticky bit), takes no more than the
// source's size when opened, and a source that is no regular file (a FIFO, a device) is refused
// at once. A name that copiedFileName() would not give, a read-only file or a directory at the
// target is refused; a copy of a file onto itself keeps its content. Returns whether the entry
// now holds the copy. Nothing is ever reported: callers that ignore failures simply go on.
bool copyFileInto(const QString &source, const QString &directory, const QString &fileName);

// The path of `fileName` in `directory`: one separator between them, none doubled when the
// directory is a root such as "/" or ends with a separator already.
QString pathInDirectory(const QString &directory, const QString &fileName);
