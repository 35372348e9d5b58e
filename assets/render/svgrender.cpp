#include "svgrender.h"

#include "icowriter.h"

#include <QFile>
#include <QImageWriter>
#include <QPainter>
#include <QSaveFile>
#include <QStringList>
#include <QSvgRenderer>
#include <QXmlStreamReader>

#include <cstdio>
#include <cstring>

namespace kalvex2::assets {

namespace {

// Collects the warnings of the SVG module while it is alive; other messages
// go on to the handler that was installed before.
class SvgWarningTrap
{
public:
    SvgWarningTrap()
    {
        s_messages = &m_messages;
        s_previous = qInstallMessageHandler(&SvgWarningTrap::handler);
    }
    ~SvgWarningTrap()
    {
        qInstallMessageHandler(s_previous);
        s_previous = nullptr;
        s_messages = nullptr;
    }
    SvgWarningTrap(const SvgWarningTrap &) = delete;
    SvgWarningTrap &operator=(const SvgWarningTrap &) = delete;

    const QStringList &messages() const { return m_messages; }

private:
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        const bool fromSvg = context.category && std::strncmp(context.category, "qt.svg", 6) == 0;
        if (s_messages && fromSvg && type != QtDebugMsg && type != QtInfoMsg) {
            s_messages->append(message);
            return;
        }
        if (s_previous)
            s_previous(type, context, message);
        else
            std::fprintf(stderr, "%s\n", qPrintable(message));
    }

    static inline QStringList *s_messages = nullptr;
    static inline QtMessageHandler s_previous = nullptr;
    QStringList m_messages;
};

// QtSvg 6.4 silently skips what it does not implement.  Refuse it instead,
// so that a drawing never looks different in the program than in an editor.
QString unsupportedFeature(const QByteArray &svg)
{
    static const QStringList supportedElements = {
        QStringLiteral("svg"),      QStringLiteral("g"),       QStringLiteral("defs"),
        QStringLiteral("title"),    QStringLiteral("desc"),    QStringLiteral("path"),
        QStringLiteral("rect"),     QStringLiteral("circle"),  QStringLiteral("ellipse"),
        QStringLiteral("line"),     QStringLiteral("polyline"), QStringLiteral("polygon"),
        QStringLiteral("text"),     QStringLiteral("tspan"),   QStringLiteral("use"),
        QStringLiteral("linearGradient"), QStringLiteral("radialGradient"), QStringLiteral("stop"),
    };
    static const QStringList unsupportedAttributes = {
        QStringLiteral("filter"), QStringLiteral("clip-path"), QStringLiteral("mask"),
    };

    QXmlStreamReader xml(svg);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QString name = xml.name().toString();
        if (!supportedElements.contains(name))
            return QStringLiteral("line %1: element <%2> is not drawn by QtSvg").arg(xml.lineNumber()).arg(name);
        for (const QXmlStreamAttribute &attribute : xml.attributes()) {
            const QString attr = attribute.name().toString();
            if (unsupportedAttributes.contains(attr))
                return QStringLiteral("line %1: attribute %2 is not drawn by QtSvg").arg(xml.lineNumber()).arg(attr);
        }
    }
    if (xml.hasError())
        return QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(xml.errorString());
    return {};
}

bool readFile(const QString &path, QByteArray *data, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    *data = file.readAll();
    return true;
}

bool saveFile(const QString &path, const QByteArray &data, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size() || !file.commit()) {
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace

QImage renderSvgData(const QByteArray &svg, QSize size, const QColor &background, QString *error)
{
    if (size.isEmpty()) {
        *error = QStringLiteral("invalid image size %1x%2").arg(size.width()).arg(size.height());
        return {};
    }

    if (const QString problem = unsupportedFeature(svg); !problem.isEmpty()) {
        *error = problem;
        return {};
    }

    SvgWarningTrap trap;
    QSvgRenderer renderer;
    if (!renderer.load(svg) || !renderer.isValid()) {
        *error = QStringLiteral("not a valid SVG drawing");
        if (!trap.messages().isEmpty())
            *error += QStringLiteral(": ") + trap.messages().join(QStringLiteral("; "));
        return {};
    }

    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(background);

    // Keep the drawing's proportions and centre it.
    QSizeF drawing = renderer.viewBoxF().size();
    if (drawing.isEmpty())
        drawing = renderer.defaultSize();
    const QSizeF target = drawing.scaled(QSizeF(size), Qt::KeepAspectRatio);
    const QRectF bounds(QPointF((size.width() - target.width()) / 2.0,
                                (size.height() - target.height()) / 2.0),
                        target);
    {
        QPainter painter(&image);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform
                               | QPainter::TextAntialiasing);
        renderer.render(&painter, bounds);
    }

    if (!trap.messages().isEmpty()) {
        *error = trap.messages().join(QStringLiteral("; "));
        return {};
    }
    return image.convertToFormat(QImage::Format_ARGB32);
}

QList<QImage> renderIconImages(const QByteArray &svg, QString *error)
{
    QList<QImage> images;
    for (int px : kIconSizes) {
        QImage img = renderSvgData(svg, QSize(px, px), Qt::transparent, error);
        if (img.isNull())
            return {};
        images.append(img);
    }
    return images;
}

bool writeIconFile(const QString &svgPath, const QString &icoPath, QString *error)
{
    QByteArray svg;
    if (!readFile(svgPath, &svg, error))
        return false;
    QString why;
    const QList<QImage> images = renderIconImages(svg, &why);
    if (images.isEmpty()) {
        *error = QStringLiteral("%1: %2").arg(svgPath, why);
        return false;
    }
    const QByteArray ico = encodeIco(images, &why);
    if (ico.isEmpty()) {
        *error = QStringLiteral("%1: %2").arg(icoPath, why);
        return false;
    }
    return saveFile(icoPath, ico, error);
}

bool writeJpegFile(const QString &svgPath, const QString &jpgPath, QSize size, QString *error)
{
    QByteArray svg;
    if (!readFile(svgPath, &svg, error))
        return false;
    QString why;
    const QImage image = renderSvgData(svg, size, Qt::white, &why);
    if (image.isNull()) {
        *error = QStringLiteral("%1: %2").arg(svgPath, why);
        return false;
    }

    QSaveFile file(jpgPath);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("cannot write %1: %2").arg(jpgPath, file.errorString());
        return false;
    }
    QImageWriter writer(&file, QByteArrayLiteral("jpeg"));
    writer.setQuality(90);
    if (!writer.write(image.convertToFormat(QImage::Format_RGB32))) {
        *error = QStringLiteral("cannot encode %1: %2").arg(jpgPath, writer.errorString());
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        *error = QStringLiteral("cannot write %1: %2").arg(jpgPath, file.errorString());
        return false;
    }
    return true;
}

} // namespace kalvex2::assets
