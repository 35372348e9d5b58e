#!/bin/sh
# The image benchmark. Whole processes, interleaved A B A B, median of the pair-by-pair ratios.
# Images are generated (genisoimage -R -J) in a temporary directory removed at the end.
#
# Usage: bench/images/run.sh [BUILD_DIR] [RUNS] [SECTIONS]
#   RUNS      pairs per comparison (default 21; the 500-image comparisons take at most 3)
#   SECTIONS  comma-separated, in this order (default all):
#     cover   cover disc (5,250 paths in 450 directories): one image and a folder of 20 against
#             `isoinfo -J -f -i` on each in turn, a folder of 20 against fuseiso + find + fusermount
#     shapes  a folder of 20 images of each other shape against isoinfo on each in turn: a tree
#             8 levels deep, 2,000 directories of 2 files, one directory of 5,000 entries
#     folder500  500 cover discs: image_walk on all against fuseiso + find + fusermount on each,
#             warm cache, then cold (every image dropped from the page cache before each run of
#             either side with posix_fadvise(DONTNEED), checked with fincore)
#     memory  peak RSS (/usr/bin/time -v) of image_walk on a 4 GiB sparse image of 5,000 entries
#             and on one of 50 KB of content
# Targets: image_walk / isoinfo at most 1.5 on the cover disc and 2.0 on the other shapes;
# fuseiso / image_walk at least 25 warm and 5 cold; the two peaks alike.
set -eu
build=$(cd "${1:-build}" && pwd)
runs=${2:-21}
sections=${3:-cover,shapes,folder500,memory}
work=$(mktemp -d)
trap 'fusermount -u "$work/mnt" 2>/dev/null; rm -rf "$work"' EXIT
mkdir "$work/mnt"

python3 - "$build/bench/image_walk" "$work" "$runs" "$sections" <<'PY'
import glob, os, re, shutil, statistics, subprocess, sys, time
walk, work, runs, sections = sys.argv[1], sys.argv[2], int(sys.argv[3]), sys.argv[4].split(",")
null = subprocess.DEVNULL
mnt = os.path.join(work, "mnt")

def tree(name, shape):
    """A source tree of the shape, made once."""
    root = os.path.join(work, "tree-" + name)
    if os.path.isdir(root):
        return root
    def touch(path, size=0):
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as f:
            f.write(b"x" * size)
    if shape == "cover":  # 450 directories, 300 of them holding 16 files
        for d in range(300):
            sub = "Rubrique %03d" % d if d < 150 else "dossier_%03d/sous-dossier" % d
            for f in range(16):
                touch(os.path.join(root, sub, "Fichier numéro %02d.txt" % f))
    elif shape == "deep":  # a binary tree 8 levels deep, 9 files in each of its 510 directories
        def grow(path, level):
            for f in range(9):
                touch(os.path.join(path, "fichier_%d.dat" % f))
            if level < 8:
                for b in ("gauche", "droite"):
                    grow(os.path.join(path, "%s niveau %d" % (b, level + 1)), level + 1)
        grow(root, 0)
    elif shape == "small":  # 2,000 directories of 2 files
        for d in range(2000):
            for f in range(2):
                touch(os.path.join(root, "groupe %02d" % (d // 100), "dossier %04d" % d, "f%d.txt" % f))
    elif shape == "one":  # one directory of 5,000 entries
        for f in range(5000):
            touch(os.path.join(root, "Un seul dossier", "Fichier numéro %04d.txt" % f))
    elif shape == "tiny":  # 50 KB of content
        for f in range(10):
            touch(os.path.join(root, "Doc", "page%d.txt" % f), 5000)
    return root

def images(shape, count, prefix):
    """`count` copies (distinct files) of the shape's image in a folder of their own."""
    folder = os.path.join(work, "%s-%d" % (shape, count))
    if not os.path.isdir(folder):
        os.makedirs(folder)
        first = os.path.join(folder, "%s%03d.iso" % (prefix, 0))
        subprocess.run(["genisoimage", "-quiet", "-R", "-J", "-input-charset", "utf-8", "-o", first,
                        tree(shape, shape)], check=True)
        for i in range(1, count):
            shutil.copyfile(first, os.path.join(folder, "%s%03d.iso" % (prefix, i)))
        os.sync()  # written pages cannot be dropped
    return sorted(glob.glob(os.path.join(folder, "*.iso")))

def paths(files):
    return subprocess.run(["isoinfo", "-J", "-f", "-i", files[0]], capture_output=True, check=True).stdout.count(b"\n")

def drop(files):
    """Takes the files out of the page cache; says so when some of them stay."""
    for f in files:
        fd = os.open(f, os.O_RDONLY)
        os.posix_fadvise(fd, 0, 0, os.POSIX_FADV_DONTNEED)
        os.close(fd)
    left = subprocess.run(["fincore", "--raw", "--noheadings", "--bytes", "--output", "RES"] + files,
                          capture_output=True, text=True).stdout.split()
    if sum(int(x) for x in left) > 0:
        print("  warning: %d bytes of the images still cached" % sum(int(x) for x in left))

def timed(commands, cold=None):
    if cold:
        drop(cold)
    start = time.perf_counter()
    for c in commands:
        # find may find a name it cannot read and say so; what is timed is the whole walk.
        subprocess.run(c, stdout=null, stderr=null, check=c[0] not in ("find", "fusermount"))
    return time.perf_counter() - start

def fuse(files):
    return [c for i in files for c in (["fuseiso", i, mnt], ["find", mnt], ["fusermount", "-u", mnt])]

def pairs(name, a, b, n, cold=None, target=""):
    ta, tb, ratios = [], [], []
    if not cold:
        timed(a); timed(b)  # warm the cache
    for _ in range(n):
        x, y = timed(a, cold), timed(b, cold)
        ta.append(x); tb.append(y); ratios.append(y / x)
    q = statistics.quantiles(ratios, n=4) if n > 1 else [ratios[0]] * 3
    print("%-56s A %8.1f ms  B %8.1f ms  B/A median %6.2f (quartiles %.2f-%.2f) %s"
          % (name, 1000 * statistics.median(ta), 1000 * statistics.median(tb), statistics.median(ratios),
             q[0], q[2], target), flush=True)

def isoinfo(files):
    return [["isoinfo", "-J", "-f", "-i", i] for i in files]

out = os.path.join(work, "out")
os.makedirs(out)
def fuse_works(image):
    if not os.access("/dev/fuse", os.R_OK | os.W_OK) or subprocess.run(["fuseiso", image, mnt], stderr=null).returncode:
        print("fuseiso: /dev/fuse not usable here, skipped")
        return False
    subprocess.run(["fusermount", "-u", mnt])
    return True

if "cover" in sections:
    cover = images("cover", 20, "cover")
    print("cover disc: %d paths per image" % paths(cover))
    pairs("one image: isoinfo A, walk B", isoinfo(cover[:1]), [[walk, out, cover[0]]], runs)
    pairs("20 images: isoinfo A, walk B", isoinfo(cover), [[walk, out] + cover], runs, target="(target <= 1.5)")
    if fuse_works(cover[0]):
        pairs("20 images: walk A, fuseiso+find B", [[walk, out] + cover], fuse(cover), runs)

if "shapes" in sections:
    for shape, label in (("deep", "8 levels deep"), ("small", "2,000 dirs of 2 files"), ("one", "one dir of 5,000")):
        files = images(shape, 20, shape)
        pairs("20 images, %s (%d paths): isoinfo A, walk B" % (label, paths(files)), isoinfo(files),
              [[walk, out] + files], runs, target="(target <= 2.0)")

if "folder500" in sections:
    many = images("cover", 500, "cover")
    if fuse_works(many[0]):
        n = min(runs, 3)
        pairs("500 images, warm: walk A, fuseiso+find B", [[walk, out] + many], fuse(many), n, target="(target >= 25)")
        pairs("500 images, cold: walk A, fuseiso+find B", [[walk, out] + many], fuse(many), n, cold=many,
              target="(target >= 5)")

if "memory" in sections:
    def peak(image):
        r = subprocess.run(["/usr/bin/time", "-v", walk, out, image], capture_output=True, text=True, check=True)
        return int(re.search(r"Maximum resident set size \(kbytes\): (\d+)", r.stderr).group(1))
    big = images("one", 1, "big")[0]
    os.truncate(big, 4 << 30)  # the ISO at the start of a 4 GiB sparse file
    small = images("tiny", 1, "small")[0]
    print("peak RSS: 4 GiB image of %d paths %d KB, %d KB image of %d paths %d KB"
          % (paths([big]), peak(big), os.path.getsize(small) // 1024, paths([small]), peak(small)))
PY
