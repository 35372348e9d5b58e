#pragma once

#include <QString>

// The benchmark's catalogue: archives of 31,000 paths of the kind a magazine's cover disc holds,
// about 1.9 MB each. About 0.2% of the lines hold the rare name (LISEZMOI), string (KALV) and
// extension (WMF), about 7% the frequent ones (SETUP, IMG, GIF); no other line holds them. About 5%
// of the paths lie under JEUX, the frequent theme (the rare one is KALV).
namespace BenchCorpus {

inline constexpr int kLinesPerArchive = 31000;

// Writes `archives` archive files CD0000.lst, CD0001.lst, ... into `folder` (made when missing);
// the same ones at every call.
void generate(const QString &folder, int archives);

// Writes `archives` archive files R0000.lst, R0001.lst, ... of 31,000 paths whose folders and names
// are random letters and digits, in either case, so that no letter is rarer than another; about 0.2%
// of the lines hold the rare string (KALV), where the mixed corpus holds it as often.
void generateRandomLetters(const QString &folder, int archives);

// The total size of the archive files in `folder`.
qint64 bytesIn(const QString &folder);

} // namespace BenchCorpus
