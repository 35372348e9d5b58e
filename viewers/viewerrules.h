#pragma once

#include <QByteArray>
#include <QRect>
#include <QSize>
#include <QString>

// The viewers' rules as pure functions.
namespace ViewerRules {

// How a picture of `picture` pixels goes into a frame of `frame` pixels. Sizes are the signed
// 16-bit values of the frame's units; divisions are rounded half to even and scale factors are
// whole, so a picture is shown at 0, 1, 2 ... times its natural size, never at a fraction of it.
struct Fit
{
    bool clear = false; // the frame is cleared first
    bool draw = false;  // the picture is drawn into `target` (an empty target draws nothing)
    QRect target;
};
Fit fitPicture(QSize picture, QSize frame);

// A gallery cell's caption: the found name less its last four characters (".ICO"); a name
// shorter than four characters keeps the cell's caption.
QString iconCaption(const QString &foundName, const QString &currentCaption);

// The target folder as shown: the chosen folder followed by one separator, none added to a root
// or to a folder that ends with one.
QString targetFolder(const QString &chosenFolder);

// The file name of a stored path: everything after its last backslash.
QString storedFileName(const QString &storedPath);

QString copyOneQuestion(const QString &currentFile, const QString &targetFolder);
QString copyAllQuestion(const QString &targetFolder);
inline QString copyTitle() { return QStringLiteral("Copie d'un fichier"); }

// The most of a text file the viewer shows. Texts of floppies and CD-ROMs (README, FILE_ID.DIZ,
// manuals) are a few kilobytes to a few hundred; past this a file is no text to read on screen,
// and laying out hundreds of megabytes on one line ends inside the text layout.
constexpr qint64 kShownTextBytes = 1024 * 1024;
// What follows a text cut at kShownTextBytes.
QString cutTextNotice();

// A text file's content for display: Windows-1252, cut at a DOS end-of-file mark (0x1A), lines
// ending in LF; only its first kShownTextBytes, followed by cutTextNotice() when it holds more.
// What is not a regular file (a FIFO, a device) or cannot be read gives "", at once.
QString readWholeText(const QString &path);
QString decodeText(const QByteArray &bytes);

// The horizontal print position that centres a block as wide as the text box: may be negative.
int textPrintX(int pageWidthTwips, int textBoxWidthTwips);

} // namespace ViewerRules
