#!/bin/sh
# The image benchmark: cover-disc images of 5,250 entries in 450 directories (ISO 9660 + Joliet +
# Rock Ridge), warm cache. Whole processes, interleaved A B A B, median of the pair-by-pair ratios:
# image_walk on one image against `isoinfo -J -f -i`, and on a folder of 20 copies (one process)
# against isoinfo run on each of them in turn; then a folder of 20 against fuseiso + find +
# fusermount per image, when /dev/fuse works.
# Usage: bench/images/run.sh [BUILD_DIR] [RUNS]
set -eu
build=$(cd "${1:-build}" && pwd)
runs=${2:-21}
work=$(mktemp -d)
trap 'fusermount -u "$work/mnt" 2>/dev/null; rm -rf "$work"' EXIT
mkdir "$work/tree" "$work/out" "$work/images" "$work/mnt"

# 450 directories, 300 of them holding 16 files: about 5,250 paths.
python3 - "$work/tree" <<'PY'
import os, sys
root = sys.argv[1]
for d in range(300):
    path = os.path.join(root, "Rubrique %03d" % d if d < 150 else "dossier_%03d/sous-dossier" % d)
    os.makedirs(path, exist_ok=True)
    for f in range(16):
        open(os.path.join(path, "Fichier numéro %02d.txt" % f), "w").close()
PY
genisoimage -quiet -R -J -input-charset utf-8 -o "$work/images/cover00.iso" "$work/tree"
for i in $(seq -w 1 19); do cp "$work/images/cover00.iso" "$work/images/cover$i.iso"; done
echo "image: $(find "$work/tree" | wc -l) paths, $(find "$work/tree" -type d | wc -l) directories"

python3 - "$build/bench/image_walk" "$work" "$runs" <<'PY'
import glob, os, statistics, subprocess, sys, time
walk, work, runs = sys.argv[1], sys.argv[2], int(sys.argv[3])
images = sorted(glob.glob(os.path.join(work, "images", "*.iso")))
out = os.path.join(work, "out")
null = subprocess.DEVNULL

def timed(commands):
    start = time.perf_counter()
    for c in commands:
        # find may find a name it cannot read and say so; what is timed is the whole walk.
        subprocess.run(c, stdout=null, stderr=null, check=c[0] not in ("find", "fusermount"))
    return time.perf_counter() - start

def fuse(image):
    mnt = os.path.join(work, "mnt")
    return [["fuseiso", image, mnt], ["find", mnt], ["fusermount", "-u", mnt]]

def pairs(name, a, b):
    ta, tb, ratios = [], [], []
    timed(a); timed(b)  # warm the cache
    for _ in range(runs):
        x, y = timed(a), timed(b)
        ta.append(x); tb.append(y); ratios.append(y / x)
    q = statistics.quantiles(ratios, n=4)
    print("%-34s A %7.1f ms  B %7.1f ms  B/A median %.2f (quartiles %.2f-%.2f)"
          % (name, 1000 * statistics.median(ta), 1000 * statistics.median(tb), statistics.median(ratios), q[0], q[2]))

pairs("one image: isoinfo A, walk B", [["isoinfo", "-J", "-f", "-i", images[0]]], [[walk, out, images[0]]])
pairs("20 images: isoinfo A, walk B", [["isoinfo", "-J", "-f", "-i", i] for i in images], [[walk, out] + images])
if os.access("/dev/fuse", os.R_OK | os.W_OK) and subprocess.run(fuse(images[0])[0], stderr=null).returncode == 0:
    subprocess.run(["fusermount", "-u", os.path.join(work, "mnt")])
    pairs("20 images: walk A, fuseiso+find B", [[walk, out] + images], [c for i in images for c in fuse(i)])
else:
    print("fuseiso: /dev/fuse not usable here, skipped")
PY
