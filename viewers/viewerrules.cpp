#include "viewerrules.h"

#include "regularfile.h"
#include "windows1252.h"


#include <cmath>
#include <limits>
#include <optional>

namespace ViewerRules {
namespace {

// A value of the original's signed 16-bit drawing state; out of range is an error that skips
// the drawing.
std::optional<int> toInt16(double value)
{
    const double rounded = std::nearbyint(value); // halves to even in the default rounding mode
    if (!std::isfinite(rounded) || rounded < std::numeric_limits<qint16>::min()
        || rounded > std::numeric_limits<qint16>::max())
        return std::nullopt;
    return int(rounded);
}

} // namespace

Fit fitPicture(QSize picture, QSize frame)
{
    const int pw = picture.width(), ph = picture.height(), fw = frame.width(), fh = frame.height();
    Fit fit;
    if (pw < fw && ph < fh) {
        const auto x = toInt16((fw - pw) / 2.0), y = toInt16((fh - ph) / 2.0);
        if (x && y)
            fit = {true, true, QRect(*x, *y, pw, ph)};
        return fit;
    }
    if (pw > ph) {
        const auto k = toInt16(double(fw) / pw);
        if (!k)
            return fit;
        const auto w = toInt16(double(pw) * *k), h = toInt16(double(ph) * *k);
        if (!w || !h)
            return fit;
        if (*h <= fh) {
            const auto x = toInt16((fw - *w) / 2.0), y = toInt16((fh - *h) / 2.0);
            if (x && y)
                fit = {true, true, QRect(*x, *y, *w, *h)};
            return fit;
        }
        const auto k2 = toInt16(double(fh) / *h);
        if (!k2)
            return fit;
        const auto w2 = toInt16(double(*w) * *k2), h2 = toInt16(double(*h) * *k2);
        if (!w2 || !h2)
            return fit;
        const auto x = toInt16((fw - *w2) / 2.0), y = toInt16((fh - *h2) / 2.0);
        if (x && y)
            fit = {true, true, QRect(*x, *y, *w2, *h2)};
        return fit;
    }
    if (pw < ph) {
        const auto k = toInt16(double(fh) / ph);
        if (!k)
            return fit;
        const auto w = toInt16(double(pw) * *k), h = toInt16(double(ph) * *k);
        if (!w || !h)
            return fit;
        const auto x = toInt16((fw - *w) / 2.0), y = toInt16((fh - *h) / 2.0);
        if (x && y)
            fit = {true, true, QRect(*x, *y, *w, *h)};
        return fit;
    }
    return fit; // square and not smaller than the frame: nothing drawn, nothing cleared
}

QString iconCaption(const QString &foundName, const QString &currentCaption)
{
    return foundName.size() < 4 ? currentCaption : foundName.left(foundName.size() - 4);
}

QString targetFolder(const QString &chosenFolder)
{
    if (chosenFolder.endsWith(QLatin1Char('/')) || chosenFolder.endsWith(QLatin1Char('\\')))
        return chosenFolder;
    return chosenFolder + QLatin1Char('/');
}

QString storedFileName(const QString &storedPath)
{
    return storedPath.mid(storedPath.lastIndexOf(QLatin1Char('\\')) + 1);
}

QString copyOneQuestion(const QString &currentFile, const QString &targetFolder)
{
    return QStringLiteral("Etes-vous sûr de vouloir copier  ") + currentFile
           + QStringLiteral(" dans le répertoire ") + targetFolder + QStringLiteral(" ?");
}

QString copyAllQuestion(const QString &targetFolder)
{
    return QStringLiteral("Etes-vous sûr de vouloir copier tous les icônes dans le répertoire ")
           + targetFolder + QStringLiteral(" ?");
}

QString decodeText(const QByteArray &bytes)
{
    QByteArrayView text(bytes);
    const qsizetype endOfFile = text.indexOf('\x1a');
    if (endOfFile >= 0)
        text = text.first(endOfFile);
    QString decoded = Windows1252::decode(text);
    decoded.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return decoded;
}

QString cutTextNotice()
{
    return QStringLiteral("\n\n[Texte coupé : seul le premier mégaoctet du fichier est affiché.]");
}

QString readWholeText(const QString &path)
{
    if (path.isEmpty())
        return {};
    bool whole = true;
    const QByteArray bytes = readRegularFile(path, kShownTextBytes, &whole);
    if (bytes.isEmpty())
        return {}; // empty, unreadable, or no regular file
    // A text that ends at its end-of-file mark within the limit is whole, whatever follows it.
    if (whole || bytes.contains('\x1a'))
        return decodeText(bytes);
    return decodeText(bytes) + cutTextNotice();
}

int textPrintX(int pageWidthTwips, int textBoxWidthTwips)
{
    return int(std::nearbyint((pageWidthTwips - textBoxWidthTwips) / 2.0));
}

} // namespace ViewerRules
