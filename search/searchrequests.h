#pragma once

#include "searchrun.h"

#include <QString>

// What the search windows ask of the engine: the request for a typed term, with its kind's row
// limit, and why a typed term is refused.
namespace SearchRequests {

// Why `typed` cannot be searched for by `kind`, empty when it can: a name, a string (of 3
// characters at least) and a theme must be given.
QString termRefusal(SearchKind kind, const QString &typed);

// The search for `typed` (in any case) in `archives`: by extension it stops at 30000 rows, by theme
// after 20000 (20001 found), otherwise never.
SearchRequest request(SearchKind kind, const QString &typed, QList<ArchiveToScan> archives, int threads);

// The threads a search runs on: the processors, 1 to 4.
int threadCount();

// Told when a search by extension for `term` reaches its limit.
QString rowLimitMessage(const QByteArray &term);

} // namespace SearchRequests
