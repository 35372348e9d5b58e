#include "metafiles.h"

#include "pictureformats.h"

#include <QMutex>
#include <QPainter>
#include <QSet>
#include <QSvgRenderer>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <Magick++.h>
#include <emf2svg.h>

#include <algorithm>

#include <dlfcn.h>

namespace Metafiles {
namespace {

// Larger metafiles than this are refused rather than drawn into a huge page.
constexpr int kLargestSide = 8000;

bool drawable(const QSize &size)
{
    return size.isValid() && size.width() <= kLargestSide && size.height() <= kLargestSide
           && qint64(size.width()) * size.height() <= PictureFormats::kLargestPicturePixels;
}

// libwmf's drawing time grows with the square of the records. Measured here (RelWithDebInfo, one
// core of a shared machine) on rectangles: 2,000 records 0.08 s, 5,000 0.3 s, 10,000 1.0 s (the
// same on a page of 240 or 4000 pixels), 20,000 3.7 s, 40,000 19 s. Clip-art of the time holds a
// few thousand records.
constexpr int kMostWmfRecords = 10000;

QMutex &magickLock()
{
    static QMutex lock;
    return lock;
}

void initialiseMagick()
{
    static const bool done = [] {
        Magick::InitializeMagick(nullptr);
        Magick::ResourceLimits::width(kLargestSide);
        Magick::ResourceLimits::height(kLargestSide);
        return true;
    }();
    Q_UNUSED(done)
}

// libemf2svg's own libuemf exports a wmf_free() of its own, which would take the place of
// libwmf's in ImageMagick's WMF reader and crash it. So the converter is loaded apart, binding
// its libraries to each other first (RTLD_DEEPBIND), and never enters the global symbol scope.
using Emf2SvgFunction = int (*)(char *, size_t, char **, size_t *, generatorOptions *);

Emf2SvgFunction emf2svgFunction()
{
    static const Emf2SvgFunction function = []() -> Emf2SvgFunction {
        for (const char *name : {"libemf2svg.so.1", "libemf2svg.so"}) {
#ifdef __SANITIZE_ADDRESS__
            // AddressSanitizer refuses RTLD_DEEPBIND (its interceptors must bind first); the
            // sanitizer build of the tests draws EMF without it.
            constexpr int flags = RTLD_NOW | RTLD_LOCAL;
#else
            constexpr int flags = RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND;
#endif
            if (void *library = dlopen(name, flags))
                return reinterpret_cast<Emf2SvgFunction>(dlsym(library, "emf2svg"));
        }
        return nullptr;
    }();
    return function;
}

} // namespace

QImage drawWmf(const QByteArray &wmf)
{
    const QSize natural = PictureFormats::wmfNaturalSize(wmf);
    const int records = PictureFormats::wmfRecordCount(wmf);
    if (records < 0 || records > kMostWmfRecords || (natural.isValid() && !drawable(natural)))
        return {};
    QMutexLocker locker(&magickLock());
    initialiseMagick();
    try {
        Magick::Image picture;
        picture.density(Magick::Geometry(96, 96));
        picture.backgroundColor(Magick::Color("white"));
        picture.magick("WMF");
        picture.read(Magick::Blob(wmf.constData(), size_t(wmf.size())));
        const QSize drawn(int(picture.columns()), int(picture.rows()));
        if (!drawable(drawn))
            return {};
        QImage image(drawn, QImage::Format_RGBA8888);
        picture.write(0, 0, size_t(drawn.width()), size_t(drawn.height()), "RGBA",
                      Magick::CharPixel, image.bits());
        image = image.convertToFormat(QImage::Format_ARGB32);
        // ImageMagick rounds the page outward; the placeable header says what the picture measures.
        if (natural.isValid() && natural != drawn)
            image = image.scaled(natural, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        return image;
    } catch (const std::exception &) {
        return {};
    }
}

QImage drawEmf(const QByteArray &emf)
{
    const QSize natural = PictureFormats::emfNaturalSize(emf);
    if (!drawable(natural))
        return {};
    generatorOptions options{};
    options.nameSpace = const_cast<char *>("");
    options.svgDelimiter = true;
    options.emfplus = true;
    options.imgWidth = natural.width();
    options.imgHeight = natural.height();
    char *svg = nullptr;
    size_t svgLength = 0;
    QByteArray copy = emf; // the converter takes a writable buffer
    const Emf2SvgFunction convert = emf2svgFunction();
    if (!convert)
        return {};
    const int ok = convert(copy.data(), size_t(copy.size()), &svg, &svgLength, &options);
    const QByteArray document = (ok && svg) ? safeSvg(QByteArray::fromRawData(svg, qsizetype(svgLength))) : QByteArray();
    free(svg);
    if (document.isEmpty())
        return {};
    QSvgRenderer renderer(document);
    if (!renderer.isValid())
        return {};
    QImage image(natural, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(natural)));
    return image;
}

QByteArray safeSvg(const QByteArray &svg)
{
    // What libemf2svg writes for a drawing, and only that.
    static const QSet<QStringView> elements{u"svg", u"g", u"defs", u"clipPath", u"path", u"rect",
                                            u"ellipse", u"circle", u"line", u"polyline", u"polygon",
                                            u"text", u"tspan", u"image"};
    static const QSet<QStringView> attributes{
        u"version", u"width", u"height", u"viewBox", u"preserveAspectRatio", u"id", u"transform",
        u"x", u"y", u"cx", u"cy", u"r", u"rx", u"ry", u"x1", u"y1", u"x2", u"y2", u"d", u"points",
        u"fill", u"fill-opacity", u"fill-rule", u"stroke", u"stroke-width", u"stroke-opacity",
        u"stroke-linecap", u"stroke-linejoin", u"stroke-miterlimit", u"stroke-dasharray",
        u"stroke-dashoffset", u"opacity", u"clip-path", u"clip-rule", u"style", u"font-family",
        u"font-size", u"font-weight", u"font-style", u"text-anchor", u"text-decoration",
        u"writing-mode"};
    const QString svgNamespace = QStringLiteral("http://www.w3.org/2000/svg");
    // A metafile's own bitmaps come inline ("data:image/png;base64,..."): the one reference kept.
    const QString xlinkNamespace = QStringLiteral("http://www.w3.org/1999/xlink");
    const auto isInlineBitmap = [&](const QXmlStreamAttribute &attribute) {
        return attribute.namespaceUri() == xlinkNamespace && attribute.name() == u"href"
               && attribute.value().startsWith(u"data:image/", Qt::CaseInsensitive);
    };
    // A reference to anything but an element of the drawing itself.
    const auto refersOutside = [](QStringView value) {
        for (qsizetype at = value.indexOf(u"url(", 0, Qt::CaseInsensitive); at >= 0;
             at = value.indexOf(u"url(", at + 4, Qt::CaseInsensitive)) {
            if (!value.mid(at + 4).trimmed().startsWith(u'#'))
                return true;
        }
        return false;
    };

    QXmlStreamReader reader(svg);
    QByteArray out;
    QXmlStreamWriter writer(&out);
    writer.writeStartDocument();
    bool root = true;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement: {
            const bool imageOfAFile = reader.name() == u"image"
                                      && std::none_of(reader.attributes().cbegin(), reader.attributes().cend(),
                                                      isInlineBitmap);
            if (reader.namespaceUri() != svgNamespace || !elements.contains(reader.name())
                || (root && reader.name() != u"svg") || imageOfAFile) {
                reader.skipCurrentElement();
                break;
            }
            writer.writeStartElement(reader.name().toString());
            if (root) {
                writer.writeDefaultNamespace(svgNamespace);
                writer.writeNamespace(xlinkNamespace, QStringLiteral("xlink"));
            }
            root = false;
            for (const QXmlStreamAttribute &attribute : reader.attributes()) {
                if (attribute.namespaceUri().isEmpty() && attributes.contains(attribute.name())
                    && !refersOutside(attribute.value()))
                    writer.writeAttribute(attribute.name().toString(), attribute.value().toString());
                else if (reader.name() == u"image" && isInlineBitmap(attribute))
                    writer.writeAttribute(xlinkNamespace, QStringLiteral("href"), attribute.value().toString());
            }
            break;
        }
        case QXmlStreamReader::EndElement:
            writer.writeEndElement();
            break;
        case QXmlStreamReader::Characters:
            writer.writeCharacters(reader.text().toString());
            break;
        default: // no DTD, entity, comment or processing instruction
            break;
        }
    }
    writer.writeEndDocument(); // closes what an XML error left open
    return root ? QByteArray() : out;
}

} // namespace Metafiles
