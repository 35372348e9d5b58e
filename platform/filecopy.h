#pragma once

#include <QString>

// Copies the file `source` to `target`, replacing whatever file is there. The copy is streamed
// into a temporary file beside the target and renamed over it at the end, so the target is
// replaced whole or not at all; a read-only target is refused, and a copy of a file onto itself
// keeps its content. Returns whether the target now holds the copy. Nothing is ever reported:
// callers that ignore failures simply go on.
bool copyFileReplacing(const QString &source, const QString &target);

// The path of `fileName` in `directory`: one separator between them, none doubled when the
// directory is a root such as "/" or ends with a separator already.
QString pathInDirectory(const QString &directory, const QString &fileName);
