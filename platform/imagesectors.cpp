// The sectors of an image file: a plain ISO read with pread, raw 2352-byte sectors (MDF, a BIN
// without its CUE) unwrapped here, CUE sheets and NRG through libcdio's image drivers.
#include "imagevolume.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cdio/cdio.h>
#include <cdio/logging.h>

#include <algorithm>
#include <cstring>
#include <mutex>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::uint32_t kSector = 2048;
constexpr std::uint32_t kRawSector = 2352;
constexpr unsigned char kSync[12] = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};

// libcdio reports a damaged image on stderr; the walk says it by an empty scan instead.
void quietLibcdio()
{
    static std::once_flag once;
    std::call_once(once, [] { cdio_log_set_handler([](cdio_log_level_t, const char *) {}); });
}

// A regular file, opened without blocking: a FIFO or a device named like an image gives nothing.
int openRegular(const QString &path, off_t *size)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return -1;
    struct stat st;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return -1;
    }
    *size = st.st_size;
    return fd;
}

bool preadAll(int fd, char *out, size_t size, off_t at)
{
    while (size > 0) {
        const ssize_t got = ::pread(fd, out, size, at);
        if (got <= 0)
            return false; // an image shortened or gone while it is read
        out += got;
        size -= size_t(got);
        at += got;
    }
    return true;
}

class FileSectors final : public SectorReader
{
public:
    FileSectors(int fd, off_t size, bool raw)
        : m_fd(fd)
        , m_raw(raw)
        , m_sectors(std::uint64_t(size) / (raw ? kRawSector : kSector))
    {
    }
    ~FileSectors() override { ::close(m_fd); }

    bool read(std::uint32_t sector, std::uint32_t count, char *out) override
    {
        if (std::uint64_t(sector) + count > m_sectors)
            return false;
        if (!m_raw)
            return preadAll(m_fd, out, size_t(count) * kSector, off_t(sector) * kSector);
        // Raw sectors: sync, header, then the data at 16 (mode 1) or 24 (mode 2 form 1).
        constexpr std::uint32_t kBatch = 32;
        char buffer[kBatch * kRawSector];
        while (count > 0) {
            const std::uint32_t n = std::min(count, kBatch);
            if (!preadAll(m_fd, buffer, size_t(n) * kRawSector, off_t(sector) * kRawSector))
                return false;
            for (std::uint32_t i = 0; i < n; ++i) {
                const char *raw = buffer + i * kRawSector;
                std::memcpy(out, raw + (raw[15] == 2 ? 24 : 16), kSector);
                out += kSector;
            }
            sector += n;
            count -= n;
        }
        return true;
    }

private:
    int m_fd;
    bool m_raw;
    std::uint64_t m_sectors;
};

class CdioSectors final : public SectorReader
{
public:
    CdioSectors(CdIo_t *cdio, std::uint32_t start)
        : m_cdio(cdio)
        , m_start(start)
        , m_end(std::uint32_t(std::max<lsn_t>(cdio_get_disc_last_lsn(cdio), 0)))
    {
    }
    ~CdioSectors() override { cdio_destroy(m_cdio); }

    bool read(std::uint32_t sector, std::uint32_t count, char *out) override
    {
        if (std::uint64_t(sector) + count > m_end)
            return false;
        return cdio_read_data_sectors(m_cdio, out, lsn_t(sector), kSector, count) == DRIVER_OP_SUCCESS;
    }
    std::uint32_t sessionStart() const override { return m_start; }

private:
    CdIo_t *m_cdio;
    std::uint32_t m_start;
    std::uint32_t m_end;
};

// The first data track of a disc libcdio opened, and the last session when the driver knows it.
std::unique_ptr<SectorReader> fromCdio(CdIo_t *cdio)
{
    if (!cdio)
        return nullptr;
    const track_t first = cdio_get_first_track_num(cdio);
    const track_t count = cdio_get_num_tracks(cdio);
    if (first == CDIO_INVALID_TRACK || count == CDIO_INVALID_TRACK) {
        cdio_destroy(cdio);
        return nullptr;
    }
    for (track_t t = first; t < first + count; ++t) {
        const track_format_t format = cdio_get_track_format(cdio, t);
        if (format != TRACK_FORMAT_DATA && format != TRACK_FORMAT_XA)
            continue;
        lsn_t start = cdio_get_track_lsn(cdio, t);
        lsn_t last = 0;
        if (cdio_get_last_session(cdio, &last) == DRIVER_OP_SUCCESS && last > start)
            start = last;
        return std::make_unique<CdioSectors>(cdio, std::uint32_t(std::max<lsn_t>(start, 0)));
    }
    cdio_destroy(cdio);
    return nullptr;
}

// The BIN of a CUE sheet whose first track is MODE1/2048 from its start: that BIN is a plain
// ISO. libcdio 2.1's CUE driver reads such a BIN as if its sectors had 2352 bytes.
QString plainBinOf(const QString &cue)
{
    QFile file(cue);
    if (file.size() > 65536 || !file.open(QIODevice::ReadOnly))
        return {};
    QString bin;
    for (const QByteArray &line : file.readAll().split('\n')) {
        const QByteArray words = line.simplified();
        if (words.startsWith("FILE ") && bin.isEmpty()) {
            const qsizetype open = words.indexOf('"'), close = words.lastIndexOf('"');
            if (open < 0 || close <= open)
                return {};
            bin = QFileInfo(cue).dir().filePath(QFile::decodeName(words.mid(open + 1, close - open - 1)));
        } else if (words.startsWith("TRACK ")) {
            return words.endsWith(" MODE1/2048") ? bin : QString();
        }
    }
    return {};
}

} // namespace

std::unique_ptr<SectorReader> openSectors(const QString &path)
{
    quietLibcdio();
    off_t size = 0;
    const int fd = openRegular(path, &size);
    if (fd < 0)
        return nullptr;
    const QByteArray native = QFile::encodeName(path);
    const QString suffix = path.section(QLatin1Char('.'), -1).toLower();
    if (suffix == QLatin1String("cue") || suffix == QLatin1String("nrg")) {
        ::close(fd);
        if (const QString bin = suffix == QLatin1String("cue") ? plainBinOf(path) : QString(); !bin.isEmpty()) {
            const int binFd = openRegular(bin, &size);
            return binFd < 0 ? nullptr : std::make_unique<FileSectors>(binFd, size, false);
        }
        return fromCdio(cdio_open(native.constData(), suffix == QLatin1String("cue") ? DRIVER_BINCUE : DRIVER_NRG));
    }
    if (suffix == QLatin1String("bin")) {
        // A BIN with its CUE sheet beside it: the sheet tells the tracks.
        if (auto sectors = fromCdio(cdio_open(native.constData(), DRIVER_BINCUE))) {
            ::close(fd);
            return sectors;
        }
    }
    // Raw sectors begin with the sync pattern; the first volume descriptor's is looked at.
    unsigned char head[sizeof kSync];
    const bool raw = preadAll(fd, reinterpret_cast<char *>(head), sizeof head, off_t(16) * kRawSector)
                     && std::memcmp(head, kSync, sizeof kSync) == 0;
    return std::make_unique<FileSectors>(fd, size, raw);
}

void appendUtf16AsUtf8(const unsigned char *units, size_t count, bool bigEndian, QByteArray &out)
{
    for (size_t i = 0; i < count; ++i) {
        const unsigned char *u = units + 2 * i;
        char32_t c = bigEndian ? char32_t(u[0] << 8 | u[1]) : char32_t(u[1] << 8 | u[0]);
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < count) {
            const unsigned char *v = u + 2;
            const char32_t low = bigEndian ? char32_t(v[0] << 8 | v[1]) : char32_t(v[1] << 8 | v[0]);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                ++i;
            }
        }
        if (c >= 0xD800 && c <= 0xDFFF)
            c = 0xFFFD;
        if (c < 0x80) {
            out.append(char(c));
        } else if (c < 0x800) {
            out.append(char(0xC0 | c >> 6)).append(char(0x80 | (c & 0x3F)));
        } else if (c < 0x10000) {
            out.append(char(0xE0 | c >> 12)).append(char(0x80 | (c >> 6 & 0x3F))).append(char(0x80 | (c & 0x3F)));
        } else {
            out.append(char(0xF0 | c >> 18))
                .append(char(0x80 | (c >> 12 & 0x3F)))
                .append(char(0x80 | (c >> 6 & 0x3F)))
                .append(char(0x80 | (c & 0x3F)));
        }
    }
}
