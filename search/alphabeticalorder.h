#pragma once

#include "searchresults.h"

#include <atomic>
#include <memory>
#include <span>
#include <vector>

// The order of the alphabetical view, as a French reader expects it: file names upper-cased, an
// accented capital beside its base letter (É with E), names equal so far by their upper-cased bytes,
// and rows whose names read the same once upper-cased (readme, README) in the order found.
//
// Results hold the same names many times (a file on many discs, every SETUP.EXE of a search by
// name), so each distinct name is sorted once and rows are placed by their name's rank. Most of the
// work runs on the search's workers, each while the names it has just found are still in the
// processor's cache: every worker gives the rows of its archives ids in the search's `NameTable`,
// making the rows' keys on its own and taking the table's lock only to find their ids; `order` then
// sorts the table's names (in one list per processor), merges the lists and places the rows.
namespace AlphabeticalOrder {

class NameTable
{
public:
    NameTable();
    ~NameTable();
    NameTable(const NameTable &) = delete;
    NameTable &operator=(const NameTable &) = delete;

    // The ids in this table of the names of `chunk`'s rows, in row order, held by the table. The
    // table keeps the chunk's path blocks, so its names stay readable whatever becomes of the chunk.
    // Threads may call it at once.
    std::span<const quint32> nameRows(const ResultChunk &chunk);

    struct Names;
    Names &names() { return *m_names; }

private:
    std::unique_ptr<Names> m_names;
};

// A chunk's rows as a table named them.
struct NamedRows
{
    NameTable *table = nullptr;
    std::span<const quint32> ids;
};

// The order of every row of `chunks` (in the order found), whose rows `named[i]` named. A chunk whose
// rows were cut after they were named (the search's row limit) keeps only its rows left. Empty when
// `abandon` is set meanwhile. The tables' names are sorted where they lie (copies would double the
// memory of a large result): the tables name no more rows afterwards.
RowOrder order(const std::vector<std::shared_ptr<const ResultChunk>> &chunks, const std::vector<NamedRows> &named,
               const std::atomic_bool *abandon = nullptr);

} // namespace AlphabeticalOrder
